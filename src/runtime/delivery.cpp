// Delivery: moving and copying files of any length, deciding on names that are taken.
#include "app/mg_err.h"
#include "runtime/copy_pieces.h"
#include "runtime/descriptor_io.h"
#include "runtime/mg_file.h"
#include "runtime/numbered_names.h"
#include "runtime/owners.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <limits>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

using namespace vorma;

namespace {

constexpr size_t long_file_piece = 0x20000000; // 512 MiB, the most that a copy holds in memory
constexpr const char* detached_sign_ext = ".p7d";

MGErr copy_error(const char* from, const char* to) {
    MGErr err = error_of("CopyLongFile", "Ошибка копирования файла");
    err.str_param = from;
    err.ext_param = to;
    return err;
}

FileDescriptor open_source(MGErr& err, const char* file) {
    return open_regular(err, file, "Ошибка выполнения открытия файла", "open", "O_RDONLY");
}

// A file that is its own target would be emptied before it is read, and removed after it.
void refuse_itself(MGErr& err, const FileDescriptor& source, const char* to) {
    struct stat from, target;
    if (fstat(source.get(), &from) != 0) fail_errno(err, "Ошибка получения сведений о файле", "fstat");
    if (stat(to, &target) != 0) {
        if (errno == ENOENT) return;
        fail_errno(err, "Ошибка создания файла", "stat");
    }
    if (from.st_dev == target.st_dev && from.st_ino == target.st_ino)
        fail(err, "Файл нельзя скопировать в самого себя", "(from == to)");
}

[[noreturn]] void fail_size(MGErr& err, off_t size, size_t wanted) {
    err.opt_param = std::to_string(wanted);
    err.num_param = size;
    fail(err, "Ошибка проверки размера сохраненного файла", "Size != test_size");
}

// Throws for what would make a copy fail and can be known before anything is touched.
void refuse_what_fails(const char* from, const char* to, bool test_size, size_t size) {
    MGErr err = copy_error(from, to);
    const FileDescriptor source = open_source(err, from);
    refuse_itself(err, source, to);
    const off_t length = lseek(source.get(), 0, SEEK_END);
    if (length < 0) fail_errno(err, "Ошибка получения размера файла", "lseek", "SEEK_END");
    if (test_size && static_cast<size_t>(length) != size) fail_size(err, length, size);
}

// Takes the copy away if its signature can't go along.
void copy_signature(const std::string& source, const std::string& target) {
    try {
        size_t size = 0;
        const HeapBuffer signature(MGFile::ReadFile((source + detached_sign_ext).c_str(), &size), &std::free);
        write_file((target + detached_sign_ext).c_str(), signature.get(), size, Partial::goes);
    } catch (...) {
        struct stat copy; // what went behind a link or into a device was never a file of ours
        if (lstat(target.c_str(), &copy) == 0 && S_ISREG(copy.st_mode)) unlink(target.c_str());
        throw;
    }
}

// Where a delivery goes: as told, or to the directory of today below it, which is made.
std::string target_dir(std::string dir, bool date_dirs) {
    if (date_dirs) {
        MGFile::AddYearMonDayToDir(dir, true, true, true);
        MGFile::IfNotExistMakeDirRecursive(dir);
    }
    return dir;
}

// Gives the file that bears name in dir the next number, and keeps the newest of the numbered ones.
void rotate_copies(MGErr& err, MGFile& file, const std::string& dir, const std::string& name, size_t keep) {
    std::string stem, ext;
    file.SplitFileNameToNameAndExt(name, stem, ext);

    const std::string target = file.JoinDirAndFileName(dir, name.c_str());
    if (is_surely_file(err, target)) {
        const uint32_t highest = file.GetMaxNumFromListNumFile(numbered_copies(file, dir, stem, ext));
        // Behind the last number there is none: any that is free.
        const std::string numbered = highest == std::numeric_limits<uint32_t>::max()
                                         ? file.MaxSameFileName(dir, name)
                                         : file.SameFileName(name, highest + 1);
        file.RenameFile(target.c_str(), file.JoinDirAndFileName(dir, numbered.c_str()).c_str());
    }
    std::vector<MGFileNumExt> surplus = numbered_copies(file, dir, stem, ext);
    surplus.resize(surplus.size() > keep ? surplus.size() - keep : 0);
    file.DelFilesFromDirExt(dir, surplus);
}

} // namespace

