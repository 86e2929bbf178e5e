// Owners of memory and descriptors.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <unistd.h>

namespace vorma {

// What malloc or MGFile::ReadFile gave, freed on every path.
using HeapBuffer = std::unique_ptr<uint8_t, decltype(&std::free)>;

// An open descriptor, closed on every path. -1 is none.
class FileDescriptor {
public:
    explicit FileDescriptor(int fd = -1) : fd_(fd) {}
    ~FileDescriptor() { reset(); }
    FileDescriptor(FileDescriptor&& other) noexcept : fd_(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) reset(other.release());
        return *this;
    }

    explicit operator bool() const { return fd_ >= 0; } // one is held
    int get() const { return fd_; }
    // Hands the descriptor over to the caller.
    int release() {
        const int fd = fd_;
        fd_ = -1;
        return fd;
    }
    // Closes what was written to. False, with errno, if the system tells only now that it was not kept.
    [[nodiscard]] bool finish() { return close(release()) == 0; }
    // Closes what is held and takes fd instead.
    void reset(int fd = -1) {
        if (*this) close(fd_);
        fd_ = fd;
    }

private:
    int fd_;
};

} // namespace vorma
