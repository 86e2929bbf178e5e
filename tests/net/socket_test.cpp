#include "connections.h"

#include "net/mg_trelm.h"
#include "support/bytes.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <thread>

namespace {

TEST(Socket, AcceptsOneConnectionAfterTheOther) {
    TcpPair pair;
    MGSocket second;
    Bytes got;
    second.Init();
    second.Connect("127.0.0.1", port_of(pair.server.m_sock));
    second.ConnSend(second.m_sock, {'h', 'i'});
    EXPECT_TRUE(fcntl(pair.server.m_sock, F_GETFL) & ~fcntl(second.m_sock, F_GETFL) & O_NONBLOCK) << "only who listens";
    ASSERT_TRUE(pair.server.RecvAccept());
    const int listening = pair.server.m_sock, accepted = pair.server.m_recv_sock;
    EXPECT_EQ(pair.server.RecvInVector(accepted, got, 100), 2u);
    EXPECT_EQ(MGSocket::Recv(pair.peer.get(), got.data(), 1), 0u) << "the first connection's peer is told";
    EXPECT_TRUE(fcntl(listening, F_GETFD) & fcntl(accepted, F_GETFD) & FD_CLOEXEC);
    pair.server.SetInputTimeout(0);
    EXPECT_FALSE(pair.server.RecvAccept()) << "nobody has come";
    pair.server.Clear();
    EXPECT_EQ(fcntl(listening, F_GETFD) + fcntl(accepted, F_GETFD), -2);
}

// Two minutes for a port that is in use, in steps of ten seconds that no signal cuts short.
TEST(Socket, BindWaitsForAPortThatIsInUse) {
    for (const auto& [free_after, slept_in_all] : {std::pair{10u, 10u}, {111u, 120u}, {121u, 120u}}) {
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
        EXPECT_EQ(slept, slept_in_all) << free_after;
    }
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
    } rows[] = {{false, data, "true"},   {false, close, "exit 1"}, {false, reset, "exit 1"},  {false, flag, "exit 2"},
                {false, auth, "exit 5"}, {true, data, "true"},     {true, close, "exit 1"},   {true, reset, "exit 1"},
                {true, flag, "exit 2"},  {true, life, "exit 7"},   {true, inactive, "exit 6"}};
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

TEST(Socket, CountsInactivityFromWhatCameLast) {
    for (const bool as_code : {true, false}) {
        TcpPair pair, quiet;
        VirtualClock clock;
        bool from_1, from_2;
        MGSocket& server = pair.server;
        const auto wait = [&] { server.RecvPollWait2(pair.sock, quiet.sock, nullptr, from_1, from_2, true, false); };
        server.SetLimitInactive(40);
        clock.at_timeout = [&] { return clock.timeouts == 2 && (pair.peer_sends(code(7)), true); };
        as_code ? static_cast<void>(server.RecvCode(pair.sock)) : wait();
        if (!as_code) recv(pair.sock, nullptr, 8, MSG_TRUNC);
        EXPECT_EQ(outcome(wait), "exit 6");
        EXPECT_EQ(clock.timeouts, 2 + 3);
        pair.peer_sends("x"), server.RecvPoll(pair.sock, from_1);
        EXPECT_EQ(server.m_begin_inactive, 0) << "only a test starts the clock";
    }
}

TEST(Socket, AResetIsACloseBeforeItsHangUpShowsToo) {
    TcpPair pair;
    VirtualClock clock;
    clock.hidden = POLLHUP | POLLRDHUP | POLLIN;
    pair.peer_resets();
    EXPECT_EQ(outcome([&] { return pair.server.RecvPollWait(pair.sock, nullptr, false, false); }), "exit 1");
}

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

// Two processes, 1,000 messages each way, bodies of any size; one of them has a time-out at every turn.
TEST(FramedExchange, TwoProcessesTalkWithoutLoss) {
    TcpPair pair;
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const std::string ending = outcome([&] {
            struct sigaction tick {}; // interrupts its calls every two milliseconds
            tick.sa_handler = [](int) {};
            sigaction(SIGALRM, &tick, nullptr);
            ualarm(2000, 2000);
            MGSocket peer;
            peer.SetInputTimeout(0);
            Bytes got;
            for (int i = 0; i < 1000; ++i) {
                peer.RecvData(pair.peer.get(), got);
                std::reverse(got.begin(), got.end());
                peer.SendData(pair.peer.get(), got);
            }
        });
        _exit(ending == "true" ? 0 : 1);
    }
    std::mt19937 random(3);
    std::vector<size_t> sizes{0, 1, 8, 17407, 17408, 17409, 8 << 20};
    while (sizes.size() < 1000) sizes.push_back(random() % (1u << random() % 18) + 1);
    Bytes answer;
    for (const size_t size : sizes) {
        const Bytes body = random_bytes(random, size);
        pair.server.SetInputTimeout(size == 0 ? 0 : 10); // the end of an empty body shows in a time-out only
        ASSERT_TRUE(pair.server.SendData(pair.sock, body) && pair.server.RecvData(pair.sock, answer, size, 0));
        ASSERT_TRUE(std::equal(body.begin(), body.end(), answer.rbegin(), answer.rend())) << size;
    }
    int status = -1;
    EXPECT_TRUE(waitpid(child, &status, 0) == child && status == 0);
}

