// Opening, reading and writing whole, and writing over a file.
#include "runtime/descriptor_io.h"

#include <sys/resource.h>

using namespace vorma;

namespace {

// Writing beyond the process's own limit would end it by a signal.
bool is_within_limit(size_t size) {
    rlimit limit;
    if (getrlimit(RLIMIT_FSIZE, &limit) != 0 || size <= limit.rlim_cur) return true;
    errno = EFBIG;
    return false;
}

// Finds room for the data while the old content stands. A file that grows always asks for it: its blocks may hold more
// than data, such as attributes. Where the file system can't reserve any, what goes beyond the old content is written
// there already.
bool reserve(int fd, const struct stat& old, const uint8_t* data, size_t size) {
    if (!is_within_limit(size)) return false;
    if (static_cast<off_t>(size) <= old.st_size && old.st_blocks * 512 >= old.st_size) return true;
    int result;
    do result = fallocate(fd, FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(size));
    while (result != 0 && errno == EINTR);
    if (result == 0) return true;
    if (errno != EOPNOTSUPP && errno != ENOSYS) return false;
    const auto kept = static_cast<size_t>(old.st_size);
    return kept >= size || (lseek(fd, old.st_size, SEEK_SET) >= 0 && write_whole(fd, data + kept, size - kept) &&
                            lseek(fd, 0, SEEK_SET) == 0);
}

} // namespace

FileDescriptor vorma::open_regular(MGErr& err, const char* file, const char* mess_2, const char* func_2,
                                   const char* opt_param) {
    struct stat info;
    if (stat(file, &info) != 0) fail_errno(err, mess_2, func_2, opt_param);
    FileDescriptor fd;
    if (S_ISREG(info.st_mode)) {
        fd.reset(open(file, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)); // the name may have changed hands since
        if (!fd || fstat(fd.get(), &info) != 0) fail_errno(err, mess_2, func_2, opt_param);
    }
    if (S_ISREG(info.st_mode)) return fd;
    if (*opt_param) err.opt_param = opt_param;
    err.err_description = "Это не обычный файл";
    fail(err, mess_2, func_2);
}

bool vorma::is_surely_file(MGErr& err, const std::string& name) {
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

off_t vorma::size_and_rewind(int fd) {
    const off_t size = lseek(fd, 0, SEEK_END);
    return size < 0 || lseek(fd, 0, SEEK_SET) < 0 ? -1 : size;
}

ssize_t vorma::read_some(int fd, uint8_t* data, size_t size) {
    ssize_t got;
    do got = read(fd, data, size);
    while (got < 0 && errno == EINTR);
    return got;
}

bool vorma::read_whole(int fd, uint8_t* data, size_t size) {
    while (size > 0) {
        const ssize_t got = read_some(fd, data, size);
        if (got == 0) errno = 0;
        if (got <= 0) return false;
        data += got;
        size -= static_cast<size_t>(got);
    }
    return true;
}

bool vorma::write_whole(int fd, const uint8_t* data, size_t size) {
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

void vorma::finish_writing(MGErr& err, FileDescriptor& fd) {
    if (!fd.finish()) fail_errno(err, "Ошибка закрытия файла", "close");
}

void vorma::fail_short(MGErr& err, const char* mess_2, const char* func_2) {
    if (errno != 0) fail_errno(err, mess_2, func_2);
    fail(err, mess_2, func_2);
}

const char* vorma::overwrite_file(const char* file, const uint8_t* data, size_t size) noexcept {
    FileDescriptor fd(open(file, O_CREAT | O_RDWR | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, file_mode));
    struct stat old;
    if (!fd) return "open";
    if (fstat(fd.get(), &old) != 0) return "fstat";
    const bool regular = S_ISREG(old.st_mode); // anything else has neither room nor length
    if (regular && !reserve(fd.get(), old, data, size)) {
        const int code = errno;
        [[maybe_unused]] const int given_back = ftruncate(fd.get(), old.st_size); // what there was room for
        errno = code;
        return "fallocate";
    }
    if (!write_whole(fd.get(), data, size)) return "write";
    if (regular && old.st_size > static_cast<off_t>(size) && ftruncate(fd.get(), static_cast<off_t>(size)) != 0)
        return "ftruncate";
    return fd.finish() ? nullptr : "close";
}
