#include "support/faults.h"

#include "app/mg_err.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <ctime>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <iconv.h>
#include <ifaddrs.h>
#include <locale.h>
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
void ALLOCATOR(free)(void*) noexcept;
[[gnu::weak]] void __lsan_disable();
[[gnu::weak]] void __lsan_enable();
}

namespace {

enum class Sort { call, writing, memory };
enum class Kind { once, no_memory, short_write };

// Of the operation that is at work in this thread.
struct State {
    bool armed = false; // faults are wanted
    Kind kind = Kind::once;
    size_t wanted = 0; // the point that fails
    size_t passed = 0; // points of that kind so far
    const char* failed = nullptr;
    bool full = false; // the write behind a short one fails
};
constinit thread_local State state;
constinit std::atomic<long> live_blocks = 0;

// Whether this point is the one that fails; errno is set then.
bool fails(Sort sort, const char* name, int error) {
    if (!state.armed) return false;
    if (state.kind == Kind::no_memory && sort != Sort::memory) return false;
    if (state.kind == Kind::short_write && sort != Sort::writing) return false;
    ++state.passed;
    const bool lasting = state.kind == Kind::no_memory;
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
    state.full = state.kind == Kind::short_write;
    return state.full ? size / 2 : 0;
}

} // namespace

// What the C library does inside is not ours to test: without memory the loader forgets what it has, and a locale loses
// some of it. The leak check knows the loader's blocks by their caller, and that is our malloc.
#pragma GCC diagnostic ignored "-Wnonnull-compare"

