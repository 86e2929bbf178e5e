#include "support/faults.h"

#include "app/mg_err.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <iconv.h>
#include <ifaddrs.h>
#include <locale.h>
#include <mutex>
#include <net/if.h>
#include <netdb.h>
#include <new>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#if defined(VORMA_SANITIZED)
#define ALLOCATOR(name) __interceptor_##name
#else
#define ALLOCATOR(name) __libc_##name
#endif
extern "C" {
void* ALLOCATOR(malloc)(size_t) noexcept;
void* ALLOCATOR(calloc)(size_t, size_t) noexcept;
void* ALLOCATOR(realloc)(void*, size_t) noexcept;
void* ALLOCATOR(memalign)(size_t, size_t) noexcept;
void ALLOCATOR(free)(void*) noexcept;
#if defined(VORMA_SANITIZED)
void __lsan_disable();
void __lsan_enable();
#endif
}

namespace {

enum class Sort { call, writing, memory };

// Of the operation that is at work in this thread.
struct State {
    bool armed = false;     // faults are wanted
    bool recording = false; // allocations are kept in `blocks`
    faults::Kind kind = faults::Kind::once;
    size_t wanted = 0; // the point that fails
    size_t passed = 0; // points of that kind so far
    const char* failed = nullptr;
    bool full = false; // the write behind a short one fails
};
constinit thread_local State state;
constinit size_t injected = 0;

// The blocks that are allocated while one records; what came last mostly goes first. No container: it is the allocator
// that asks.
class Blocks {
public:
    void add(void* block) {
        if (!block) return;
        const std::lock_guard lock(mutex_);
        if (live_ == blocks_.size()) std::abort();
        blocks_[live_++] = block;
    }
    void remove(void* block) {
        const std::lock_guard lock(mutex_);
        for (size_t at = live_; at-- > 0;) {
            if (blocks_[at] != block) continue;
            blocks_[at] = blocks_[--live_];
            return;
        }
    }
    void clear() { live_ = 0; }
    size_t live() const { return live_; }

private:
    std::mutex mutex_;
    std::array<void*, 1 << 16> blocks_{};
    std::atomic<size_t> live_ = 0;
};
constinit Blocks blocks;

// Whether this point is the one that fails; errno is set then.
bool fails(Sort sort, const char* name, int error) {
    if (!state.armed) return false;
    if (state.kind == faults::Kind::no_memory && sort != Sort::memory) return false;
    if (state.kind == faults::Kind::short_write && sort != Sort::writing) return false;
    ++state.passed;
    const bool lasting = state.kind == faults::Kind::no_memory;
    if (lasting ? state.passed < state.wanted : state.passed != state.wanted) return false;
    if (!state.failed) state.failed = name;
    errno = error;
    return true;
}

template <class Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// What is left of a writing call's size: half for the point that is to fail shortly; 0 if the call is to fail.
size_t writable(const char* name, size_t size) {
    if (std::exchange(state.full, false) && state.armed) {
        errno = ENOSPC;
        return 0;
    }
    if (size == 0 || !fails(Sort::writing, name, ENOSPC)) return size;
    state.full = state.kind == faults::Kind::short_write;
    return state.full ? size / 2 : 0;
}

} // namespace

// --- The stand-ins ---

#pragma GCC diagnostic ignored "-Wnonnull-compare"
#define WEAK __attribute__((weak))

