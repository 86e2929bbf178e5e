#include "runtime/copy_pieces.h"
#include "runtime/mg_file.h"
#include "support/error_of.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <set>
#include <sstream>
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

// The files of a directory in the order of their names, "a.txt=content b.txt=content ".
std::string files_of(const TempDir& dir) {
    std::set<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(dir.path())) files.insert(entry.path().filename());
    std::string text;
    for (const std::string& name : files) text += name + "=" + dir.read(name) + " ";
    return text;
}

void put_files(const TempDir& dir, const std::string& text) {
    std::istringstream words(text);
    for (std::string word; words >> word;) dir.write(word.substr(0, word.find('=')), word.substr(word.find('=') + 1));
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
    EXPECT_EQ(files_of(dir), "moved=0123456789 to=0123456789 ");
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

TEST(CopyLongFile, LeavesAFileThatIsItsOwnTargetAlone) {
    const TempDir dir;
    const std::string file = dir.path("f"), link = dir.path("link");
    dir.write("f", "content");
    std::filesystem::create_symlink(file, link);
    EXPECT_EQ(error_of([&] { MGFile::CopyLongFile(file, link); }).func_2, "(from == to)");
    EXPECT_EQ(error_of([&] { MGFile::MoveLongFile(file, file); }).func_2, "(from == to)");
    EXPECT_EQ(error_of([&] { MGFile::MoveFile(file, file); }).func_2, "(from == to)");
    EXPECT_EQ(dir.read("f"), "content");
}

// A stem is no mask, and what has another stem belongs to another family.
TEST(SameName, RotationKeepsToItsOwnFamily) {
    const struct {
        const char *name, *before, *after;
    } rows[] = {
        {"a*.txt", "a*.txt=0 ab~1.txt=1 a~2.txt=2", "a*.txt=new a*~1.txt=0 ab~1.txt=1 a~2.txt=2 "},
        {"\xff.txt", "\xff.txt=0 \xff~1.txt=1", "\xff.txt=new \xff~2.txt=0 "},
        {"a.txt", "a.txt=0 a~1~7.txt=1 a~2b.txt=2 a~03.txt=3",
         "a.txt=new a~03.txt=3 a~1.txt=0 a~1~7.txt=1 a~2b.txt=2 "},
        {"a.txt", "a.txt=0 a~4294967295.txt=1", "a.txt=new a~4294967295.txt=1 "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.before);
        const TempDir from, to;
        from.write(row.name, "new");
        put_files(to, row.before);
        std::string result;
        MGFile().CopySameFile(from.path(), to.path(), row.name, result, "", false, false, 0, false, true, 1);
        EXPECT_EQ(files_of(to), row.after);
    }
}

TEST(SameName, IsDecidedByTheModeOrByRotation) {
    const struct {
        const char* mode;
        int copies;                          // above 0: rotation; below: with the signature
        const char *before, *result, *after; // without a result it is refused
    } rows[] = {
        {"ADD_NUM", 0, "a.txt=0", "a~1.txt", "a.txt=0 a~1.txt=new "},
        {"ADD_NUM", -1, "a.txt=0", "a~1.txt", "a.txt=0 a~1.txt=new a~1.txt.p7d=sign "},
        {"REPLACE", 0, "a.txt=0", "a.txt", "a.txt=new "},
        {"ERROR", 0, "a.txt=0", "", "a.txt=0 "},
        {"ERROR", 2, "a.txt=0 a~1.txt=1 a~2.txt=2", "a.txt", "a.txt=new a~2.txt=2 a~3.txt=0 "},
        {"ERROR", 1, "a~9.txt=9 a~10.txt=10 a~x.txt=x", "a.txt", "a.txt=new a~10.txt=10 a~x.txt=x "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.mode) + " " + row.before);
        const TempDir from, to;
        put_files(from, "a.txt=new a.txt.p7d=sign");
        put_files(to, row.before);
        std::string result;
        try {
            MGFile().CopySameFile(from.path(), to.path(), "a.txt", result, row.mode,
                                  row.copies<0, true, 3, false, row.copies> 0, row.copies);
        } catch (const MGErr& err) {
            EXPECT_EQ(err.func_2, "(mode_same == ERROR)");
        }
        EXPECT_EQ(result, row.result);
        EXPECT_EQ(files_of(to), row.after);
    }
}

} // namespace
