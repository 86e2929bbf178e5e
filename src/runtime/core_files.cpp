// MGFile: whole files and directories, each read or written in one call.
#include "runtime/copy_pieces.h"
#include "runtime/descriptor_io.h"
#include "runtime/mg_file.h"
#include "runtime/owners.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

using namespace vorma;

namespace {

// What stat says of a name; false for a name that is null or blank or can't be examined.
bool examine(const char* name, struct stat& info) {
    return !MGFile::IsEmptyString(name) && stat(name, &info) == 0;
}

// Linux moves no more than this in one call, whatever there is and whatever there is room for: known before a file is
// touched.
void refuse_beyond_one_call(MGErr& err, size_t size, const char* mess_2, const char* func_2) {
    constexpr size_t most = 0x7ffff000;
    if (size <= most) return;
    err.num_param = static_cast<int64_t>(size);
    errno = EFBIG;
    fail_errno(err, mess_2, func_2);
}

// And closes it. errno is set first: a call that moves fewer bytes than asked for, as on a full disk, sets none.
void write_in_one_call(MGErr& err, FileDescriptor& fd, const uint8_t* data, size_t size) {
    errno = ENOSPC;
    if (size > 0 && write(fd.get(), data, size) != static_cast<ssize_t>(size)) {
        err.num_param = static_cast<int64_t>(size);
        fail_errno(err, "Ошибка записи данных в файл", "write");
    }
    finish_writing(err, fd);
}

HeapBuffer load(const char* file, size_t& size) {
    MGErr err = error_of("ReadFile", "Ошибка чтения данных из файла", file);

    const FileDescriptor fd = open_regular(err, file, "Ошибка выполнения открытия файла", "open", "O_RDONLY");
    const off_t length = size_and_rewind(fd.get());
    if (length < 0) fail_errno(err, "Ошибка получения размера файла", "lseek", "SEEK_END");

    const size_t wanted = static_cast<size_t>(length);
    refuse_beyond_one_call(err, wanted, "Ошибка чтения данных из файла", "read");
    HeapBuffer buffer(static_cast<uint8_t*>(std::malloc(wanted + 1)), &std::free);
    if (!buffer) {
        err.num_param = static_cast<int64_t>(wanted + 1);
        fail(err, "Ошибка выделения памяти под данные файла", "malloc");
    }
    errno = 0;
    if (read(fd.get(), buffer.get(), wanted) != static_cast<ssize_t>(wanted)) {
        err.num_param = static_cast<int64_t>(wanted);
        fail_short(err, "Ошибка чтения данных из файла", "read");
    }
    buffer.get()[wanted] = 0;
    size = wanted;
    return buffer;
}

} // namespace

UnfinishedFile::UnfinishedFile(const FileDescriptor& fd, const char* name, Partial partial) : name_(name) {
    struct stat info;
    goes_ = partial == Partial::goes && fstat(fd.get(), &info) == 0 && S_ISREG(info.st_mode);
    if (!goes_) return;
    inode_ = info.st_ino;
    device_ = info.st_dev;
}

UnfinishedFile::~UnfinishedFile() {
    struct stat now;
    // Behind the name there can be a link, or by now what somebody else has put there.
    if (goes_ && lstat(name_, &now) == 0 && now.st_ino == inode_ && now.st_dev == device_) unlink(name_);
}

void vorma::write_file(const char* file, const uint8_t* data, size_t size, Partial partial) {
    MGErr err = error_of("WriteFile", "Ошибка функции записи данных в файл", file);
    refuse_beyond_one_call(err, size, "Ошибка записи данных в файл", "write");
    FileDescriptor fd(open(file, O_CREAT | O_RDWR | O_TRUNC | O_CLOEXEC, file_mode));
    if (!fd)
        fail_errno(err, "Ошибка создания файла", "open",
                   "O_CREAT|O_RDWR|O_TRUNC, S_IRUSR|S_IWUSR|S_IRGRP|S_IWGRP|S_IROTH");
    UnfinishedFile unfinished(fd, file, partial);
    write_in_one_call(err, fd, data, size);
    unfinished.keep();
}

MGFile::~MGFile() {
    if (m_dir) closedir(m_dir);
    if (m_lib) dlclose(m_lib);
}

bool MGFile::IsFile(const char* name) {
    struct stat info;
    return examine(name, info) && !S_ISDIR(info.st_mode);
}

bool MGFile::IsDir(const char* name) {
    struct stat info;
    return examine(name, info) && S_ISDIR(info.st_mode);
}

int64_t MGFile::SizeFile(const char* name) {
    struct stat info;
    return examine(name, info) ? info.st_size : 0;
}

void MGFile::MakeDir(const char* path) {
    at_edge("MGFile::MakeDir", [&] {
        MGErr err = error_of("MakeDir", "Ошибка функции создания директории", path);
        if (mkdir(path, S_IRWXU | S_IRWXG | S_IROTH | S_IXOTH) != 0 && errno != EEXIST)
            fail_errno(err, "Ошибка создания директории", "mkdir", "S_IRWXU|S_IRWXG|S_IROTH|S_IXOTH");
    });
}

