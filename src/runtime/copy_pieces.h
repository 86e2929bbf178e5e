// Writing and copying whole files, with what becomes of a target that was begun when that fails; and the length of a
// copy's pieces as an argument.
#pragma once

#include "runtime/owners.h"

#include <cstddef>
#include <cstdint>
#include <sys/types.h>

namespace vorma {

enum class Partial { stays, goes };

// A file that is being written: unless it is kept, its end removes it if it is to go. What is no regular file stays.
class UnfinishedFile {
public:
    UnfinishedFile(const FileDescriptor& fd, const char* name, Partial partial);
    ~UnfinishedFile();
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;

    void keep() { goes_ = false; }

private:
    const char* name_;
    bool goes_;
    ino_t inode_ = 0;
    dev_t device_ = 0;
};

// MGFile::WriteFile. Throws MGErr.
void write_file(const char* file, const uint8_t* data, size_t size, Partial partial);

// Copies from to to in pieces of at most piece_max bytes, through one buffer. With test_size, a source that is not size
// bytes long makes it remove the target again. Throws MGErr.
void copy_in_pieces(const char* from, const char* to, bool test_size, size_t size, size_t piece_max, Partial partial);

} // namespace vorma