void vorma::copy_in_pieces(const char* from, const char* to, bool test_size, size_t size, size_t piece_max,
                           Partial partial) {
    MGErr err = copy_error(from, to);
    const FileDescriptor source = open_source(err, from);
    refuse_itself(err, source, to);
    FileDescriptor target(open(to, O_CREAT | O_RDWR | O_TRUNC | O_CLOEXEC, file_mode));
    if (!target)
        fail_errno(err, "Ошибка создания файла", "open",
                   "O_CREAT|O_RDWR|O_TRUNC, S_IRUSR|S_IWUSR|S_IRGRP|S_IWGRP|S_IROTH");
    UnfinishedFile unfinished(target, to, partial);

    const off_t length = size_and_rewind(source.get());
    if (length < 0) fail_errno(err, "Ошибка получения размера файла", "lseek", "SEEK_END");
    const auto whole = static_cast<size_t>(length);
    const size_t buffer_size = std::min(whole, piece_max);
    const HeapBuffer buffer(static_cast<uint8_t*>(std::malloc(std::max<size_t>(buffer_size, 1))), &std::free);
    err.num_param = static_cast<int64_t>(buffer_size);
    if (!buffer) fail(err, "Ошибка выделения памяти под данные файла", "malloc");

    for (size_t left = whole; left > 0;) {
        const size_t piece = std::min(left, buffer_size);
        err.num_param = static_cast<int64_t>(piece);
        if (!read_whole(source.get(), buffer.get(), piece)) fail_short(err, "Ошибка чтения данных из файла", "read");
        if (!write_whole(target.get(), buffer.get(), piece)) fail_errno(err, "Ошибка записи данных в файл", "write");
        left -= piece;
    }
    finish_writing(err, target);

    if (test_size && whole != size) {
        MGFile::RemoveFile(to);
        fail_size(err, length, size);
    }
    unfinished.keep();
}

void MGFile::CopyLongFile(const char* from, const char* to, bool test_size, size_t size) {
    at_edge("MGFile::CopyLongFile",
            [&] { copy_in_pieces(from, to, test_size, size, long_file_piece, Partial::stays); });
}

void MGFile::CopyLongFile(const std::string& from, const std::string& to) {
    CopyLongFile(from.c_str(), to.c_str(), false, 0);
}

void MGFile::MoveFile(const char* from, const char* to) {
    at_edge("MGFile::MoveFile", [&] {
        MGErr err = error_of("MoveFile", "Ошибка копирования файла");
        err.str_param = from;
        err.ext_param = to;
        MGErr unreadable = error_of("ReadFile", "Ошибка чтения данных из файла", from); // as the copy would say it
        refuse_itself(err, open_source(unreadable, from), to);
        CopyFile(from, to);
        RemoveFile(from);
    });
}

void MGFile::MoveFile(const std::string& from, const std::string& to) {
    MoveFile(from.c_str(), to.c_str());
}

void MGFile::MoveLongFile(const std::string& from, const std::string& to) {
    at_edge("MGFile::MoveLongFile", [&] {
        CopyLongFile(from, to);
        RemoveFile(from.c_str());
    });
}

void MGFile::RemoveDir(const char* dir) {
    at_edge("MGFile::RemoveDir", [&] {
        MGErr err = error_of("RemoveDir", "Ошибка функции удаления директории");
        err.str_param = dir;
        if (rmdir(dir) != 0) fail_errno(err, "Ошибка удаления директории", "rmdir");
    });
}

std::string MGFile::WriteSameFile(const std::string& file, const uint8_t* data, size_t size,
                                  const std::string& mode_same, bool date_dirs) {
    return at_edge("MGFile::WriteSameFile", [&] {
        MGErr err = error_of("WriteSameFile", "Ошибка функции записи файла");
        err.opt_param = file;

        const std::string dir = target_dir(GetDirFromFile(file), date_dirs);
        const std::string name = GetNameFromFile(file);
        std::string target = JoinDirAndFileName(dir, name.c_str());
        if (mode_same != "REPLACE" && is_surely_file(err, target)) {
            err.str_param = target;
            if (mode_same == "ERROR") fail(err, "Файл с таким именем уже существует", "(mode_same == ERROR)");
            target = JoinDirAndFileName(dir, MaxSameFileName(dir, name).c_str());
        }
        write_file(target.c_str(), data, size, Partial::goes);
        return target;
    });
}

void MGFile::CopySameFile(std::string from_dir, std::string to_dir, std::string name, std::string& result,
                          std::string mode_same, bool with_sign, bool test_size, size_t size, bool date_dirs,
                          bool rotate, int copies) {
    at_edge("MGFile::CopySameFile", [&] {
        MGErr err = error_of("CopySameFile", "Ошибка функции копирования файлов");
        err.opt_param = from_dir;
        err.str_param = to_dir;
        err.ext_param = name;

        const std::string source = JoinDirAndFileName(from_dir, name.c_str());
        if (with_sign) { // now: later it would be half a delivery
            const std::string sign = source + detached_sign_ext;
            MGErr unreadable = error_of("ReadFile", "Ошибка чтения данных из файла", sign.c_str());
            open_source(unreadable, sign.c_str());
        }
        const std::string dir = target_dir(to_dir, date_dirs);
        const std::string plain = JoinDirAndFileName(dir, name.c_str());
        std::string final_name = name;
        if (rotate && copies >= 1) {
            refuse_what_fails(source.c_str(), plain.c_str(), test_size, size);
            rotate_copies(err, *this, dir, name, static_cast<size_t>(copies));
        } else if (mode_same != "REPLACE" && is_surely_file(err, plain)) {
            if (mode_same == "ERROR")
                fail(err, "Файл с таким именем уже существует в каталоге назначения", "(mode_same == ERROR)");
            final_name = MaxSameFileName(dir, name);
        }

        const std::string target = JoinDirAndFileName(dir, final_name.c_str());
        copy_in_pieces(source.c_str(), target.c_str(), test_size, size, long_file_piece, Partial::goes);
        if (with_sign) copy_signature(source, target);
        result = final_name;
    });
}
