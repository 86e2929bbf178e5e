#include "runtime/descriptor_io.h"

using namespace vorma;

namespace {

// Whether there is room for size bytes; true as well where the file system can't tell.
bool reserve(int fd, off_t size) {
    if (size == 0) return true;
    int result;
    do result = fallocate(fd, FALLOC_FL_KEEP_SIZE, 0, size);
    while (result != 0 && errno == EINTR);
    return result == 0 || errno == EOPNOTSUPP || errno == ENOSYS;
}

} // namespace

const char* vorma::overwrite_file(const char* file, const uint8_t* data, size_t size) noexcept {
    FileDescriptor fd(open(file, O_CREAT | O_RDWR | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, file_mode));
    struct stat old;
    if (fd.get() < 0) return "open";
    if (fstat(fd.get(), &old) != 0) return "fstat";
    const bool regular = S_ISREG(old.st_mode); // anything else has neither room nor length
    if (regular && !reserve(fd.get(), static_cast<off_t>(size))) {
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
