#include "virtual_clock.h"

#include "support/error_of.h"
#include "tcp_pair.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>

namespace {

using Bytes = std::vector<uint8_t>;

} // namespace

TEST(Socket, ConnectsAcceptsAndCarriesBytes) {
    MGSocket server, first, second;
    server.Init();
    server.BindAndListen("127.0.0.1", 0);
    server.SetInputTimeout(0);
    EXPECT_FALSE(server.RecvAccept()) << "nobody has come";
    server.SetInputTimeout(10);
    Bytes got{1, 2, 3};
    for (MGSocket* client : {&first, &second}) {
        client->Init();
        client->Connect("127.0.0.1", port_of(server.m_sock));
        EXPECT_TRUE(fcntl(client->m_sock, F_GETFL) & O_NONBLOCK);
        client->ConnSend(client->m_sock, {'h', 'i'});
        EXPECT_FALSE(fcntl(client->m_sock, F_GETFL) & O_NONBLOCK);
        ASSERT_TRUE(server.RecvAccept());
        EXPECT_EQ(server.RecvInVector(server.m_recv_sock, got, 100), 2u);
        EXPECT_EQ(got, (Bytes{'h', 'i'}));
    }
    // The second connection has taken the place of the first, whose peer is told.
    EXPECT_EQ(first.RecvInVector(first.m_sock, got, 1), 0u);
    EXPECT_TRUE(got.empty());

    const int listening = server.m_sock, accepted = server.m_recv_sock;
    EXPECT_TRUE(fcntl(listening, F_GETFD) & fcntl(accepted, F_GETFD) & FD_CLOEXEC);
    server.Clear();
    EXPECT_EQ(fcntl(listening, F_GETFD), -1);
    EXPECT_EQ(fcntl(accepted, F_GETFD), -1);
    EXPECT_FALSE(server.m_is_listen);
}

// Two minutes for a port that is in use, in steps of ten seconds that no signal cuts short.
TEST(Socket, BindWaitsForAPortThatIsInUse) {
    for (const auto& [free_after, slept_in_all] : {std::pair{10u, 10u}, {111u, 120u}, {121u, 120u}}) {
        SCOPED_TRACE(free_after);
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
            if (slept >= free_after) holder.Clear();
            return seconds - now;
        };
        EXPECT_EQ(outcome([&] { restarted.BindExt("127.0.0.1", port, restarted.m_sock); }),
                  free_after <= 120 ? "true" : "BindExt: bind, EADDRINUSE");
        EXPECT_EQ(slept, slept_in_all);
    }
}

TEST(Socket, TellsWhatFailed) {
    TcpPair pair;
    MGSocket plain;
    plain.SetOutputTimeout(0);
    const FileDescriptor datagrams(socket(AF_INET, SOCK_DGRAM, 0)), file(open("/dev/null", O_RDWR));
    const int closed = 999;
    bool is_close, from_1, from_2;
    uint8_t byte = 0;
    const std::pair<const char*, std::function<void()>> rows[] = {
        {"BindExt: inet_aton", [&] { plain.BindExt("256.0.0.1", 0, datagrams.get()); }},
        {"ListenExt: listen, EOPNOTSUPP", [&] { plain.ListenExt(datagrams.get(), 1); }},
        {"Connect: (sock < 0)", [&] { plain.Connect("127.0.0.1", 1); }},
        {"RecvPoll: (m_fds[0].revents & POLLNVAL)", [&] { plain.RecvPoll(closed, is_close); }},
        {"RecvPoll2: (m_fds[0].revents & POLLNVAL) || (m_fds[1].revents & POLLNVAL)",
         [&] { plain.RecvPoll2(closed, pair.sock, is_close, from_1, from_2); }},
        {"RecvAccept: (!m_is_listen)", [&] { plain.RecvAccept(); }},
        {"Recv: recv, ENOTSOCK", [&] { MGSocket::Recv(file.get(), &byte, 1); }},
        {"SendPoll: getsockopt, ENOTSOCK", [&] { plain.SendPoll(file.get()); }},
        {"SendPoll: !(m_fds[0].revents & POLLOUT)",
         [&] {
             const Bytes much(1 << 20); // nobody reads
             while (send(pair.sock, much.data(), much.size(), MSG_DONTWAIT) > 0) {
             }
             plain.SendPoll(pair.sock);
         }},
        {"Send: send, EPIPE", [&] { shutdown(pair.sock, SHUT_WR), MGSocket::Send(pair.sock, &byte, 1); }},
    };
    for (const auto& [ending, body] : rows) EXPECT_EQ(outcome(body), ending);
    const MGErr err = error_of([&] { plain.BindExt("203.0.113.7", 7, datagrams.get()); });
    EXPECT_EQ(err.GetDebugString(), "BindExt\nbind\n203.0.113.7\n" + std::to_string(datagrams.get()) +
                                        "\n7 [0x00000007]\n99\nCannot assign requested address\n");
}

