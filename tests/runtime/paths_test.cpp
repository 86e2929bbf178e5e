#include "runtime/mg_file.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

TEST(Paths, SplitAtTheLastSlashAndTheLastDot) {
    // A name, its directory, bare name, stem and extension.
    const char* const rows[][5] = {
        {"/a/b.txt", "/a", "b.txt", "/a/b", ".txt"}, {"a.tar.gz", "", "", "a.tar", ".gz"}, {"/x", "", "x", "/x", ""}};
    for (const auto& [file, dir, name, stem, ext] : rows) {
        EXPECT_EQ(MGFile::GetDirFromFile(file), dir) << file;
        EXPECT_EQ(MGFile::GetNameFromFile(file), name) << file;
        std::string rest = file, tail; // the name may be taken apart in place
        MGFile::SplitFileNameToNameAndExt(rest, rest, tail);
        EXPECT_EQ(rest + "|" + tail, stem + std::string("|") + ext) << file;
    }
}

TEST(Paths, ReadTheNumberOfANumberedName) {
    EXPECT_EQ(MGFile::GetNumberFromFileName(MGFile::GetNameNExt("log", 4294967295U, ".txt"), "log", ".txt"),
              4294967295U);
    for (const char* file :
         {"log~x.txt", "log~4294967296.txt", "log~.txt", "log~-1.txt", "log~99999999999999999999.txt", "a"})
        EXPECT_EQ(MGFile::GetNumberFromFileName(file, "log", ".txt"), 0U) << file;
    EXPECT_TRUE(MGFile::IsFileExt("a.txt.Ё", ".ё", false));
    EXPECT_FALSE(MGFile::IsFileExt("a.Ё", ".ё", true) || MGFile::IsFileExt("a.txt.bak", ".txt", false));
}

TEST(Paths, KeepNamesSafeAndShort) {
    const struct {
        std::string given, safe, cut; // cut to 5 bytes
    } rows[] = {{"a/b:c", "a_b_c", "a_b_c"},
                {"\"%'*/:<>?\\|\x01\x1f\x7f ~", "_____________\x7f ~", "_____"},
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
    EXPECT_FALSE(MGFile::TestDirOnReadAndWriteAccess(dir.path("none")));
    std::filesystem::create_symlink("/dev/full", dir.path("mgfiletest.tmp"));
    EXPECT_FALSE(MGFile::TestDirOnReadAndWriteAccess(dir.path()));
    EXPECT_TRUE(std::filesystem::is_empty(dir.path()));

    dir.write("file", "x");
    EXPECT_TRUE(MGFile::IsRenamedFile(dir.path("file")));
    std::filesystem::create_directory(dir.path("file.tmp"));
    EXPECT_FALSE(MGFile::IsRenamedFile(dir.path("file")));
    EXPECT_EQ(dir.read("file"), "x");
}

} // namespace