#define FALLIBLE(type, name, parameters, arguments, nothrow, failure)                                                  \
    extern "C" type name parameters nothrow {                                                                          \
        static const auto real = next<type parameters>(#name);                                                         \
        if (fails(Sort::call, #name, EIO)) return failure;                                                             \
        const faults::Pause pause;                                                                                     \
        return real arguments;                                                                                         \
    }

FALLIBLE(int, stat, (const char* path, struct stat* info), (path, info), noexcept, -1)
FALLIBLE(int, lstat, (const char* path, struct stat* info), (path, info), noexcept, -1)
FALLIBLE(int, fstat, (int fd, struct stat* info), (fd, info), noexcept, -1)
FALLIBLE(off_t, lseek, (int fd, off_t offset, int whence), (fd, offset, whence), noexcept, -1)
FALLIBLE(ssize_t, read, (int fd, void* data, size_t size), (fd, data, size), , -1)
FALLIBLE(int, ftruncate, (int fd, off_t size), (fd, size), noexcept, -1)
FALLIBLE(int, fallocate, (int fd, int mode, off_t from, off_t size), (fd, mode, from, size), , -1)
FALLIBLE(int, chmod, (const char* path, mode_t mode), (path, mode), noexcept, -1)
FALLIBLE(int, mkdir, (const char* path, mode_t mode), (path, mode), noexcept, -1)
FALLIBLE(int, rmdir, (const char* path), (path), noexcept, -1)
FALLIBLE(int, unlink, (const char* path), (path), noexcept, -1)
FALLIBLE(int, rename, (const char* from, const char* to), (from, to), noexcept, -1)
FALLIBLE(DIR*, opendir, (const char* path), (path), , nullptr)
FALLIBLE(dirent*, readdir, (DIR * dir), (dir), , nullptr)
FALLIBLE(void*, dlopen, (const char* file, int mode), (file, mode), noexcept, nullptr)
FALLIBLE(locale_t, newlocale, (int mask, const char* name, locale_t base), (mask, name, base), noexcept, nullptr)
FALLIBLE(pid_t, waitpid, (pid_t child, int* status, int options), (child, status, options), , -1)
FALLIBLE(int, usleep, (useconds_t time), (time), , -1)
FALLIBLE(tm*, localtime_r, (const time_t* time, tm* parts), (time, parts), noexcept, nullptr)
FALLIBLE(iconv_t, iconv_open, (const char* to, const char* from), (to, from), , iconv_t(-1))
FALLIBLE(size_t, iconv, (iconv_t cd, char** in, size_t* in_left, char** out, size_t* out_left),
         (cd, in, in_left, out, out_left), , size_t(-1))
FALLIBLE(int, socket, (int family, int type, int protocol), (family, type, protocol), noexcept, -1)
FALLIBLE(int, bind, (int sock, const sockaddr* address, socklen_t size), (sock, address, size), noexcept, -1)
FALLIBLE(int, listen, (int sock, int most), (sock, most), noexcept, -1)
FALLIBLE(int, connect, (int sock, const sockaddr* address, socklen_t size), (sock, address, size), , -1)
FALLIBLE(int, accept4, (int sock, sockaddr* address, socklen_t* size, int flags), (sock, address, size, flags), , -1)
FALLIBLE(int, shutdown, (int sock, int how), (sock, how), noexcept, -1)
FALLIBLE(int, setsockopt, (int sock, int level, int option, const void* value, socklen_t size),
         (sock, level, option, value, size), noexcept, -1)
FALLIBLE(int, getsockopt, (int sock, int level, int option, void* value, socklen_t* size),
         (sock, level, option, value, size), noexcept, -1)
FALLIBLE(ssize_t, recv, (int sock, void* data, size_t size, int flags), (sock, data, size, flags), , -1)
FALLIBLE(int, ppoll, (pollfd * fds, nfds_t count, const timespec* timeout, const sigset_t* mask),
         (fds, count, timeout, mask), , -1)
FALLIBLE(int, getifaddrs, (ifaddrs * *list), (list), noexcept, -1)
FALLIBLE(struct if_nameindex*, if_nameindex, (), (), noexcept, nullptr)
FALLIBLE(int, getaddrinfo, (const char* node, const char* service, const addrinfo* hints, addrinfo** list),
         (node, service, hints, list), , EAI_SYSTEM)

#define VARIADIC(name, parameters, arguments, nothrow)                                                                 \
    extern "C" int name parameters nothrow {                                                                           \
        static const auto real = next<int parameters>(#name);                                                          \
        va_list rest;                                                                                                  \
        va_start(rest, flags);                                                                                         \
        void* last = va_arg(rest, void*);                                                                              \
        va_end(rest);                                                                                                  \
        return fails(Sort::call, #name, EIO) ? -1 : real arguments;                                                    \
    }

VARIADIC(open, (const char* path, int flags, ...), (path, flags, last), )
VARIADIC(fcntl, (int fd, int flags, ...), (fd, flags, last), )
VARIADIC(ioctl, (int fd, unsigned long flags, ...), (fd, flags, last), noexcept)

#define WRITING(name, parameters, arguments)                                                                           \
    extern "C" ssize_t name parameters {                                                                               \
        static const auto real = next<ssize_t parameters>(#name);                                                      \
        const size_t wanted = size;                                                                                    \
        size = writable(#name, size);                                                                                  \
        return size == 0 && wanted > 0 ? -1 : real arguments;                                                          \
    }

WRITING(write, (int fd, const void* data, size_t size), (fd, data, size))
WRITING(send, (int sock, const void* data, size_t size, int flags), (sock, data, size, flags))
WRITING(sendto, (int sock, const void* data, size_t size, int flags, const sockaddr* to, socklen_t to_size),
        (sock, data, size, flags, to, to_size))

// Closes all the same, as the system does.
extern "C" int close(int fd) {
    static const auto real = next<int(int)>("close");
    const int result = real(fd);
    return fails(Sort::call, "close", EIO) ? -1 : result;
}

// A child process goes its way untouched.
extern "C" pid_t fork() noexcept {
    static const auto real = next<pid_t()>("fork");
    if (fails(Sort::call, "fork", EAGAIN)) return -1;
    const pid_t child = real();
    if (child == 0) state.armed = false;
    return child;
}

namespace {

bool memory_fails() {
    return fails(Sort::memory, "malloc", ENOMEM);
}

void* counted(void* block) {
    if (block) ++live_blocks;
    return block;
}

} // namespace

extern "C" void* malloc(size_t size) noexcept {
    return memory_fails() ? nullptr : counted(ALLOCATOR(malloc)(size));
}
extern "C" void* calloc(size_t count, size_t size) noexcept {
    return memory_fails() ? nullptr : counted(ALLOCATOR(calloc)(count, size));
}
extern "C" void* realloc(void* block, size_t size) noexcept {
    if (memory_fails()) return nullptr;
    void* const moved = ALLOCATOR(realloc)(block, size);
    return block ? moved : counted(moved);
}
extern "C" void free(void* block) noexcept {
    if (block) --live_blocks;
    ALLOCATOR(free)(block);
}

void* operator new(size_t size) {
    if (void* block = malloc(size)) return block;
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept {
    free(block);
}
void operator delete(void* block, size_t) noexcept {
    free(block);
}

namespace {

long open_descriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return std::distance(begin(all), end(all));
}

// Whether it did what it is for; not if it threw one of the two values that may leave an operation.
bool passes(const std::function<void()>& operation) {
    try {
        operation();
        state.armed = false;
        return true;
    } catch (const MGErr&) {
    } catch (const MGExit&) {
    } catch (const std::exception& e) {
        state.armed = false;
        ADD_FAILURE() << "neither MGErr nor MGExit: " << e.what();
    }
    return state.armed = false;
}

// One run with the given point failing; false if it has no such point.
bool run_with_fault(const faults::Run& run, Kind kind, size_t point) {
    state = {.armed = true, .kind = kind, .wanted = point};
    const bool done = passes(run.operation);
    SCOPED_TRACE("fails at " + faults::last_point());
    run.check(done);
    if (!done) {
        EXPECT_TRUE(state.failed && passes(run.operation)) << "does not work";
        run.check(true);
    }
    return state.failed;
}

// What libraries make at their first failure and keep for good is there the second time.
bool leaves_nothing(const std::function<void()>& run) {
    for (int time = 0; time < 2; ++time) {
        const long blocks = live_blocks, descriptors = open_descriptors();
        run();
        if (live_blocks == blocks && open_descriptors() == descriptors) return true;
    }
    return false;
}

} // namespace

faults::Pause::Pause() : armed_(std::exchange(state.armed, false)) {
    if (__lsan_disable) __lsan_disable();
}

faults::Pause::~Pause() {
    if (__lsan_enable) __lsan_enable();
    state.armed = armed_;
}

std::string faults::last_point() {
    return (state.failed ? state.failed : "none") + (" " + std::to_string(state.wanted));
}

void faults::loop(const char* name, const std::function<Run()>& prepare) {
    setenv("TZ", "UTC0", 1); // read once and kept: the file of a zone is read again and again
    tzset();
    for (const Kind kind : {Kind::once, Kind::no_memory, Kind::short_write}) {
        SCOPED_TRACE(testing::Message() << name << ", kind " << static_cast<int>(kind));
        bool failed = true;
        for (size_t point = 1; failed && !testing::Test::HasFailure(); ++point)
            EXPECT_TRUE(leaves_nothing([&] { failed = run_with_fault(prepare(), kind, point); }))
                << "blocks or descriptors, after " << last_point();
    }
}
