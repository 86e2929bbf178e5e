#include "runtime/mg_file.h"
#include "support/error_of.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

namespace {

using Texts = std::vector<std::string>;

TEST(Numbers, AreReadAtTheStartOrRefused) {
    const std::pair<const char*, int32_t> good[] = {
        {nullptr, 0}, {" \r\n", 0}, {"12abc", 12}, {"\t -7 8", -7}, {"-2147483648", INT32_MIN}};
    for (const auto& [text, number] : good) EXPECT_EQ(MGFile::StringToInt32(text), number) << text;
    for (const char* text : {"abc", "- 1", "2147483648"})
        EXPECT_EQ(error_of([&] { MGFile::StringToInt32(text); }).str_param, text);
    EXPECT_EQ(error_of([] { MGFile::StringToInt64("9223372036854775808"); }).func_2, "stoll");
    EXPECT_EQ(MGFile::GetUint32Format(7, "%0200u"), std::string(127, '0')); // the work area's limit
}

TEST(TextHelpers, SplitFromEitherEnd) {
    const struct {
        const char *text, *sep;
        Texts left, right;
    } rows[] = {{".1..2", ".", {"", "1", "", "2"}, {"2", "", "1"}},
                {"a<|>b<|>", "<|>", {"a", "b", ""}, {"", "b", "a"}}};
    for (const auto& row : rows) {
        Texts left = {"old"}, right = {"old"};
        MGFile::SplitStringLeft(row.text, row.sep, left);
        MGFile::SplitStringRight(row.text, row.sep, right);
        EXPECT_EQ(left, row.left) << row.text;
        EXPECT_EQ(right, row.right) << row.text;
    }
}

TEST(Paths, ReadTheNumberOfANumberedName) {
    EXPECT_EQ(MGFile::GetNumberFromFileName("log~4294967295.txt", "log", ".txt"), 4294967295U);
    for (const char* file : {"log~x.txt", "log~4294967296.txt", "log~.txt", "log~-1.txt", "a"})
        EXPECT_EQ(MGFile::GetNumberFromFileName(file, "log", ".txt"), 0U) << file;
    std::string rest = "a.tar.gz", tail;
    MGFile::SplitFileNameToNameAndExt(rest, rest, tail); // in place
    EXPECT_EQ(rest + "|" + tail, "a.tar|.gz");
}

TEST(Paths, KeepNamesSafeAndShort) {
    const struct {
        std::string given, safe, cut; // cut to 5 bytes
    } rows[] = {{"\"%'*/:<>?\\|\x01\x1f\x7f ~", "_____________\x7f ~", "_____"},
                {"Привет\n", "Привет_", "Пр"},
                {"a*\xff*bcd", "a_\xff*bcd", "a_"}};
    for (const auto& row : rows) {
        std::string name = row.given;
        MGFile::ReplaceFileNameIllegalSimbos(name);
        EXPECT_EQ(name, row.safe);
        MGFile::CutFileNameUpToNChars(name, 5);
        EXPECT_EQ(name, row.cut);
    }
}

TEST(Paths, TryOutADirectoryAndLeaveNothingThere) {
    const TempDir dir;
    EXPECT_TRUE(MGFile::TestDirOnReadAndWriteAccess(dir.path()));
    std::filesystem::create_symlink("/dev/full", dir.path("mgfiletest.tmp"));
    EXPECT_FALSE(MGFile::TestDirOnReadAndWriteAccess(dir.path()));
    EXPECT_TRUE(std::filesystem::is_empty(dir.path()));

    dir.write("file", "x");
    EXPECT_TRUE(MGFile::IsRenamedFile(dir.path("file")));
    dir.write("file.tmp", "another");
    EXPECT_FALSE(MGFile::IsRenamedFile(dir.path("file")));
    EXPECT_EQ(dir.read("file") + " " + dir.read("file.tmp"), "x another");
}

} // namespace
