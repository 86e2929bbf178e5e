// Time for tests of waits, so that limits of minutes pass at once and nothing depends on how fast the machine is.
// While a VirtualClock lives, the waits of its thread (ppoll, sleep) and its time() run on it: a wait that nothing ends
// takes its whole time-out of virtual time and none of the test's. Include it first, in one source of a program.
#pragma once

#undef _FORTIFY_SOURCE // its inline twin of ppoll would collide with ours

#include <ctime>
#include <functional>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

class VirtualClock {
public:
    VirtualClock() { present = this; }
    ~VirtualClock() { present = nullptr; }
    VirtualClock(const VirtualClock&) = delete;
    VirtualClock& operator=(const VirtualClock&) = delete;

    time_t now = 1'000'000'000;
    int timeouts = 0; // the waits that ended so
    // Runs at the end of each such wait; true promises that it made something ready for the next one.
    std::function<bool()> at_timeout = [] { return false; };
    // Takes the place of sleep.
    std::function<unsigned(unsigned)> sleeper = [](unsigned) { return 0u; };

    static inline thread_local VirtualClock* present = nullptr;

    int wait(pollfd* fds, nfds_t count, const timespec& timeout);

private:
    bool promised_ = false;
};

inline int kernel_wait(pollfd* fds, nfds_t count, timespec timeout) {
    return static_cast<int>(syscall(SYS_ppoll, fds, count, &timeout, nullptr, 0));
}

inline int VirtualClock::wait(pollfd* fds, nfds_t count, const timespec& timeout) {
    const int ready = kernel_wait(fds, count, {promised_ ? 10 : 0, 0});
    promised_ = false;
    if (ready != 0) return ready;
    now += timeout.tv_sec;
    ++timeouts;
    promised_ = at_timeout();
    return 0;
}

extern "C" {
int ppoll(pollfd* fds, nfds_t count, const timespec* timeout, const sigset_t*) {
    return VirtualClock::present ? VirtualClock::present->wait(fds, count, *timeout)
                                 : kernel_wait(fds, count, *timeout);
}

// What an optimised build may call instead.
int __ppoll_chk(pollfd* fds, nfds_t count, const timespec* timeout, const sigset_t* mask, size_t) {
    return ppoll(fds, count, timeout, mask);
}

unsigned sleep(unsigned seconds) {
    return VirtualClock::present ? VirtualClock::present->sleeper(seconds) : 0;
}

time_t time(time_t* out) {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    const time_t seconds = VirtualClock::present ? VirtualClock::present->now : now.tv_sec;
    if (out) *out = seconds;
    return seconds;
}
}
