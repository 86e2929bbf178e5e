#include "virtual_clock.h"

#include "tcp_pair.h"

#include <cerrno>
#include <random>
#include <sys/wait.h>

namespace {

using Bytes = std::vector<uint8_t>;

std::string text(const Bytes& data) {
    return {data.begin(), data.end()};
}

Bytes inverted(Bytes data) {
    for (uint8_t& byte : data) byte = ~byte;
    return data;
}

} // namespace

// The bytes on the wire, with a scripted peer at the other end.
TEST(FramedExchange, SpeaksTheWireFormat) {
    TcpPair pair;
    pair.peer_sends(std::string(16, '\0'));
    EXPECT_TRUE(pair.server.SendData(pair.sock, {'b', 'o', 'd', 'y', 0}));
    EXPECT_EQ(pair.peer_got(13), std::string("\5\0\0\0\0\0\0\0body\0", 13));

    pair.peer_sends(std::string("\4\0\0\0\0\0\0\0back\7\0\0\0\0\0\0\1", 20));
    Bytes got{1, 2, 3};
    EXPECT_TRUE(pair.server.RecvData(pair.sock, got));
    EXPECT_EQ(text(got), "back");
    EXPECT_EQ(pair.server.RecvCode(pair.sock), 0x0100000000000007u);
    EXPECT_EQ(pair.peer_got(16), std::string(16, '\0'));
}

// Two processes, 1,000 messages each way, bodies of any size; one of them has a time-out at every turn.
TEST(FramedExchange, TwoProcessesTalkWithoutLoss) {
    TcpPair pair;
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const std::string ending = outcome([&] {
            const SignalStorm storm;
            MGSocket peer;
            peer.SetInputTimeout(0);
            Bytes got;
            for (int i = 0; i < 1000; ++i) {
                peer.RecvData(pair.peer.get(), got);
                peer.SendData(pair.peer.get(), inverted(got));
            }
        });
        _exit(ending == "true" ? 0 : 1);
    }
    std::mt19937 random(3);
    std::vector<size_t> sizes{0, 1, 8, 17407, 17408, 17409, 8 << 20};
    while (sizes.size() < 1000) sizes.push_back(random() % (1u << random() % 18) + 1);
    Bytes answer;
    for (const size_t size : sizes) {
        Bytes body(size);
        for (uint8_t& byte : body) byte = static_cast<uint8_t>(random());
        pair.server.SetInputTimeout(size == 0 ? 0 : 10); // the end of an empty body shows in a time-out only
        ASSERT_TRUE(pair.server.SendData(pair.sock, body));
        ASSERT_TRUE(pair.server.RecvData(pair.sock, answer, size, 0));
        ASSERT_TRUE(answer == inverted(body)) << size;
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

// What the peer said is there from the beginning.
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
    } rows[] = {
        {false, "", closes, 0, 0, not_eight, ""},
        {false, "", resets, 0, 0, not_eight, ""},
        {false, code(3).substr(0, 5), closes, 0, 0, "RecvAll: (last_equal > 0)", ""},
        {false, code(3), closes, 0, 0, "RecvData: (data.size() < size)", code(0)},
        {false, code(3) + "ab", closes, 0, 0, "RecvAll: (last_equal > 0)", code(0)},
        {false, code(0) + "a", nullptr, 0, 0, "RecvData: (data.size() > size)", code(0)},
        {false, code(3) + "abc", nullptr, 4, 0, "RecvData: ( recv_byte != only_equal )", ""},
        {false, code(3) + "abc", nullptr, 0, 2, "RecvData: ( recv_byte > less_then )", ""},
        {false, code(3) + "abc", nullptr, 3, 3, "RecvData: (only_equal != 0) && (less_then != 0)", ""},
        {true, "", closes, 0, 0, not_eight, code(3)},
        {true, "", resets, 0, 0, "false", ""},
        {true, code(1), closes, 0, 0, "SendData: RecvCode 1", code(3)},
        {true, code(0).substr(1), closes, 0, 0, "RecvAll: (last_equal > 0)", code(3)},
        {true, code(0) + code(1ull << 63), closes, 0, 0, "SendData: RecvCode 2", code(3) + "abc"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.ending + (row.sends ? " of the sender" : ""));
        TcpPair pair;
        const VirtualClock clock;
        pair.peer_sends(row.said);
        if (row.end) (pair.*row.end)();
        Bytes data{'a', 'b', 'c'};
        EXPECT_EQ(outcome([&] {
                      return row.sends ? pair.server.SendData(pair.sock, data)
                                       : pair.server.RecvData(pair.sock, data, row.only_equal, row.less_then);
                  }),
                  row.ending);
        EXPECT_EQ(data.empty(), !row.sends);
        EXPECT_EQ(pair.peer_got(row.heard.size()), row.heard);
    }
}

TEST(FramedExchange, RecvAllEndsAtItsSizeItsLimitOrATimeout) {
    const struct {
        size_t sent;
        bool closed;
        uint64_t only_equal, less_then;
        const char* ending;
        size_t got; // behind the byte that was there before
    } rows[] = {
        {100, true, 0, 100, "true", 100},
        {100, false, 0, 100, "false", 100},
        {40000, false, 39999, 0, "true", 39999},
        {99, false, 100, 0, "false", 99},
        {101, true, 0, 100, "RecvAll: (read_all > less_then)", 101},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.sent << " of " << row.only_equal << " or up to " << row.less_then);
        TcpPair pair;
        const VirtualClock clock;
        pair.peer_sends(std::string(row.sent, 'x'));
        if (row.closed) pair.peer_closes();
        Bytes data{'!'};
        EXPECT_EQ(outcome([&] { return pair.server.RecvAll(pair.sock, data, row.only_equal, row.less_then); }),
                  row.ending);
        EXPECT_EQ(text(data), "!" + std::string(row.got, 'x'));
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
            EXPECT_EQ(clock.timeouts, limit == 0 ? 1000 : sent.size() == 10 ? 6 : 5);
            EXPECT_TRUE(data.empty());
        }
}
