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
FileDescriptor open_regular(MGErr& err, const char* file, const char* mess_2, const char* func_2,
                            const char* opt_param = "");

// IsFile, where a wrong "no" would let something be overwritten or left out: whatever keeps us from knowing completes
// err, with the name, and throws it. A link that leads nowhere, or where we may not go, is no file.
bool is_surely_file(MGErr& err, const std::string& name);

// The file's size, with the position at its start again; -1 with errno.
off_t size_and_rewind(int fd);

// One read of up to size bytes: the bytes read, 0 at the end, -1 with errno.
ssize_t read_some(int fd, uint8_t* data, size_t size);

// Whether all size bytes were read; if not, errno tells why, 0 for the end of the file.
bool read_whole(int fd, uint8_t* data, size_t size);

// Whether all size bytes were written; if not, errno tells why. A disk that takes no more and gives no cause is full.
bool write_whole(int fd, const uint8_t* data, size_t size);

// Closes what was written to, and throws err if the system tells only then that it was not kept.
void finish_writing(MGErr& err, FileDescriptor& fd);

// Throws err for a piece that read_whole did not finish; without a code where no call failed.
[[noreturn]] void fail_short(MGErr& err, const char* mess_2, const char* func_2);

// Puts data in the place of the file's content, under the same name. The room is reserved while the old content stands:
// on a full disk, or beyond the process's limit, it is still there. Then the bytes are written over the old ones, and
// only then is the file cut to its length. A file that isn't there is made with file_mode. Null if all went well, else
// the name of the call that failed, with errno. Throws nothing.
const char* overwrite_file(const char* file, const uint8_t* data, size_t size) noexcept;

} // namespace vorma