#define FALLIBLE(type, name, parameters, arguments, nothrow, failure)                                                  \
    extern "C" WEAK type name parameters nothrow {                                                                     \
        static const auto real = next<type parameters>(#name);                                                         \
        return fails(Sort::call, #name, EIO) ? failure : real arguments;                                               \
    }

FALLIBLE(int, stat, (const char* path, struct stat* info), (path, info), noexcept, -1)
FALLIBLE(int, lstat, (const char* path, struct stat* info), (path, info), noexcept, -1)
FALLIBLE(int, fstat, (int fd, struct stat* info), (fd, info), noexcept, -1)
FALLIBLE(off_t, lseek, (int fd, off_t offset, int whence), (fd, offset, whence), noexcept, -1)
FALLIBLE(ssize_t, read, (int fd, void* data, size_t size), (fd, data, size), , -1)
FALLIBLE(int, ftruncate, (int fd, off_t size), (fd, size), noexcept, -1)
FALLIBLE(int, fallocate, (int fd, int mode, off_t from, off_t size), (fd, mode, from, size), , -1)
FALLIBLE(int, fsync, (int fd), (fd), , -1)
FALLIBLE(int, chmod, (const char* path, mode_t mode), (path, mode), noexcept, -1)
FALLIBLE(int, fchmod, (int fd, mode_t mode), (fd, mode), noexcept, -1)
FALLIBLE(int, mkdir, (const char* path, mode_t mode), (path, mode), noexcept, -1)
FALLIBLE(int, rmdir, (const char* path), (path), noexcept, -1)
FALLIBLE(int, unlink, (const char* path), (path), noexcept, -1)
FALLIBLE(int, rename, (const char* from, const char* to), (from, to), noexcept, -1)
FALLIBLE(DIR*, opendir, (const char* path), (path), , nullptr)
FALLIBLE(dirent*, readdir, (DIR * dir), (dir), , nullptr)
FALLIBLE(int, pipe2, (int* ends, int flags), (ends, flags), noexcept, -1)
FALLIBLE(pid_t, waitpid, (pid_t child, int* status, int options), (child, status, options), , -1)
FALLIBLE(int, system, (const char* command), (command), , -1)
FALLIBLE(int, usleep, (useconds_t time), (time), , -1)
FALLIBLE(int, clock_nanosleep, (clockid_t clock, int flags, const timespec* time, timespec* left),
         (clock, flags, time, left), , errno)
FALLIBLE(tm*, localtime_r, (const time_t* time, tm* parts), (time, parts), noexcept, nullptr)
FALLIBLE(iconv_t, iconv_open, (const char* to, const char* from), (to, from), , iconv_t(-1))
FALLIBLE(size_t, iconv, (iconv_t cd, char** in, size_t* in_left, char** out, size_t* out_left),
         (cd, in, in_left, out, out_left), , size_t(-1))
FALLIBLE(int, socket, (int family, int type, int protocol), (family, type, protocol), noexcept, -1)
FALLIBLE(int, bind, (int sock, const sockaddr* address, socklen_t size), (sock, address, size), noexcept, -1)
FALLIBLE(int, listen, (int sock, int most), (sock, most), noexcept, -1)
FALLIBLE(int, connect, (int sock, const sockaddr* address, socklen_t size), (sock, address, size), , -1)
FALLIBLE(int, accept, (int sock, sockaddr* address, socklen_t* size), (sock, address, size), , -1)
FALLIBLE(int, accept4, (int sock, sockaddr* address, socklen_t* size, int flags), (sock, address, size, flags), , -1)
FALLIBLE(int, shutdown, (int sock, int how), (sock, how), noexcept, -1)
FALLIBLE(int, setsockopt, (int sock, int level, int option, const void* value, socklen_t size),
         (sock, level, option, value, size), noexcept, -1)
FALLIBLE(int, getsockopt, (int sock, int level, int option, void* value, socklen_t* size),
         (sock, level, option, value, size), noexcept, -1)
FALLIBLE(int, getsockname, (int sock, sockaddr* address, socklen_t* size), (sock, address, size), noexcept, -1)
FALLIBLE(ssize_t, recv, (int sock, void* data, size_t size, int flags), (sock, data, size, flags), , -1)
FALLIBLE(int, poll, (pollfd * fds, nfds_t count, int timeout), (fds, count, timeout), , -1)
FALLIBLE(int, ppoll, (pollfd * fds, nfds_t count, const timespec* timeout, const sigset_t* mask),
         (fds, count, timeout, mask), , -1)
FALLIBLE(int, getifaddrs, (ifaddrs * *list), (list), noexcept, -1)
FALLIBLE(struct if_nameindex*, if_nameindex, (), (), noexcept, nullptr)
FALLIBLE(int, getaddrinfo, (const char* node, const char* service, const addrinfo* hints, addrinfo** list),
         (node, service, hints, list), , EAI_SYSTEM)

#define VARIADIC(name, parameters, arguments, nothrow)                                                                 \
    extern "C" WEAK int name parameters nothrow {                                                                      \
        static const auto real = next<int parameters>(#name);                                                          \
        va_list rest;                                                                                                  \
        va_start(rest, flags);                                                                                         \
        void* last = va_arg(rest, void*);                                                                              \
        va_end(rest);                                                                                                  \
        return fails(Sort::call, #name, EIO) ? -1 : real arguments;                                                    \
    }

VARIADIC(open, (const char* path, int flags, ...), (path, flags, last), )
VARIADIC(openat, (int dir, const char* path, int flags, ...), (dir, path, flags, last), )
VARIADIC(fcntl, (int fd, int flags, ...), (fd, flags, last), )
VARIADIC(ioctl, (int fd, unsigned long flags, ...), (fd, flags, last), noexcept)

#define WRITING(name, parameters, arguments)                                                                           \
    extern "C" WEAK ssize_t name parameters {                                                                          \
        static const auto real = next<ssize_t parameters>(#name);                                                      \
        const size_t wanted = size;                                                                                    \
        size = writable(#name, size);                                                                                  \
        return size == 0 && wanted > 0 ? -1 : real arguments;                                                          \
    }

WRITING(write, (int fd, const void* data, size_t size), (fd, data, size))
WRITING(send, (int sock, const void* data, size_t size, int flags), (sock, data, size, flags))
WRITING(sendto, (int sock, const void* data, size_t size, int flags, const sockaddr* to, socklen_t to_size),
        (sock, data, size, flags, to, to_size))

// What a release build calls where it knows the size of the buffer.
extern "C" ssize_t __read_chk(int fd, void* data, size_t size, size_t) {
    return read(fd, data, size);
}
extern "C" ssize_t __recv_chk(int sock, void* data, size_t size, size_t, int flags) {
    return recv(sock, data, size, flags);
}
extern "C" int __poll_chk(pollfd* fds, nfds_t count, int timeout, size_t) {
    return poll(fds, count, timeout);
}
extern "C" int __ppoll_chk(pollfd* fds, nfds_t count, const timespec* timeout, const sigset_t* mask, size_t) {
    return ppoll(fds, count, timeout, mask);
}

// Closes all the same, as the system does.
extern "C" WEAK int close(int fd) {
    static const auto real = next<int(int)>("close");
    const int result = real(fd);
    return fails(Sort::call, "close", EIO) ? -1 : result;
}

// What the C library does inside is not ours to test: without memory the loader forgets what it has, and a locale loses
// some of it. The leak check knows the loader's blocks by their caller, and that is our malloc.
struct Aside : faults::Pause {
#if defined(VORMA_SANITIZED)
    Aside() {
        __lsan_disable();
    }
    ~Aside() {
        __lsan_enable();
    }
#endif
};
#define UNDISTURBED(type, name, parameters, arguments)                                                                 \
    extern "C" WEAK type name parameters noexcept {                                                                    \
        static const auto real = next<type parameters>(#name);                                                         \
        if (fails(Sort::call, #name, EIO)) return nullptr;                                                             \
        const Aside aside;                                                                                             \
        return real arguments;                                                                                         \
    }

UNDISTURBED(void*, dlopen, (const char* file, int mode), (file, mode))
UNDISTURBED(locale_t, newlocale, (int mask, const char* name, locale_t base), (mask, name, base))

// A child process goes its way untouched.
extern "C" WEAK pid_t fork() noexcept {
    static const auto real = next<pid_t()>("fork");
    if (fails(Sort::call, "fork", EAGAIN)) return -1;
    const pid_t child = real();
    if (child == 0) state.armed = false;
    return child;
}

// --- The allocator ---

namespace {

void* recorded(void* block) {
    if (state.recording) blocks.add(block);
    return block;
}

bool memory_fails() {
    return fails(Sort::memory, "malloc", ENOMEM);
}

} // namespace

extern "C" void* malloc(size_t size) noexcept {
    return memory_fails() ? nullptr : recorded(ALLOCATOR(malloc)(size));
}
extern "C" void* calloc(size_t count, size_t size) noexcept {
    return memory_fails() ? nullptr : recorded(ALLOCATOR(calloc)(count, size));
}
extern "C" void* memalign(size_t alignment, size_t size) noexcept {
    return memory_fails() ? nullptr : recorded(ALLOCATOR(memalign)(alignment, size));
}
extern "C" void* aligned_alloc(size_t alignment, size_t size) noexcept {
    return memalign(alignment, size);
}
extern "C" int posix_memalign(void** block, size_t alignment, size_t size) noexcept {
    *block = memalign(alignment, size);
    return *block ? 0 : ENOMEM;
}
extern "C" void free(void* block) noexcept {
    if (blocks.live() > 0) blocks.remove(block);
    ALLOCATOR(free)(block);
}
extern "C" void* realloc(void* block, size_t size) noexcept {
    if (memory_fails()) return nullptr;
    if (blocks.live() > 0) blocks.remove(block);
    return recorded(ALLOCATOR(realloc)(block, size));
}

void* operator new(size_t size) {
    if (void* block = malloc(std::max<size_t>(size, 1))) return block;
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept {
    free(block);
}
void operator delete(void* block, size_t) noexcept {
    free(block);
}

// --- The loop ---

namespace {

size_t open_descriptors() {
    size_t number = 0;
    DIR* dir = opendir("/proc/self/fd");
    while (readdir(dir)) ++number;
    closedir(dir);
    return number;
}

// Whether it did what it is for; not if it threw one of the two values that may leave an operation. Tells which.
bool passes(const std::function<void()>& operation, std::string& thrown) {
    try {
        operation();
        return true;
    } catch (const MGErr& err) {
        state.armed = state.recording = false;
        thrown = err.GetString();
    } catch (const MGExit&) {
        thrown = "MGExit";
    } catch (const std::exception& e) {
        state.armed = state.recording = false;
        ADD_FAILURE() << "neither MGErr nor MGExit: " << e.what();
    }
    return false;
}

// One run with the given point failing; false if it has no such point.
bool run_with_fault(const std::function<faults::Run()>& prepare, faults::Kind kind, size_t point) {
    const size_t descriptors = open_descriptors();
    blocks.clear();
    state = {.recording = true, .kind = kind, .wanted = point};
    {
        const faults::Run run = prepare();
        state.armed = point > 0;
        std::string thrown;
        const bool done = passes(run.operation, thrown);
        state.armed = state.recording = false;
        const std::string where = "fails at " + faults::last_point();
        SCOPED_TRACE(where);
        run.check(done);
        if (!done) {
            state.recording = true;
            const bool works = state.failed && passes(run.operation, thrown);
            state.recording = false;
            EXPECT_TRUE(works) << "does not work: " << thrown;
            run.check(true);
        }
    }
    if (point == 0) return false;
    EXPECT_EQ(blocks.live(), 0U) << "blocks are still allocated, after " << faults::last_point();
    EXPECT_EQ(open_descriptors(), descriptors) << "descriptors, after " << faults::last_point();
    return state.failed;
}

// At the end of the program, so that the figure is there for each test that has one.
struct Total {
    Total() {
        setenv("TZ", "UTC0", 1); // read once and kept: the file of a zone is read again and again
        tzset();
    }
    ~Total() { std::printf("%zu faults injected\n", injected); }
};

} // namespace

faults::Pause::Pause() : armed_(std::exchange(state.armed, false)), recording_(std::exchange(state.recording, false)) {}

faults::Pause::~Pause() {
    state.armed = armed_;
    state.recording = recording_;
}

std::string faults::last_point() {
    return (state.failed ? state.failed : "none") + (" " + std::to_string(state.wanted));
}

void faults::loop(const std::string& name, const std::function<Run()>& prepare) {
    static const Total total;
    const struct {
        Kind kind;
        const char* name;
    } kinds[] = {{Kind::once, "once"}, {Kind::no_memory, "no memory"}, {Kind::short_write, "short write"}};
    run_with_fault(prepare, Kind::once, 0); // what libraries keep for good is made here
    for (const auto& row : kinds) {
        SCOPED_TRACE(name + ", " + row.name);
        for (size_t point = 1; run_with_fault(prepare, row.kind, point) && !testing::Test::HasFailure(); ++point)
            ++injected;
    }
}
