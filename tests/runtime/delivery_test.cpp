#include "runtime/copy_pieces.h"
#include "runtime/mg_file.h"
#include "support/error_of.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <map>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::function<void()> after_size; // what happens to a source once its size is known, if set

} // namespace

extern "C" off_t lseek(int fd, off_t offset, int whence) noexcept {
    const off_t position = syscall(SYS_lseek, fd, offset, whence);
    if (whence == SEEK_END && after_size) after_size();
    return position;
}

namespace {

using Files = std::map<std::string, std::string>;

Files files_of(const TempDir& dir) {
    Files files;
    for (const auto& entry : std::filesystem::directory_iterator(dir.path()))
        files[entry.path().filename()] = dir.read(entry.path().filename());
    return files;
}

TEST(LongCopy, CarriesEveryPieceOver) {
    const TempDir dir;
    const std::string text = "0123456789";
    for (size_t size = 0; size <= text.size(); ++size) {
        dir.write("from", text.substr(0, size));
        dir.write("to", "what was there before");
        copy_in_pieces(dir.path("from").c_str(), dir.path("to").c_str(), true, size, 4);
        EXPECT_EQ(dir.read("to"), text.substr(0, size));
    }
    MGFile::MoveLongFile(dir.path("from"), dir.path("moved"));
    EXPECT_EQ(files_of(dir), Files({{"moved", text}, {"to", text}}));
}

TEST(LongCopy, TellsWhereItWasCutShort) {
    const TempDir dir;
    dir.write("from", "0123456789");
    const std::string source = dir.path("from"), target = dir.path("to");
    const struct {
        std::string from, to;
        const char* func_2;
        int64_t num_param;
        int err_code;
    } rows[] = {
        {dir.path("no"), target, "open", 0, ENOENT},
        {source, dir.path("no/to"), "open", 0, ENOENT},
        {"/proc/self/mem", target, "lseek", 0, EINVAL},
        {source, "/dev/full", "write", 4, ENOSPC},
        {source, target, "read", 4, 0}, // shrinks
    };
    for (const auto& row : rows) {
        if (row.err_code == 0) after_size = [&] { dir.write("from", "01234"); };
        const MGErr err = error_of([&] { copy_in_pieces(row.from.c_str(), row.to.c_str(), false, 0, 4); });
        after_size = nullptr;
        EXPECT_EQ(err.func_2, row.func_2);
        EXPECT_EQ(err.str_param + err.ext_param, row.from + row.to);
        EXPECT_EQ(err.num_param, row.num_param) << row.func_2;
        EXPECT_EQ(err.err_code, row.err_code) << row.func_2;
    }
    EXPECT_EQ(dir.read("to"), "0123"); // the piece that was there

    const MGErr err = error_of([&] { MGFile::CopyLongFile(source.c_str(), target.c_str(), true, 6); });
    EXPECT_EQ(err.func_2 + " " + err.opt_param, "Size != test_size 6");
    EXPECT_EQ(err.num_param, 5);
    EXPECT_FALSE(std::filesystem::exists(target));
}

TEST(SameName, IsDecidedByTheMode) {
    const struct {
        const char* mode;
        bool taken;
        std::string result; // empty: refused
        Files files;
    } rows[] = {{"ADD_NUM", false, "a.txt", {{"a.txt", "new"}}},
                {"ADD_NUM", true, "a~1.txt", {{"a.txt", "old"}, {"a~1.txt", "new"}}},
                {"REPLACE", true, "a.txt", {{"a.txt", "new"}}},
                {"ERROR", false, "a.txt", {{"a.txt", "new"}}},
                {"ERROR", true, "", {{"a.txt", "old"}}}};
    for (const auto& row : rows) {
        const TempDir from, to, written;
        from.write("a.txt", "new");
        from.write("a.txt.p7d", "sign");
        for (const TempDir* dir : {&to, &written})
            if (row.taken) dir->write("a.txt", "old");
        std::string result, path;
        Files with_sign = row.files;
        try {
            const auto* data = reinterpret_cast<const uint8_t*>("new");
            path = MGFile().WriteSameFile(written.path("a.txt"), data, 3, row.mode, false);
        } catch (const MGErr& err) {
            EXPECT_EQ(err.str_param, written.path("a.txt"));
        }
        try {
            MGFile().CopySameFile(from.path(), to.path(), "a.txt", result, row.mode, true, true, 3, false, false, 5);
            with_sign[result + ".p7d"] = "sign";
        } catch (const MGErr& err) {
            EXPECT_EQ(err.mess_2, "Файл с таким именем уже существует в каталоге назначения");
        }
        EXPECT_EQ(result, row.result) << row.mode;
        EXPECT_EQ(path, row.result.empty() ? "" : written.path(row.result)) << row.mode;
        EXPECT_EQ(files_of(to), with_sign) << row.mode;
        EXPECT_EQ(files_of(written), row.files) << row.mode;
    }
}

TEST(Rotation, KeepsTheNewestCopies) {
    const struct {
        int copies;
        Files before, after;
    } rows[] = {{2, {}, {{"a.txt", "new"}}},
                {2,
                 {{"a.txt", "0"}, {"a~1.txt", "1"}, {"a~2.txt", "2"}},
                 {{"a.txt", "new"}, {"a~2.txt", "2"}, {"a~3.txt", "0"}}},
                {1,
                 {{"a~9.txt", "9"}, {"a~10.txt", "10"}, {"a~x.txt", "x"}},
                 {{"a.txt", "new"}, {"a~10.txt", "10"}, {"a~x.txt", "x"}}}};
    for (const auto& row : rows) {
        const TempDir from, to;
        from.write("a.txt", "new");
        for (const auto& [name, content] : row.before) to.write(name, content);
        std::string result;
        MGFile().CopySameFile(from.path(), to.path(), "a.txt", result, "ERROR", false, false, 0, false, true,
                              row.copies);
        EXPECT_EQ(result, "a.txt");
        EXPECT_EQ(files_of(to), row.after) << row.copies;
    }
}

} // namespace
