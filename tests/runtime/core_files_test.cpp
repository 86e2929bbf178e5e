#include "runtime/mg_file.h"
#include "runtime/mg_info.h"
#include "support/error_of.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <memory>
#include <numeric>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// Each test works in a directory of its own.
class CoreFiles : public testing::Test {
protected:
    CoreFiles() { fs::current_path(dir.path()); }
    ~CoreFiles() override { fs::current_path(before); }

    const fs::path before = fs::current_path();
    const TempDir dir;
};

const uint8_t* bytes(const std::string& text) {
    return reinterpret_cast<const uint8_t*>(text.data());
}

TEST_F(CoreFiles, GiveBackWhatWasWritten) {
    const mode_t mask = umask(0);
    for (const std::string& content : {std::string(), std::string("a\0b\xff\n", 5), std::string(1 << 20, 'x')}) {
        MGFile::WriteFile("file", bytes(content), content.size());
        dir.write("copy", "something that was there before");
        MGFile::CopyFile("file", "copy");
        MGFile::AddFile("file", bytes("tail"), 4);
        EXPECT_EQ(dir.read("file"), content + "tail");

        std::string text = "old";
        MGFile::ReadFileString("copy", text);
        EXPECT_EQ(text, content);
        size_t size = 99;
        const std::unique_ptr<uint8_t, void (*)(void*)> buffer(MGFile::ReadFile("copy", &size), MGFile::Free);
        EXPECT_EQ(size, content.size());
        EXPECT_EQ(buffer.get()[size], 0);
    }
    MGFile::IfNotExistMakeDirRecursive("dir//in/it/");
    umask(mask);
    EXPECT_EQ(fs::status("file").permissions(), fs::perms(0664));
    EXPECT_EQ(fs::status("dir/in/it").permissions(), fs::perms(0775));
}

TEST_F(CoreFiles, ReportEachFailingStepAndLeaveNothingOpen) {
    dir.write("file", "12345678");
    std::vector<uint8_t> data = {1, 2};
    const struct {
        std::function<void()> call;
        std::string step; // operation, call, arguments
        int code;
    } rows[] = {
        {[&] { MGFile::ReadFileVector("none", data); }, "ReadFile open none O_RDONLY", ENOENT},
        {[&] { MGFile::ReadFileVector("/proc", data); }, "ReadFile read /proc ", EISDIR},
        {[&] { MGFile::WriteFile("/dev/full", bytes("123"), 3); }, "WriteFile write /dev/full ", ENOSPC},
        {[&] { MGFile::IfNotExistMakeDirRecursive("file/a/"); }, "MakeDir mkdir file/a S_IRWXU|S_IRWXG|S_IROTH|S_IXOTH",
         ENOTDIR},
    };
    const auto open_descriptors = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    for (const auto& row : rows) {
        const auto before_call = open_descriptors();
        const MGErr err = error_of(row.call);
        EXPECT_EQ(err.func_1 + " " + err.func_2 + " " + err.str_param + " " + err.opt_param, row.step);
        EXPECT_EQ(err.err_code, row.code) << row.step;
        EXPECT_EQ(open_descriptors(), before_call) << row.step;
    }
    EXPECT_TRUE(data.empty());
}

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

TEST(MGInfo, PrintsOneLineForEachRow) {
    MGInfo info;
    info.AddRow("unsigned long", 18446744073709551615UL);
    info.AddNumRow("\t", 7U, "Имя", "x");
    for (size_t size : {16, 17}) {
        std::vector<uint8_t> bytes(size);
        std::iota(bytes.begin(), bytes.end(), uint8_t{0xF8});
        info.AddRow("dump", bytes);
    }
    EXPECT_EQ(info.GetString(), "unsigned long: 18446744073709551615\n\t7 Имя: x\n"
                                "dump: (16) [F8 F9 FA FB FC FD FE FF 00 01 02 03 04 05 06 07]\n"
                                "dump: (17) [F8 F9 FA FB FC FD FE FF ... 01 02 03 04 05 06 07 08]\n");
}

TEST(ResultFile, StartsAnewOrGrows) {
    const TempDir dir;
    MGFile file;
    file.SetResultDir(dir.path().c_str());
    file.SetResultFileDate("list", false, ".result");
    MGInfo info;
    info.AddRow("a", 1);
    file.PrintInfoInResultFile(info, true);
    file.PrintInfoInResultFile(info, false);
    EXPECT_EQ(dir.read("list.result"), "a: 1\na: 1\n");
    file.SetResultFile("absent/list.result");
    for (int again = 0; again < 2; ++again) // the second time only ends if the first has given the mutex back
        EXPECT_EQ(error_of([&] { file.PrintInfoInResultFile(info, true); }).func_1, "AddFile");
}

} // namespace
