#include "runtime/mg_file.h"
#include "support/error_of.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cerrno>
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

} // namespace