// What ends a wait at its third time-out, 45 seconds after its beginning. Each kind of wait has limits of its own.
TEST(Socket, WaitsThroughTimeoutsUntilSomethingEndsIt) {
    using Event = bool(TcpPair&, MGSignal&); // true if the socket has something to say then
    Event* const data = [](TcpPair& pair, MGSignal&) { return pair.peer_sends("x"), true; };
    Event* const close = [](TcpPair& pair, MGSignal&) { return pair.peer_closes(), true; };
    Event* const reset = [](TcpPair& pair, MGSignal&) { return pair.peer_resets(), true; };
    Event* const flag = [](TcpPair&, MGSignal& signal) { return signal.SetSignalExit(true), false; };
    Event* const auth = [](TcpPair& pair, MGSignal&) { return pair.server.SetLimitAuth(40), false; };
    Event* const inactive = [](TcpPair& pair, MGSignal&) { return pair.server.SetLimitInactive(40), false; };
    Event* const life = [](TcpPair& pair, MGSignal&) { return pair.server.SetResetTimeout(40), false; };
    const struct {
        bool both;
        Event* event;
        const char* ending;
    } rows[] = {
        {false, data, "true"},   {false, close, "exit 1"}, {false, reset, "exit 1"},   {false, flag, "exit 2"},
        {false, auth, "exit 5"}, {true, data, "true"},     {true, close, "exit 1"},    {true, reset, "exit 1"},
        {true, flag, "exit 2"},  {true, life, "exit 7"},   {true, inactive, "exit 6"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.ending) + (row.both ? " of two" : ""));
        TcpPair pair, other;
        MGSocket& server = pair.server;
        MGSignal signal;
        VirtualClock clock;
        server.m_limit_auth = server.m_limit_inactive = server.m_reset_timeout = 1000;
        clock.at_timeout = [&] { return clock.timeouts == 3 && row.event(pair, signal); };
        EXPECT_EQ(outcome([&] {
                      if (!row.both) return server.RecvPollWait(pair.sock, &signal, false, true);
                      bool from_1 = true, from_2 = false;
                      server.RecvPollWait2(other.sock, pair.sock, &signal, from_1, from_2, true, true);
                      return from_2 && !from_1;
                  }),
                  row.ending);
        EXPECT_EQ(clock.timeouts, 3);
    }
}

// What came before the close is still there to be read.
TEST(Socket, ReportsAnOrderlyCloseOnlyOnceAllIsRead) {
    TcpPair pair, quiet;
    pair.peer_sends("abc");
    pair.peer_closes();
    Bytes data;
    bool is_close = true, from_1 = true, from_2 = false;
    EXPECT_TRUE(pair.server.RecvPoll(pair.sock, is_close) && !is_close);
    pair.server.RecvInVector(pair.sock, data, 2);
    EXPECT_TRUE(pair.server.RecvPoll2(quiet.sock, pair.sock, is_close, from_1, from_2));
    EXPECT_TRUE(from_2 && !from_1 && !is_close);
    pair.server.RecvInVector(pair.sock, data, 2);
    EXPECT_EQ(data, Bytes{'c'});
    EXPECT_TRUE(pair.server.RecvPoll(pair.sock, is_close) && is_close);
}

TEST(Socket, LimitsCountFromTheirFirstTest) {
    MGSocket sock;
    VirtualClock clock;
    const auto after = [&](int seconds) {
        clock.now += seconds;
        return outcome([&] { sock.TestLimitAuth(); });
    };
    EXPECT_EQ(after(0), "true") << "no limit";
    sock.SetLimitAuth(30);
    EXPECT_EQ(after(1000), "true") << "starts the clock";
    EXPECT_EQ(after(30), "true");
    EXPECT_EQ(after(1), "exit 5");
    EXPECT_EQ(after(1000), "true") << "starts it again";
    sock.ClearBeginTimeForAuth();
    EXPECT_EQ(after(31), "true") << "and again";
}

TEST(Socket, SignalsDoNotCutAWaitShort) {
    TcpPair pair;
    pair.server.SetInputTimeout(1);
    const SignalStorm storm;
    const auto begin = std::chrono::steady_clock::now();
    bool is_close;
    EXPECT_FALSE(pair.server.RecvPoll(pair.sock, is_close));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
}
