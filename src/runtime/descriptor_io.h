// Reading and writing pieces of known length through a descriptor, and what else opening and measuring files share.
// Interrupted calls are repeated, partial ones go on, so that a failure is told by its own errno: the write that hits a
// full disk, not the partial write before it.
#pragma once

#include "app/mg_err.h"
#include "runtime/owners.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace vorma {

// The rights of a file that we make, less the umask.
inline constexpr mode_t file_mode = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH;

// Opens what is to be read whole: a regular file, or a link to one. Anything else is refused at once, without waiting
// for a peer and without touching a device. Completes err with the failing step, its errno and text, and throws it.
inline FileDescriptor open_regular(MGErr& err, const char* file, const char* mess_2, const char* func_2,
                                   const char* opt_param = "") {
    struct stat info;
    if (stat(file, &info) != 0) fail_errno(err, mess_2, func_2, opt_param);
    FileDescriptor fd;
    if (S_ISREG(info.st_mode)) {
        fd.reset(open(file, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)); // the name may have changed hands since
        if (fd.get() < 0 || fstat(fd.get(), &info) != 0) fail_errno(err, mess_2, func_2, opt_param);
    }
    if (S_ISREG(info.st_mode)) return fd;
    if (*opt_param) err.opt_param = opt_param;
    err.err_description = "Это не обычный файл";
    fail(err, mess_2, func_2);
}

// IsFile, where a wrong "no" would let something be overwritten or left out: whatever keeps us from knowing completes
// err, with the name, and throws it. A link that leads nowhere, or where we may not go, is no file.
inline bool is_surely_file(MGErr& err, const std::string& name) {
    struct stat info;
    if (stat(name.c_str(), &info) == 0) return !S_ISDIR(info.st_mode);
    const int code = errno;
    if (code == ENOENT || code == ENOTDIR) return false;
    const bool link_fails = code == ELOOP || code == ENAMETOOLONG || code == EACCES;
    if (link_fails && lstat(name.c_str(), &info) == 0 && S_ISLNK(info.st_mode)) return false;
    err.str_param = name;
    errno = code;
    fail_errno(err, "Ошибка получения сведений о файле", "stat");
}

// The file's size, with the position at its start again; -1 with errno.
inline off_t size_and_rewind(int fd) {
    const off_t size = lseek(fd, 0, SEEK_END);
    return size < 0 || lseek(fd, 0, SEEK_SET) < 0 ? -1 : size;
}

// One read of up to size bytes: the bytes read, 0 at the end, -1 with errno.
inline ssize_t read_some(int fd, uint8_t* data, size_t size) {
    ssize_t got;
    do got = read(fd, data, size);
    while (got < 0 && errno == EINTR);
    return got;
}

// Whether all size bytes were read; if not, errno tells why, 0 for the end of the file.
inline bool read_whole(int fd, uint8_t* data, size_t size) {
    while (size > 0) {
        const ssize_t got = read_some(fd, data, size);
        if (got == 0) errno = 0;
        if (got <= 0) return false;
        data += got;
        size -= static_cast<size_t>(got);
    }
    return true;
}

// Whether all size bytes were written; if not, errno tells why. A disk that takes no more and gives no cause is full.
inline bool write_whole(int fd, const uint8_t* data, size_t size) {
    while (size > 0) {
        const ssize_t put = write(fd, data, size);
        if (put < 0 && errno == EINTR) continue;
        if (put == 0) errno = ENOSPC;
        if (put <= 0) return false;
        data += put;
        size -= static_cast<size_t>(put);
    }
    return true;
}

// Closes what was written to, and throws err if the system tells only then that it was not kept.
inline void finish_writing(MGErr& err, FileDescriptor& fd) {
    if (!fd.finish()) fail_errno(err, "Ошибка закрытия файла", "close");
}

// Throws err for a piece that read_whole did not finish; without a code where no call failed.
[[noreturn]] inline void fail_short(MGErr& err, const char* mess_2, const char* func_2) {
    if (errno != 0) fail_errno(err, mess_2, func_2);
    fail(err, mess_2, func_2);
}

// Puts data in the place of the file's content, under the same name. The room is reserved while the old content stands:
// on a full disk, or beyond the process's limit, it is still there. Then the bytes are written over the old ones, and
// only then is the file cut to its length. A file that isn't there is made with file_mode. Null if all went well, else
// the name of the call that failed, with errno. Throws nothing.
const char* overwrite_file(const char* file, const uint8_t* data, size_t size) noexcept;

} // namespace vorma
