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

const uint8_t* bytes(const std::string& text) {
    return reinterpret_cast<const uint8_t*>(text.data());
}

TEST(CoreFiles, TellFilesFromDirectories) {
    const TempDir dir;
    dir.write("file", "12345");
    fs::create_symlink("nowhere", dir.path("dangling"));
    fs::create_symlink("file", dir.path("link"));
    const struct {
        std::string name;
        bool file, directory;
        int64_t size;
    } rows[] = {{dir.path("link"), true, false, 5},
                {dir.path("dangling"), false, false, 0},
                {"/dev/null", true, false, 0},
                {dir.path("file/x"), false, false, 0},
                {"", false, false, 0},
                {" \t\r\n", false, false, 0}};
    for (const auto& row : rows) {
        EXPECT_EQ(MGFile::IsFile(row.name.c_str()), row.file) << row.name;
        EXPECT_EQ(MGFile::IsDir(row.name.c_str()), row.directory) << row.name;
        EXPECT_EQ(MGFile::SizeFile(row.name.c_str()), row.size) << row.name;
    }
    EXPECT_TRUE(MGFile::IsDir(dir.path().c_str()) && !MGFile::IsFile(dir.path().c_str()));
    EXPECT_FALSE(MGFile::IsFile(nullptr) || MGFile::IsDir(nullptr));
}

TEST(CoreFiles, GiveBackWhatWasWritten) {
    const TempDir dir;
    const mode_t mask = umask(0);
    for (const std::string& content : {std::string(), std::string("a\0b\xff\n", 5), std::string(1 << 20, 'x')}) {
        const std::string file = dir.path("file"), copy = dir.path("copy");
        MGFile::WriteFile(file.c_str(), bytes(content), content.size());
        dir.write("copy", "something that was there before");
        MGFile::CopyFile(file, copy);
        MGFile::AddFile(file.c_str(), bytes("tail"), 4);
        EXPECT_EQ(dir.read("file"), content + "tail");

        std::string text = "old";
        MGFile::ReadFileString(copy, text);
        EXPECT_EQ(text, content);
        size_t size = 99;
        const std::unique_ptr<uint8_t, void (*)(void*)> buffer(MGFile::ReadFile(copy.c_str(), &size), MGFile::Free);
        EXPECT_EQ(size, content.size());
        EXPECT_EQ(buffer.get()[size], 0);
    }
    EXPECT_EQ(fs::status(dir.path("file")).permissions(), fs::perms(0664));
    MGFile::MakeDir(dir.path("dir").c_str());
    umask(mask);
    EXPECT_EQ(fs::status(dir.path("dir")).permissions(), fs::perms(0775));
    MGFile::MakeDir(dir.path("file").c_str()); // what exists is not judged
}

TEST(CoreFiles, MakeMissingDirectories) {
    const TempDir dir;
    const fs::path before = fs::current_path();
    fs::current_path(dir.path());
    for (const std::string& path : {std::string("a"), std::string("a/b/c/"), dir.path("x//y///"), std::string("//")}) {
        MGFile::IfNotExistMakeDirRecursive(path);
        EXPECT_TRUE(fs::is_directory(path)) << path;
    }
    fs::current_path(before);
    EXPECT_EQ(MGFile::JoinDirAndFileName("", "x") + MGFile::JoinDirAndFileName("/", "x"), "/x/x");
}

TEST(CoreFiles, ReportEachFailingStepAndLeaveNothingOpen) {
    const TempDir dir;
    dir.write("file", "12345678");
    const std::string none = dir.path("none"), file = dir.path("file"), fifo = dir.path("fifo"),
                      link = dir.path("dangling"), mode = ", S_IRUSR|S_IWUSR|S_IRGRP|S_IWGRP|S_IROTH";
    mkfifo(fifo.c_str(), 0600);
    const std::unique_ptr<FILE, int (*)(FILE*)> keeps_fifo_open(std::fopen(fifo.c_str(), "r+"), std::fclose);
    fs::create_symlink(dir.path("no/where"), link);
    size_t size = 0;
    std::vector<uint8_t> data = {1, 2};
    std::string value;
    const struct {
        std::function<void()> call;
        std::string step; // operation, call, arguments
        int code;
    } rows[] = {
        {[&] { MGFile::ReadFileVector(none, data); }, "ReadFile open " + none + " O_RDONLY", ENOENT},
        {[&] { MGFile::ReadFile(fifo.c_str(), &size); }, "ReadFile lseek " + fifo + " SEEK_END", ESPIPE},
        {[&] { MGFile::ReadFile("/proc", &size); }, "ReadFile read /proc ", EISDIR},
        {[&] { MGFile::CopyFile(file, dir.path()); }, "WriteFile open " + dir.path() + " O_CREAT|O_RDWR|O_TRUNC" + mode,
         EISDIR},
        {[&] { MGFile::WriteFile("/dev/full", bytes("123"), 3); }, "WriteFile write /dev/full ", ENOSPC},
        {[&] { MGFile::AddFile(link.c_str(), bytes("1"), 1); }, "AddFile open " + link + " O_CREAT|O_RDWR" + mode,
         ENOENT},
        {[&] { MGFile::AddFile(fifo.c_str(), bytes("1"), 1); }, "AddFile lseek " + fifo + " SEEK_END", ESPIPE},
        {[&] { MGFile::RemoveFile(none.c_str()); }, "RemoveFile unlink " + none + " ", ENOENT},
        {[&] { MGFile::RenameFile(none.c_str(), "new"); }, "RenameFile rename " + none + " new", ENOENT},
        {[&] { MGFile::IfNotExistMakeDirRecursive(file + "/a/"); },
         "MakeDir mkdir " + file + "/a S_IRWXU|S_IRWXG|S_IROTH|S_IXOTH", ENOTDIR},
        {[&] { MGFile::GetEnv("VORMA_NOT_SET", value); }, "GetEnv getenv VORMA_NOT_SET ", 0},
    };
    const auto open_descriptors = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    for (const auto& row : rows) {
        const auto before = open_descriptors();
        const MGErr err = error_of(row.call);
        EXPECT_EQ(err.func_1 + " " + err.func_2 + " " + err.str_param + " " + err.opt_param, row.step);
        EXPECT_EQ(err.err_code, row.code) << row.step;
        EXPECT_EQ(err.err_description, row.code ? std::strerror(row.code) : "") << row.step;
        EXPECT_EQ(open_descriptors(), before) << row.step;
    }
    EXPECT_TRUE(data.empty());
}

} // namespace
