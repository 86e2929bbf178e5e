// Writing over a file.
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

const char* vorma::overwrite_file(const char* file, const uint8_t* data, size_t size) noexcept {
    FileDescriptor fd(open(file, O_CREAT | O_RDWR | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, file_mode));
    struct stat old;
    if (fd.get() < 0) return "open";
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
