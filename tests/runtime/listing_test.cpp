#include "runtime/mg_file.h"
#include "support/error_of.h"
#include "support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <unistd.h>

namespace {

using testing::UnorderedElementsAre;
using Names = std::vector<std::string>;

// The waits of the code under test: counted, not waited for. What happens meanwhile is up to a test.
unsigned slept_microseconds;
std::function<void()> meanwhile;

} // namespace

extern "C" int usleep(useconds_t microseconds) {
    slept_microseconds = microseconds;
    if (meanwhile) meanwhile();
    return 0;
}

namespace {

TEST(Listing, TakesThePlainFilesThatMatch) {
    const TempDir dir;
    MGFile file;
    Names list;
    std::filesystem::create_directory(dir.path("sub.txt"));
    for (const char* name : {"a.txt", "B.TXT", "я.txt", "c.doc"}) dir.write(name, name);
    file.GetListFilesFromDir(dir.path(), "*.txt", true, list);
    EXPECT_THAT(list, UnorderedElementsAre("a.txt", "я.txt"));
    file.GetListFilesFromDir(dir.path(), "?.txt", false, list);
    EXPECT_THAT(list, UnorderedElementsAre("a.txt", "B.TXT", "я.txt"));
    file.GetListFullFilesFromDir(dir.path() + "/", "c*", true, list);
    EXPECT_EQ(list, Names({dir.path("c.doc")}));
    EXPECT_EQ(error_of([&] { file.ReadDir(); }).func_2, "m_dir == NULL"); // a listing leaves none open
    file.DelAllFilesFromDir(dir.path());
    EXPECT_FALSE(std::filesystem::exists(dir.path("a.txt")));
    EXPECT_TRUE(std::filesystem::is_directory(dir.path("sub.txt")));
}

TEST(Listing, OrdersAFamilyByNumber) {
    const TempDir dir;
    MGFile file;
    Names list;
    std::string newest;
    for (const char* name : {"a~3.txt", "a~x.txt", "a~10.txt", "a.txt", "a~2.doc", "b~4.txt"}) dir.write(name, "");
    file.GetListFilesFromDir(dir.path(), "a", ".txt", list);
    EXPECT_EQ(list, Names({"a.txt", "a~10.txt", "a~3.txt"}));
    EXPECT_EQ(file.GetMaxNameNExtFromDir(dir.path(), "a", ".txt", newest), 10U);
    EXPECT_EQ(newest, "a~10.txt");
}

TEST(Listing, LeavesOutWhatIsNotReady) {
    const TempDir dir;
    for (const char* name : {"b.TXT", "c.doc", "c.doc.p7d"}) dir.write(name, "x");
    dir.write("empty", "");
    const std::pair<std::function<void(Names&)>, Names> rows[] = {
        {[](Names& list) { MGFile::DelListFilesExt(list, ".txt", false); }, {"c.doc", "empty", "gone"}},
        {[&](Names& list) { MGFile::DelWithoutDetachedSign(list, ".p7d", dir.path()); }, {"c.doc"}},
        {[&](Names& list) { MGFile::DelNotRenamedFiles(dir.path(), list); }, {"b.TXT", "c.doc", "empty"}},
        {[&](Names& list) { MGFile::DelNullSizeFilesFromList(dir.path(), list); }, {"b.TXT", "c.doc"}}};
    for (const auto& [sort_out, left] : rows) {
        Names list = {"b.TXT", "c.doc", "empty", "gone"};
        sort_out(list);
        EXPECT_EQ(list, left);
    }
}

TEST(Waiting, PicksFilesAtRest) {
    const TempDir dir;
    for (const char* name : {"rests", "grows", "goes"}) dir.write(name, "x");
    meanwhile = [&] {
        dir.write("grows", "xx");
        dir.write("came", "x");
        std::filesystem::remove(dir.path("goes"));
    };
    Names list;
    MGFile().GetListFilesFromDirTimeout(dir.path(), "*", true, list, 0, 5000);
    EXPECT_EQ(list, Names({"rests"}));
    EXPECT_EQ(slept_microseconds, 1000000U);
    dir.write("grows", "x");
    EXPECT_FALSE(MGFile::IsFileCopiedForEnd(dir.path("grows"), 0, 1));
    EXPECT_TRUE(MGFile::IsFileCopiedForEnd(dir.path("grows"), 0, 1));
}

TEST(Pieces, AreReadInOrder) {
    const TempDir dir;
    dir.write("f", std::string("abcdefg\0", 8));
    MGFile file;
    std::vector<uint8_t> data;
    file.OpenFileBuf(dir.path("f"));
    file.ReadFileBuf(7, data);
    EXPECT_EQ(std::string(data.begin(), data.end()), "abcdefg");
    EXPECT_EQ(error_of([&] { file.ReadFileBuf(2, data); }).num_param, 2);
    EXPECT_TRUE(data.empty());
    for (size_t piece : {1, 3, 8, 9}) {
        std::string text;
        file.ReadFileStringEx(dir.path("f"), piece, text);
        EXPECT_EQ(text, "abcdefg") << piece;
    }
    EXPECT_EQ(error_of([&] { file.ReadFileVectorEx(dir.path(), 4, data); }).err_code, EISDIR);
    EXPECT_EQ(file.m_file_handle, -1); // closed after a failure too
}

} // namespace
