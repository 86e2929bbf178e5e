#include "virtual_clock.h"

#include "net/mg_socket.h"
#include "support/error_of.h"
#include "tcp_pair.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/time.h>

namespace {

const bool sigpipe_ignored = std::signal(SIGPIPE, SIG_IGN) != SIG_ERR;

// So long as it lives, the process may hold no more descriptors than `most`.
class DescriptorLimit {
public:
    explicit DescriptorLimit(rlim_t most) {
        getrlimit(RLIMIT_NOFILE, &former_);
        const rlimit limit{most, former_.rlim_max};
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    ~DescriptorLimit() { setrlimit(RLIMIT_NOFILE, &former_); }

private:
    rlimit former_;
};

std::vector<uint8_t> bytes(const char* text) {
    return {text, text + std::char_traits<char>::length(text)};
}

} // namespace

TEST(Socket, ConnectsAcceptsAndCarriesBytes) {
    MGSocket server, client;
    server.Init();
    server.BindAndListen("127.0.0.1", 0);
    server.SetInputTimeout(0);
    EXPECT_FALSE(server.RecvAccept()) << "nobody has come";
    server.SetInputTimeout(10);
    client.Init();
    client.Connect("127.0.0.1", port_of(server.GetSendSock()));
    EXPECT_TRUE(fcntl(client.m_sock, F_GETFL) & O_NONBLOCK);
    ASSERT_TRUE(client.SendPoll(client.GetSendSock()));
    EXPECT_FALSE(fcntl(client.m_sock, F_GETFL) & O_NONBLOCK);
    ASSERT_TRUE(server.RecvAccept());
    EXPECT_TRUE(fcntl(server.m_sock, F_GETFD) & fcntl(server.m_recv_sock, F_GETFD) & FD_CLOEXEC);

    client.ConnSend(client.m_sock, bytes("hello"));
    std::vector<uint8_t> got = bytes("before");
    EXPECT_TRUE(server.RecvPollWait(server.m_recv_sock, nullptr, false, false));
    EXPECT_EQ(server.RecvInVector(server.m_recv_sock, got, 100), 5u);
    EXPECT_EQ(got, bytes("hello"));

    // A second connection takes the place of the first, whose peer is told.
    MGSocket second;
    second.Init();
    second.Connect("127.0.0.1", port_of(server.m_sock));
    ASSERT_TRUE(server.RecvAccept());
    EXPECT_EQ(client.RecvInVector(client.m_sock, got, 1), 0u);
    EXPECT_TRUE(got.empty());

    const int listening = server.m_sock, accepted = server.m_recv_sock;
    server.Clear();
    EXPECT_EQ(fcntl(listening, F_GETFD), -1);
    EXPECT_EQ(fcntl(accepted, F_GETFD), -1);
    EXPECT_FALSE(server.m_is_listen);
}

// Two minutes for a port that is in use, in steps of ten seconds that no signal cuts short.
TEST(Socket, BindWaitsForAPortThatIsInUse) {
    struct Row {
        int free_after; // seconds
        bool bound;
        int slept;
    };
    for (const Row& row : {Row{10, true, 10}, Row{111, true, 120}, Row{120, true, 120}, Row{121, false, 120}}) {
        SCOPED_TRACE(row.free_after);
        MGSocket holder, restarted;
        holder.Init();
        holder.BindExt("127.0.0.1", 0, holder.m_sock);
        const uint16_t port = port_of(holder.m_sock);
        restarted.Init();
        VirtualClock clock;
        unsigned slept = 0;
        clock.sleeper = [&](unsigned seconds) {
            const unsigned now = std::min(seconds, 7u); // a signal every seven seconds
            slept += now;
            if (static_cast<int>(slept) >= row.free_after) holder.Clear();
            return seconds - now;
        };
        if (row.bound) {
            EXPECT_NO_THROW(restarted.BindExt("127.0.0.1", port, restarted.m_sock));
        } else {
            const MGErr err = error_of([&] { restarted.BindExt("127.0.0.1", port, restarted.m_sock); });
            EXPECT_EQ(err.err_code, EADDRINUSE);
            EXPECT_EQ(err.num_param, restarted.m_sock);
            EXPECT_EQ(err.uint32_param, port);
        }
        EXPECT_EQ(static_cast<int>(slept), row.slept);
    }
}

// Each step that can fail, told by the operation, the step and the system's code.
TEST(Socket, TellsWhatFailed) {
    TcpPair pair;
    MGSocket plain;
    plain.SetOutputTimeout(0);
    plain.SetInputTimeout(0);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    FileDescriptor reader(ends[0]);
    const FileDescriptor without_reader(ends[1]), file(open("/dev/null", O_RDONLY)), path(open("/", O_PATH)),
        datagrams(socket(AF_INET, SOCK_DGRAM, 0));
    const int closed = reader.get();
    reader.reset();
    MGErr own;
    bool is_close, from_1, from_2;
    uint8_t byte = 0;
    sockaddr_in addr;
    const auto limited = [](rlim_t most, auto body) {
        const DescriptorLimit limit(most);
        body();
    };

    struct Row {
        const char* func_1;
        const char* func_2;
        int code;
        std::function<void()> body;
    };
    const Row rows[] = {
        {"caller", "(sock < 0)", 0, [&] { plain.IfErrSock(own); }},
        {"caller", "fcntl", EBADF, [&] { MGSocket::GetFcntl(own, -1); }},
        {"caller", "inet_aton", 0, [&] { MGSocket::SetAddress(own, "256.0.0.1", 1, addr); }},
        {"SetNonBlock", "fcntl", EBADF, [&] { MGSocket::SetNonBlock(path.get(), true); }},
        {"Init", "socket", EMFILE, [&] { limited(3, [&] { plain.Init(); }); }},
        {"BindExt", "(sock < 0)", 0, [&] { plain.BindExt("127.0.0.1", 0, -1); }},
        {"BindExt", "bind", EADDRNOTAVAIL, [&] { plain.BindExt("203.0.113.7", 0, datagrams.get()); }},
        {"ListenExt", "listen", EOPNOTSUPP, [&] { plain.ListenExt(datagrams.get(), 1); }},
        {"Connect", "(sock < 0)", 0, [&] { plain.Connect("127.0.0.1", 1); }},
        {"Connect", "connect", EISCONN,
         [&] {
             TcpPair connected;
             MGSocket again;
             again.SetSendSock(dup(connected.sock));
             again.Connect("127.0.0.1", 1);
         }},
        {"RecvPoll", "poll", EINVAL, [&] { limited(0, [&] { plain.RecvPoll(pair.sock, is_close); }); }},
        {"RecvPoll", "(m_fds[0].revents & POLLERR)", 0, [&] { plain.RecvPoll(without_reader.get(), is_close); }},
        {"RecvPoll", "(m_fds[0].revents & POLLNVAL)", 0, [&] { plain.RecvPoll(closed, is_close); }},
        {"RecvPoll2", "poll", EINVAL,
         [&] { limited(1, [&] { plain.RecvPoll2(pair.sock, pair.sock, is_close, from_1, from_2); }); }},
        {"RecvPoll2", "(m_fds[0].revents & POLLERR) || (m_fds[1].revents & POLLERR)", 0,
         [&] { plain.RecvPoll2(pair.sock, without_reader.get(), is_close, from_1, from_2); }},
        {"RecvPoll2", "(m_fds[0].revents & POLLNVAL) || (m_fds[1].revents & POLLNVAL)", 0,
         [&] { plain.RecvPoll2(closed, pair.sock, is_close, from_1, from_2); }},
        {"RecvAccept", "(!m_is_listen)", 0, [&] { plain.RecvAccept(); }},
        {"RecvAccept", "accept", EMFILE,
         [&] {
             MGSocket client;
             client.Init();
             client.Connect("127.0.0.1", port_of(pair.server.m_sock));
             pair.server.m_recv_sock = -1;
             limited(3, [&] { pair.server.RecvAccept(); });
         }},
        {"Recv", "recv", ENOTSOCK, [&] { MGSocket::Recv(file.get(), &byte, 1); }},
        {"SendPoll", "fcntl", EBADF, [&] { plain.SendPoll(-1); }},
        {"SendPoll", "poll", EINVAL, [&] { limited(0, [&] { plain.SendPoll(pair.sock); }); }},
        {"SendPoll", "getsockopt", ENOTSOCK, [&] { plain.SendPoll(file.get()); }},
        {"SendPoll", "!(m_fds[0].revents & POLLOUT)", 0,
         [&] {
             const std::vector<uint8_t> much(1 << 20); // nobody reads
             while (send(pair.sock, much.data(), much.size(), MSG_DONTWAIT) > 0) {
             }
             plain.SendPoll(pair.sock);
         }},
        {"Send", "send", EPIPE,
         [&] {
             shutdown(pair.sock, SHUT_WR);
             MGSocket::Send(pair.sock, &byte, 1);
         }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.func_1) + ": " + row.func_2);
        own = {};
        own.func_1 = "caller";
        const MGErr err = error_of(row.body);
        EXPECT_EQ(err.func_1, row.func_1);
        EXPECT_EQ(err.func_2, row.func_2);
        EXPECT_EQ(err.err_code, row.code);
        EXPECT_EQ(err.err_description, row.code == 0 ? "" : strerror(row.code));
    }
    close(pair.sock);
}