void MGFile::IfNotExistMakeDirRecursive(const std::string& path) {
    at_edge("MGFile::IfNotExistMakeDirRecursive", [&] {
        std::string existing = path;
        std::vector<std::string> missing;
        while (!existing.empty()) {
            if (existing.back() == '/') existing.pop_back();
            if (existing.empty() || IsDir(existing.c_str())) break; // empty: the root is reached
            const size_t slash = existing.rfind('/');
            const size_t cut = slash == std::string::npos ? 0 : slash;
            missing.push_back(existing.substr(cut));
            existing.resize(cut);
        }
        for (; !missing.empty(); missing.pop_back()) {
            existing += missing.back();
            MakeDir(existing.c_str());
        }
    });
}

void MGFile::GetEnv(const char* name, std::string& value) {
    at_edge("MGFile::GetEnv", [&] {
        MGErr err = error_of("GetEnv", "Ошибка функции получения переменной окружения", name);
        const char* found = std::getenv(name);
        if (!found) fail(err, "Ошибка получения значения домашнего каталога пользователя", "getenv");
        value = found;
    });
}

uint8_t* MGFile::ReadFile(const char* file, size_t* size) {
    return at_edge("MGFile::ReadFile", [&] { return load(file, *size).release(); });
}

void MGFile::Free(void* data) {
    std::free(data);
}

void MGFile::Copy(void* to, const void* from, size_t size) {
    const auto* source = static_cast<const uint8_t*>(from);
    auto* target = static_cast<uint8_t*>(to);
    for (size_t i = 0; i < size; ++i) target[i] = source[i];
}

void MGFile::ReadFileString(const std::string& file, std::string& data) {
    at_edge("MGFile::ReadFileString", [&] {
        size_t size = 0;
        const HeapBuffer buffer(ReadFile(file.c_str(), &size), &std::free);
        data.assign(reinterpret_cast<const char*>(buffer.get()), size);
    });
}

void MGFile::ReadFileVector(const std::string& file, std::vector<uint8_t>& data) {
    at_edge("MGFile::ReadFileVector", [&] {
        data.clear();
        size_t size = 0;
        const HeapBuffer buffer(ReadFile(file.c_str(), &size), &std::free);
        data.assign(buffer.get(), buffer.get() + size);
    });
}

void MGFile::WriteFile(const char* file, const uint8_t* data, size_t size) {
    at_edge("MGFile::WriteFile", [&] { write_file(file, data, size, Partial::stays); });
}

void MGFile::AddFile(const char* file, const uint8_t* data, size_t size) {
    at_edge("MGFile::AddFile", [&] {
        MGErr err = error_of("AddFile", "Ошибка функции добавления данных в файл", file);
        refuse_beyond_one_call(err, size, "Ошибка записи данных в файл", "write");
        FileDescriptor fd(open(file, O_CREAT | O_RDWR | O_CLOEXEC, file_mode));
        if (!fd)
            fail_errno(err, "Ошибка открытия файла", "open", "O_CREAT|O_RDWR, S_IRUSR|S_IWUSR|S_IRGRP|S_IWGRP|S_IROTH");
        if (lseek(fd.get(), 0, SEEK_END) < 0)
            fail_errno(err, "Ошибка установки указателя в конец файла", "lseek", "SEEK_END");
        write_in_one_call(err, fd, data, size);
    });
}

void MGFile::CopyFile(const char* from, const char* to) {
    at_edge("MGFile::CopyFile", [&] {
        size_t size = 0;
        const HeapBuffer buffer(ReadFile(from, &size), &std::free);
        WriteFile(to, buffer.get(), size);
    });
}

void MGFile::CopyFile(const std::string& from, const std::string& to) {
    CopyFile(from.c_str(), to.c_str());
}

void MGFile::RemoveFile(const char* file) {
    at_edge("MGFile::RemoveFile", [&] {
        MGErr err = error_of("RemoveFile", "Ошибка функции удаления файла", file);
        if (unlink(file) != 0) fail_errno(err, "Ошибка удаления файла", "unlink");
    });
}

void MGFile::RenameFile(const char* from, const char* to) {
    at_edge("MGFile::RenameFile", [&] {
        MGErr err = error_of("RenameFile", "Ошибка функции переименования файла", from);
        err.opt_param = to;
        if (rename(from, to) != 0) fail_errno(err, "Ошибка переименования файла", "rename");
    });
}

void MGFile::DirAddSlash(std::string& dir) {
    at_edge("MGFile::DirAddSlash", [&] {
        if (dir.empty() || dir.back() != '/') dir += '/';
    });
}

std::string MGFile::JoinDirAndFileName(const std::string& dir, const char* name) {
    return JoinDirAndFileNameExt(dir, name, "");
}
