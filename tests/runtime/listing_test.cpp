#include "runtime/mg_file.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <functional>
#include <unistd.h>

namespace {

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
    file.GetListFilesFromDir(dir.path(), "?.txt", false, list);
    EXPECT_EQ(list.size(), 3U);
    for (const char* name : {"a~3.txt", "a~x.txt", "a~10.txt", "a~12.doc", "b~14.txt"}) dir.write(name, "");
    std::string newest;
    EXPECT_EQ(file.GetMaxNameNExtFromDir(dir.path(), "a", ".txt", newest), 10U);
    file.DelAllFilesFromDir(dir.path());
    EXPECT_FALSE(std::filesystem::exists(dir.path("a.txt")));
    EXPECT_TRUE(std::filesystem::is_directory(dir.path("sub.txt")));
}

TEST(Listing, LeavesOutWhatIsNotReady) {
    const TempDir dir;
    dir.write("c.doc", "x");
    dir.write("c.doc.p7d", "x");
    dir.write("empty", "");
    Names list = {"c.doc", "empty", "gone"};
    MGFile::DelNotRenamedFiles(dir.path(), list);
    EXPECT_EQ(list, Names({"c.doc", "empty"}));
    MGFile::DelNullSizeFilesFromList(dir.path(), list);
    EXPECT_EQ(list, Names({"c.doc"}));
    list.push_back("empty");
    MGFile::DelWithoutDetachedSign(list, ".p7d", dir.path());
    EXPECT_EQ(list, Names({"c.doc"}));
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
}

TEST(Pieces, AreReadInOrder) {
    const TempDir dir;
    dir.write("f", std::string("abcdefg\0", 8));
    for (size_t piece : {1, 3, 8}) {
        std::string text;
        MGFile().ReadFileStringEx(dir.path("f"), piece, text);
        EXPECT_EQ(text, "abcdefg") << piece;
    }
}

} // namespace