// What ends a wait at its third time-out, 45 seconds after its beginning.
TEST(Socket, WaitsThroughTimeoutsUntilSomethingEndsIt) {
    struct Row {
        const char* name;
        std::function<bool(TcpPair&, MGSignal&)> event; // true if the socket has something to say then
        int code;                                       // of MGExit, 0 if the wait ends with data
    };
    const Row rows[] = {
        {"data", [](TcpPair& pair, MGSignal&) { return pair.peer_sends("x"), true; }, 0},
        {"close", [](TcpPair& pair, MGSignal&) { return pair.peer_closes(), true; }, MGSK_EXIT_CLOSE_CONNECT},
        {"reset", [](TcpPair& pair, MGSignal&) { return pair.peer_resets(), true; }, MGSK_EXIT_CLOSE_CONNECT},
        {"flag", [](TcpPair&, MGSignal& signal) { return signal.SetSignalExit(true), false; }, MGSK_EXIT_SIGNAL},
        {"limit", [](TcpPair& pair, MGSignal&) { return pair.server.SetLimitAuth(40), false; }, MGSK_EXIT_LIMIT_AUTH},
        {"limit of two", [](TcpPair& pair, MGSignal&) { return pair.server.SetLimitInactive(40), false; },
         MGSK_EXIT_LIMIT_INACTIVE},
        {"limit of two", [](TcpPair& pair, MGSignal&) { return pair.server.SetResetTimeout(40), false; },
         MGSK_EXIT_RESET_TIMEOUT},
    };
    for (const Row& row : rows) {
        for (const bool both : {false, true}) {
            SCOPED_TRACE(std::string(row.name) + (both ? " of two" : ""));
            const bool of_two = row.code == MGSK_EXIT_LIMIT_INACTIVE || row.code == MGSK_EXIT_RESET_TIMEOUT;
            const bool of_one = row.code == MGSK_EXIT_LIMIT_AUTH;
            if (both ? of_one : of_two) continue; // each wait has limits of its own
            TcpPair pair, other;
            MGSignal signal;
            VirtualClock clock;
            for (int64_t* limit :
                 {&pair.server.m_limit_auth, &pair.server.m_limit_inactive, &pair.server.m_reset_timeout})
                *limit = 1000;
            clock.at_timeout = [&] { return clock.timeouts == 3 && row.event(pair, signal); };
            bool from_1 = true, from_2 = true;
            EXPECT_EQ(exit_code_of([&] {
                          if (both)
                              pair.server.RecvPollWait2(other.sock, pair.sock, &signal, from_1, from_2, true, true);
                          else
                              EXPECT_TRUE(pair.server.RecvPollWait(pair.sock, &signal, false, true));
                      }),
                      row.code);
            EXPECT_EQ(clock.timeouts, 3);
            if (both && row.code == 0) {
                EXPECT_FALSE(from_1);
                EXPECT_TRUE(from_2);
            }
        }
    }
}

