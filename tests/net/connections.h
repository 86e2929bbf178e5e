// A connection over the loopback, on a port given by the kernel: the tested object at one end, a descriptor that a test
// plays the peer with at the other. And time for tests of waits, so that limits of minutes pass at once and nothing
// depends on how fast the machine is: while a VirtualClock lives, the waits of its thread (ppoll, sleep) and its time()
// run on it; a wait that nothing ends takes its whole time-out of virtual time and none of the test's. Include it
// first, in one source of a program.
#pragma once

#undef _FORTIFY_SOURCE // its inline twin of ppoll would collide with ours

#include "net/mg_socket.h"
#include "runtime/owners.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <ctime>
#include <functional>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <type_traits>
#include <unistd.h>

inline const bool sigpipe_ignored = std::signal(SIGPIPE, SIG_IGN) != SIG_ERR;

inline uint16_t port_of(int sock) {
    sockaddr_in addr{};
    socklen_t size = sizeof addr;
    getsockname(sock, reinterpret_cast<sockaddr*>(&addr), &size);
    return ntohs(addr.sin_port);
}

struct TcpPair {
    MGSocket server; // listens, and has accepted `sock`
    vorma::FileDescriptor peer;
    int sock = -1;

    TcpPair() {
        server.Init();
        server.BindAndListen("127.0.0.1", 0);
        MGSocket client;
        client.Init();
        client.Connect("127.0.0.1", port_of(server.m_sock));
        EXPECT_TRUE(client.SendPoll(client.m_sock));
        peer.reset(client.m_sock);
        client.SetSendSock(-1);
        EXPECT_TRUE(server.RecvAccept());
        sock = server.m_recv_sock;
    }

    void peer_sends(std::string_view bytes) {
        EXPECT_EQ(send(peer.get(), bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
    }
    // The end of what it sends; it still reads.
    void peer_closes() { shutdown(peer.get(), SHUT_WR); }
    // What the peer hasn't read is lost, and the other end is told so at once.
    void peer_resets() {
        const linger at_once{1, 0};
        setsockopt(peer.get(), SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
        peer.reset();
    }
    // What was sent to the peer: waits for so many bytes, and takes what else is there.
    std::string peer_got(size_t expected) {
        const timeval at_most{10, 0};
        setsockopt(peer.get(), SOL_SOCKET, SO_RCVTIMEO, &at_most, sizeof at_most);
        std::string bytes(expected + 1024, '\0');
        const ssize_t first = expected == 0 ? 0 : recv(peer.get(), bytes.data(), expected, MSG_WAITALL);
        const size_t got = first > 0 ? static_cast<size_t>(first) : 0;
        const ssize_t more = recv(peer.get(), bytes.data() + got, bytes.size() - got, MSG_DONTWAIT);
        bytes.resize(got + (more > 0 ? static_cast<size_t>(more) : 0));
        return bytes;
    }
};

// A code as it lies on the wire: little-endian on the machines that the service runs on.
inline std::string code(uint64_t number) {
    return {reinterpret_cast<const char*>(&number), sizeof number};
}

// How body ended: "true" or what it gave, "exit 1", or for an MGErr "Send: send, EPIPE".
template <class Body>
std::string outcome(Body&& body) {
    try {
        if constexpr (std::is_void_v<decltype(body())>)
            body();
        else if (!body())
            return "false";
        return "true";
    } catch (const MGExit& exit) {
        return "exit " + std::to_string(exit.GetCode());
    } catch (const MGErr& err) {
        const char* name = err.err_code > 0 ? strerrorname_np(err.err_code) : nullptr;
        return err.func_1 + ": " + err.func_2 + (name ? std::string(", ") + name : "");
    }
}

class VirtualClock {
public:
    VirtualClock() { present = this; }
    ~VirtualClock() { present = nullptr; }

    time_t now = 1'000'000'000;
    int timeouts = 0; // the waits that ended so
    short hidden = 0; // events that waits don't see yet
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
    for (nfds_t i = 0; i < count; ++i) fds[i].revents &= static_cast<short>(~hidden);
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