// What the peer said is there from the beginning. The last rows are of the forms for TLS, with TLS off.
TEST(FramedExchange, RefusesABrokenMessage) {
    const char* const not_eight = "RecvCode: (in_data.size() != sizeof(uint64_t))";
    void (TcpPair::*const closes)() = &TcpPair::peer_closes;
    void (TcpPair::*const resets)() = &TcpPair::peer_resets;
    const struct {
        bool sends; // "abc"
        std::string said;
        void (TcpPair::*end)(); // null: the peer stays
        uint64_t only_equal, less_then;
        std::string ending, heard;
        bool tls = false;
    } rows[] = {{false, "", closes, 0, 0, not_eight, ""},
                {false, "", resets, 0, 0, not_eight, ""},
                {false, code(3).substr(0, 5), closes, 0, 0, "RecvAll: (last_equal > 0)", ""},
                {false, code(3) + "ab", closes, 0, 0, "RecvAll: (last_equal > 0)", code(0)},
                {false, code(0) + "a", nullptr, 0, 0, "RecvData: (data.size() > size)", code(0)},
                {false, code(3) + "abc", nullptr, 4, 0, "RecvData: ( recv_byte != only_equal )", ""},
                {false, code(3) + "abc", nullptr, 0, 2, "RecvData: ( recv_byte > less_then )", ""},
                {true, "", resets, 0, 0, "false", ""},
                {true, code(1), closes, 0, 0, "SendData: RecvCode 1", code(3)},
                {true, code(0) + code(1ull << 63), closes, 0, 0, "SendData: RecvCode 2", code(3) + "abc"},
                {true, code(0) + code(0), nullptr, 0, 0, "true", code(3) + "abc", true},
                {true, code(0), closes, 0, 0, "false", code(3) + "abc", true},
                {true, code(0) + code(7), nullptr, 0, 0, "TlsSendData: RecvCode 2", code(3) + "abc", true},
                {false, code(4) + "body", nullptr, 0, 4, "true", code(0) + code(0), true},
                {false, code(3), closes, 0, 4, "exit 1", code(0), true},
                {false, code(5), nullptr, 0, 4, "TlsRecvData: ( recv_byte > less_then )", "", true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.ending + (row.sends ? " of the sender" : ""));
        TcpPair pair;
        const VirtualClock clock;
        pair.peer_sends(row.said);
        if (row.end) (pair.*row.end)();
        Bytes data{'a', 'b', 'c'};
        MGTrelm unused;
        pair.server.TurnOffTls(true);
        EXPECT_TRUE(pair.server.TlsClientAuth(nullptr, unused, "", false));
        EXPECT_EQ(outcome([&] {
                      MGSocket& ours = pair.server;
                      if (row.sends)
                          return row.tls ? ours.TlsSendData(unused, nullptr, pair.sock, data)
                                         : ours.SendData(pair.sock, data);
                      return row.tls ? ours.TlsRecvData(unused, nullptr, pair.sock, data, row.only_equal, row.less_then)
                                     : ours.RecvData(pair.sock, data, row.only_equal, row.less_then);
                  }),
                  row.ending);
        EXPECT_EQ(text(data), row.sends ? "abc" : row.ending == "true" ? "body" : "");
        EXPECT_EQ(pair.peer_got(row.heard.size()), row.heard);
    }
}

// A message that comes in pieces with time-outs between them; the last time-out ends the reading of the body.
TEST(FramedExchange, GathersWhatTimeoutsPullApart) {
    TcpPair pair;
    VirtualClock clock;
    const std::string pieces[] = {code(6).substr(0, 3), code(6).substr(3), "ab", "cd", "ef"};
    clock.at_timeout = [&] {
        if (clock.timeouts > 5) return false;
        return pair.peer_sends(pieces[clock.timeouts - 1]), true;
    };
    pair.server.SetLimitInactive(30); // each part of the body begins it anew
    Bytes data;
    EXPECT_TRUE(pair.server.RecvData(pair.sock, data, 0, 6));
    EXPECT_EQ(text(data), "abcdef");
    EXPECT_EQ(clock.timeouts, 6);
    EXPECT_EQ(pair.peer_got(16), std::string(16, '\0'));
}

// What a peer does in another thread; each gives the next.
struct Peer {
    TcpPair& pair;

