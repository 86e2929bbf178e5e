#include "runtime/mg_file.h"
#include "support/error_of.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <sys/stat.h>

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

TEST_F(CoreFiles, TellFilesFromDirectories) {
    dir.write("file", "12345");
    fs::create_symlink("file", "link");
    fs::create_symlink("nowhere", "dangling");
    fs::create_directory("   "); // a blank name is none, even where there is such a directory
    EXPECT_TRUE(MGFile::IsFile("link") && !MGFile::IsDir("link") && MGFile::SizeFile("link") == 5);
    EXPECT_TRUE(MGFile::IsDir("/") && !MGFile::IsFile("/") && MGFile::IsFile("/dev/null"));
    for (const char* name : {static_cast<const char*>(nullptr), "", "   ", "dangling", "file/x"})
        EXPECT_FALSE(MGFile::IsFile(name) || MGFile::IsDir(name) || MGFile::SizeFile(name) != 0);
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
    MGFile::MakeDir("dir");
    MGFile::MakeDir("file"); // what exists is not judged
    umask(mask);
    EXPECT_EQ(fs::status("file").permissions(), fs::perms(0664));
    EXPECT_EQ(fs::status("dir").permissions(), fs::perms(0775));
}

TEST_F(CoreFiles, MakeMissingDirectories) {
    for (const std::string& path : {std::string("a"), std::string("a/b/c/"), dir.path("x//y///"), std::string("//")}) {
        MGFile::IfNotExistMakeDirRecursive(path);
        EXPECT_TRUE(fs::is_directory(path)) << path;
    }
    EXPECT_EQ(MGFile::JoinDirAndFileName("", "x") + MGFile::JoinDirAndFileName("/", "x"), "/x/x");
}

TEST_F(CoreFiles, ReportEachFailingStepAndLeaveNothingOpen) {
    dir.write("file", "12345678");
    fs::create_symlink("no/where", "link");
    mkfifo("fifo", 0600);
    const std::unique_ptr<FILE, int (*)(FILE*)> keeps_fifo_open(std::fopen("fifo", "r+"), std::fclose);
    const std::string mode = ", S_IRUSR|S_IWUSR|S_IRGRP|S_IWGRP|S_IROTH";
    size_t size = 0;
    std::vector<uint8_t> data = {1, 2};
    std::string value;
    const struct {
        std::function<void()> call;
        std::string step; // operation, call, arguments
        int code;
    } rows[] = {
        {[&] { MGFile::ReadFileVector("none", data); }, "ReadFile open none O_RDONLY", ENOENT},
        {[&] { MGFile::ReadFile("fifo", &size); }, "ReadFile lseek fifo SEEK_END", ESPIPE},
        {[&] { MGFile::ReadFile("/proc", &size); }, "ReadFile read /proc ", EISDIR},
        {[&] { MGFile::CopyFile("file", "."); }, "WriteFile open . O_CREAT|O_RDWR|O_TRUNC" + mode, EISDIR},
        {[&] { MGFile::WriteFile("/dev/full", bytes("123"), 3); }, "WriteFile write /dev/full ", ENOSPC},
        {[&] { MGFile::AddFile("link", bytes("1"), 1); }, "AddFile open link O_CREAT|O_RDWR" + mode, ENOENT},
        {[&] { MGFile::AddFile("fifo", bytes("1"), 1); }, "AddFile lseek fifo SEEK_END", ESPIPE},
        {[&] { MGFile::RemoveFile("none"); }, "RemoveFile unlink none ", ENOENT},
        {[&] { MGFile::RenameFile("none", "new"); }, "RenameFile rename none new", ENOENT},
        {[&] { MGFile::IfNotExistMakeDirRecursive("file/a/"); }, "MakeDir mkdir file/a S_IRWXU|S_IRWXG|S_IROTH|S_IXOTH",
         ENOTDIR},
        {[&] { MGFile::GetEnv("VORMA_NOT_SET", value); }, "GetEnv getenv VORMA_NOT_SET ", 0},
    };
    const auto open_descriptors = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    for (const auto& row : rows) {
        const auto before_call = open_descriptors();
        const MGErr err = error_of(row.call);
        EXPECT_EQ(err.func_1 + " " + err.func_2 + " " + err.str_param + " " + err.opt_param, row.step);
        EXPECT_EQ(err.err_code, row.code) << row.step;
        EXPECT_EQ(err.err_description, row.code ? std::strerror(row.code) : "") << row.step;
        EXPECT_EQ(open_descriptors(), before_call) << row.step;
    }
    EXPECT_TRUE(data.empty());
}

} // namespace