TEST(Socket, OneTimeoutEndsAWaitThatMayEndSo) {
    TcpPair pair;
    VirtualClock clock;
    MGSignal signal;
    pair.server.SetInputTimeout(7);
    EXPECT_FALSE(pair.server.RecvPollWait(pair.sock, &signal, true, true));
    EXPECT_EQ(clock.now, 1'000'000'007);
    // The flag goes before the time-out, and before data.
    clock.at_timeout = [&] { return signal.SetSignalExit(true), false; };
    EXPECT_EQ(exit_code_of([&] { pair.server.RecvPollWait(pair.sock, &signal, true, true); }), MGSK_EXIT_SIGNAL);
    pair.peer_sends("x");
    EXPECT_EQ(exit_code_of([&] { pair.server.RecvPollWait(pair.sock, &signal, true, true); }), MGSK_EXIT_SIGNAL);
    bool from_1, from_2;
    EXPECT_EQ(
        exit_code_of([&] { pair.server.RecvPollWait2(pair.sock, pair.sock, &signal, from_1, from_2, false, false); }),
        MGSK_EXIT_SIGNAL);
}

// What came before the close is still there to be read.
TEST(Socket, ReportsAnOrderlyCloseOnlyOnceAllIsRead) {
    TcpPair pair;
    pair.peer_sends("abc");
    pair.peer_closes();
    std::vector<uint8_t> data;
    bool is_close = true, from_1 = true, from_2 = false;
    EXPECT_TRUE(pair.server.RecvPoll(pair.sock, is_close));
    EXPECT_FALSE(is_close);
    pair.server.RecvInVector(pair.sock, data, 2);
    TcpPair quiet;
    EXPECT_TRUE(pair.server.RecvPoll2(quiet.sock, pair.sock, is_close, from_1, from_2));
    EXPECT_FALSE(is_close || from_1);
    EXPECT_TRUE(from_2);
    pair.server.RecvInVector(pair.sock, data, 2);
    EXPECT_EQ(data, bytes("c"));
    EXPECT_TRUE(pair.server.RecvPoll(pair.sock, is_close));
    EXPECT_TRUE(is_close);
}

TEST(Socket, LimitsCountFromTheirFirstTest) {
    struct Row {
        void (MGSocket::*set)(int64_t);
        void (MGSocket::*test)();
        int code;
    };
    for (const Row& row : {Row{&MGSocket::SetLimitAuth, &MGSocket::TestLimitAuth, MGSK_EXIT_LIMIT_AUTH},
                           Row{&MGSocket::SetLimitInactive, &MGSocket::TestLimitInactive, MGSK_EXIT_LIMIT_INACTIVE},
                           Row{&MGSocket::SetResetTimeout, &MGSocket::TestResetTimeout, MGSK_EXIT_RESET_TIMEOUT}}) {
        SCOPED_TRACE(row.code);
        MGSocket sock;
        VirtualClock clock;
        const auto after = [&](int seconds) {
            clock.now += seconds;
            return exit_code_of([&] { (sock.*row.test)(); });
        };
        EXPECT_EQ(after(0), 0) << "no limit";
        (sock.*row.set)(30);
        EXPECT_EQ(after(1000), 0) << "starts the clock";
        EXPECT_EQ(after(30), 0);
        EXPECT_EQ(after(1), row.code);
        EXPECT_EQ(after(1000), 0) << "starts it again";
        EXPECT_EQ(after(31), row.code);
        after(0);
        (sock.*row.set)(0);
        EXPECT_EQ(after(1000), 0) << "turned off";
    }
    MGSocket sock;
    sock.SetLimitAuth(30);
    VirtualClock clock;
    sock.TestLimitAuth();
    clock.now += 31;
    sock.ClearBeginTimeForAuth();
    EXPECT_NO_THROW(sock.TestLimitAuth());
}

TEST(Socket, ARefusedConnectionShowsBeforeTheFirstSend) {
    TcpPair pair;
    const uint16_t port = port_of(pair.server.m_sock);
    MGSocket::ClearSock(pair.server.m_sock); // nobody listens there now
    for (const bool send : {false, true}) {
        MGSocket client;
        client.Init();
        client.Connect("127.0.0.1", port);
        if (send)
            EXPECT_EQ(exit_code_of([&] { client.ConnSend(client.m_sock, bytes("x")); }), MGSK_EXIT_CLOSE_TIMEOUT);
        else
            EXPECT_FALSE(client.SendPoll(client.m_sock));
        EXPECT_EQ(client.m_connect_error, ECONNREFUSED);
    }
    MGSocket closed;
    EXPECT_NO_THROW(closed.ConnSend(closed.m_sock, {}));
    EXPECT_TRUE(pair.server.SendPoll(pair.sock));
    EXPECT_EQ(pair.server.m_connect_error, 0);
}

// A handler that runs every 10 ms, without SA_RESTART, breaks no wait: it takes the second that was asked for.
TEST(Socket, ASignalDoesNotCutAWaitShort) {
    struct sigaction tick {
    }, former;
    tick.sa_handler = [](int) {};
    sigaction(SIGALRM, &tick, &former);
    const itimerval every{{0, 10'000}, {0, 10'000}}, never{};
    TcpPair pair;
    pair.server.SetInputTimeout(1);
    const auto begin = std::chrono::steady_clock::now();
    setitimer(ITIMER_REAL, &every, nullptr);
    bool is_close = false;
    EXPECT_FALSE(pair.server.RecvPoll(pair.sock, is_close));
    setitimer(ITIMER_REAL, &never, nullptr);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    sigaction(SIGALRM, &former, nullptr);
}