    const Peer& says(const std::string& said) const {
        send(pair.peer.get(), said.data(), said.size(), 0);
        return *this;
    }
    const Peer& hears(size_t size) const {
        std::string heard(size, 0);
        recv(pair.peer.get(), heard.data(), size, MSG_WAITALL);
        return *this;
    }
    const Peer& accepts() const { return hears(8).says(code(0)); }
    void floods() const {
        const std::string much(1 << 16, 'x');
        while (send(pair.peer.get(), much.data(), much.size(), 0) > 0) {
        }
    }
};

// TLS is off, so that the forms of both exchanges meet the same peers.
TEST(Peers, DoNoHarmByMisbehaving) {
    static const Bytes large(64 << 20, 'x');
    static MGTrelm unused;
    const struct {
        void (*peer)(const Peer&);
        bool (*ours)(MGSocket&, int sock, Bytes& data);
        const char* ending;
    } rows[] = {
        {[](const Peer& peer) { peer.accepts().hears(1).pair.peer_resets(); },
         [](MGSocket& socket, int sock, Bytes&) { return socket.SendData(sock, large); }, "SendData: SendAll"},
        {[](const Peer& peer) { peer.accepts().hears(1).pair.peer_resets(); },
         [](MGSocket& socket, int sock, Bytes&) { return socket.TlsSendData(unused, nullptr, sock, large); }, "false"},
        {[](const Peer& peer) { peer.accepts(); }, // and reads no more
         [](MGSocket& socket, int sock, Bytes&) {
             socket.SetOutputTimeout(0);
             return socket.TlsSendData(unused, nullptr, sock, large);
         },
         "Send: send, EAGAIN"},
        {[](const Peer& peer) { peer.accepts().hears(3).says(code(0) + code(2) + "ab").hears(16); },
         [](MGSocket& socket, int sock, Bytes& data) {
             return socket.TlsSendData(unused, nullptr, sock, {1, 2, 3}) &&
                    socket.TlsRecvData(unused, nullptr, sock, data, 0, 16);
         },
         "true"},
        {[](const Peer& peer) { peer.says(code(0)).floods(); },
         [](MGSocket& socket, int sock, Bytes& data) { return socket.TlsRecvData(unused, nullptr, sock, data, 0, 16); },
         "TlsRecvData: (data.size() > size)"},
        {[](const Peer& peer) { peer.says(code(16)).floods(); },
         [](MGSocket& socket, int sock, Bytes& data) { return socket.RecvAll(sock, data, 0, 16); },
         "RecvAll: (read_all > less_then)"},
    };
    for (const auto& row : rows) {
        TcpPair pair;
        Bytes data;
        std::thread peer(row.peer, Peer{pair});
        pair.server.TurnOffTls(true);
        EXPECT_EQ(outcome([&] { return row.ours(pair.server, pair.sock, data); }), row.ending);
        EXPECT_LE(data.capacity(), 17408u) << row.ending;
        pair.server.Clear();
        peer.join();
    }
}

TEST(Socket, TellsAtOnceWhatCannotBeWaitedFor) {
    MGSocket plain;
    bool is_close;
    int ends[2];
    ASSERT_FALSE(pipe(ends) || close(ends[0]));
    const vorma::FileDescriptor broken(ends[1]);
    EXPECT_EQ(outcome([&] { plain.RecvPoll(broken.get(), is_close); }), "RecvPoll: (m_fds[0].revents & POLLERR)");
    uint8_t packet[20] = {0x45};
    const std::function<void()> without_socket[] = {
        [&] { plain.RecvPoll(-1, is_close); }, [] { MGSocket::SetNonBlock(-1, true); },
        [] { MGSocket::SetIpHdrIncl(-1); }, [&] { MGSocket::ReadTun(-1, packet, sizeof packet); },
        [&] { MGSocket::SendIp(-1, packet, sizeof packet); }};
    EXPECT_EQ(MGSocket::SprintfBuf(nullptr, 5), "\n") << "a null has no bytes";
    for (const auto& call : without_socket) EXPECT_TRUE(outcome(call).ends_with("(sock < 0)"));
}

TEST(FramedExchange, OnlyTheLimitOnInactivityEndsAWait) {
    for (const std::string& sent : {std::string(), code(3), code(3) + "ab"})
        for (const int64_t limit : {60, 0}) {
            SCOPED_TRACE(testing::Message() << sent.size() << " bytes, limit " << limit);
            TcpPair pair;
            VirtualClock clock;
            clock.at_timeout = [&] { return clock.timeouts == 1000 && (pair.peer_resets(), true); };
            pair.peer_sends(sent);
            pair.server.SetLimitInactive(limit);
            pair.server.m_begin_inactive = 1; // an earlier quiet doesn't count
            Bytes data{1};
            const std::string ending = outcome([&] { pair.server.RecvData(pair.sock, data); });
            EXPECT_EQ(ending == "exit 6", limit != 0) << ending;
            EXPECT_EQ(clock.timeouts, limit == 0 ? 1000 : 5);
            EXPECT_TRUE(data.empty());
        }
}

} // namespace
