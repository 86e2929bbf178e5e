#include "virtual_clock.h"

#include "net/mg_socket.h"
#include "support/error_of.h"
#include "tcp_pair.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <random>
#include <sys/time.h>
#include <sys/wait.h>
#include <thread>

namespace {

const bool sigpipe_ignored = std::signal(SIGPIPE, SIG_IGN) != SIG_ERR;

// A code as it lies on the wire: little-endian on the machines that the service runs on.
std::string code(uint64_t number) {
    return {reinterpret_cast<const char*>(&number), sizeof number};
}

std::string text(const std::vector<uint8_t>& data) {
    return {data.begin(), data.end()};
}

std::vector<uint8_t> random_bytes(std::mt19937& random, size_t size) {
    std::vector<uint8_t> data(size);
    for (uint8_t& byte : data) byte = static_cast<uint8_t>(random());
    return data;
}

uint64_t fnv1a(const std::vector<uint8_t>& data) {
    uint64_t hash = 14695981039346656037u;
    for (uint8_t byte : data) hash = (hash ^ byte) * 1099511628211u;
    return hash;
}

// While it lives, a signal handler interrupts the process's calls every two milliseconds.
class SignalStorm {
public:
    SignalStorm() {
        struct sigaction tick {};
        tick.sa_handler = [](int) {};
        sigaction(SIGALRM, &tick, &former_);
        const itimerval every{{0, 2000}, {0, 2000}};
        setitimer(ITIMER_REAL, &every, nullptr);
    }
    ~SignalStorm() {
        const itimerval never{};
        setitimer(ITIMER_REAL, &never, nullptr);
        sigaction(SIGALRM, &former_, nullptr);
    }

private:
    struct sigaction former_;
};

} // namespace

// The bytes on the wire, with a scripted peer at the other end.
TEST(FramedExchange, SpeaksTheWireFormat) {
    TcpPair pair;
    const std::vector<uint8_t> body{'b', 'o', 'd', 'y', 0};
    pair.peer_sends(code(0) + code(0));
    EXPECT_TRUE(pair.server.SendData(pair.sock, body));
    EXPECT_EQ(pair.peer_got(13), std::string("\5\0\0\0\0\0\0\0body\0", 13));

    pair.peer_sends(std::string("\4\0\0\0\0\0\0\0back\7\0\0\0\0\0\0\1", 20));
    std::vector<uint8_t> got{1, 2, 3};
    EXPECT_TRUE(pair.server.RecvData(pair.sock, got));
    EXPECT_EQ(text(got), "back");
    EXPECT_EQ(pair.server.RecvCode(pair.sock), 0x0100000000000007u);
    EXPECT_EQ(pair.peer_got(16), std::string(16, '\0'));
}

TEST(FramedExchange, CarriesBodiesOfAnySize) {
    const SignalStorm storm;
    std::mt19937 random(1);
    for (const size_t size : {size_t{0}, size_t{1}, size_t{8}, size_t{17407}, size_t{17408}, size_t{17409},
                              size_t{1} << 20, size_t{64} << 20}) {
        SCOPED_TRACE(size);
        TcpPair pair;
        MGSocket sender;
        sender.SetSendSock(pair.peer.release());
        const std::vector<uint8_t> body = random_bytes(random, size);
        std::thread peer([&] { EXPECT_TRUE(sender.SendData(sender.m_sock, body)); });
        std::vector<uint8_t> got;
        if (size == 0) pair.server.SetInputTimeout(0); // its end shows in a time-out only
        EXPECT_TRUE(pair.server.RecvData(pair.sock, got, size % 2 ? size : 0, 0));
        peer.join();
        EXPECT_TRUE(got == body);
    }
}

// Two processes, 1,000 messages each way: the answer to a message is its hash with a message of its own behind it.
TEST(FramedExchange, TwoProcessesTalkWithoutLoss) {
    TcpPair pair;
    const auto next_body = [](std::mt19937& random) {
        return random_bytes(random, random() % (1u << random() % 18) + 1);
    };
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        int faults = 1;
        try {
            const SignalStorm storm;
            MGSocket peer;
            const int sock = pair.peer.get();
            std::mt19937 random(2);
            std::vector<uint8_t> got;
            for (int i = 0; i < 1000; ++i) {
                peer.RecvData(sock, got);
                const uint64_t hash = fnv1a(got);
                std::vector<uint8_t> answer = next_body(random);
                const auto* bytes = reinterpret_cast<const uint8_t*>(&hash);
                answer.insert(answer.begin(), bytes, bytes + sizeof hash);
                peer.SendData(sock, answer);
            }
            faults = 0;
        } catch (...) {
        }
        _exit(faults);
    }
    std::mt19937 random(3), of_child(2);
    std::vector<uint8_t> answer;
    for (int i = 0; i < 1000; ++i) {
        const std::vector<uint8_t> body = next_body(random);
        ASSERT_TRUE(pair.server.SendData(pair.sock, body));
        ASSERT_TRUE(pair.server.RecvData(pair.sock, answer));
        uint64_t hash = 0;
        ASSERT_GE(answer.size(), sizeof hash);
        std::memcpy(&hash, answer.data(), sizeof hash);
        answer.erase(answer.begin(), answer.begin() + sizeof hash);
        ASSERT_EQ(hash, fnv1a(body)) << "message " << i;
        ASSERT_EQ(fnv1a(answer), fnv1a(next_body(of_child))) << "answer " << i;
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(FramedExchange, ReceiverRefusesABrokenMessage) {
    enum End { stays, closes, resets };
    struct Row {
        std::string sent;
        End end;
        uint64_t only_equal, less_then;
        const char* func_1;
        const char* func_2;
        size_t answers; // codes that the peer gets
    };
    const char* not_eight = "(in_data.size() != sizeof(uint64_t))";
    const Row rows[] = {
        {"", closes, 0, 0, "RecvCode", not_eight, 0},
        {"", resets, 0, 0, "RecvCode", not_eight, 0},
        {code(3).substr(0, 5), closes, 0, 0, "RecvAll", "(last_equal > 0)", 0},
        {code(3), closes, 0, 0, "RecvData", "(data.size() < size)", 1},
        {code(3) + "ab", closes, 0, 0, "RecvAll", "(last_equal > 0)", 1},
        {code(0) + "a", stays, 0, 0, "RecvData", "(data.size() > size)", 1},
        {code(3) + "abc", stays, 4, 0, "RecvData", "( recv_byte != only_equal )", 0},
        {code(3) + "abc", stays, 0, 2, "RecvData", "( recv_byte > less_then )", 0},
        {code(3) + "abc", stays, 3, 3, "RecvData", "(only_equal != 0) && (less_then != 0)", 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.func_1) + ": " + row.func_2);
        TcpPair pair;
        const VirtualClock clock;
        pair.peer_sends(row.sent);
        if (row.end == resets) pair.peer_resets();
        if (row.end == closes) shutdown(pair.peer.get(), SHUT_WR);
        std::vector<uint8_t> data{1};
        const MGErr err = error_of([&] { pair.server.RecvData(pair.sock, data, row.only_equal, row.less_then); });
        EXPECT_EQ(err.func_1, row.func_1);
        EXPECT_EQ(err.func_2, row.func_2);
        EXPECT_EQ(err.err_code, 0);
        if (err.func_1 == "RecvData") {
            EXPECT_EQ(err.num_param, static_cast<int64_t>(row.only_equal));
            EXPECT_EQ(err.uint32_param, row.less_then);
        }
        if (err.func_1 == "RecvCode") {
            EXPECT_EQ(err.num_param, 0);
            EXPECT_EQ(err.uint32_param, 8u);
        }
        EXPECT_TRUE(data.empty());
        if (row.end != resets) {
            EXPECT_EQ(pair.peer_got(8 * row.answers), std::string(8 * row.answers, '\0'));
        }
    }
}

TEST(FramedExchange, SenderRefusesABrokenAnswer) {
    struct Row {
        std::string answers;
        const char* func_1;
        const char* func_2;
        std::string sent;
    };
    const Row rows[] = {
        {"", "RecvCode", "(in_data.size() != sizeof(uint64_t))", code(3)},
        {code(1), "SendData", "RecvCode 1", code(3)},
        {code(0).substr(1), "RecvAll", "(last_equal > 0)", code(3)},
        {code(0), "RecvCode", "(in_data.size() != sizeof(uint64_t))", code(3) + "abc"},
        {code(0) + code(1ull << 63), "SendData", "RecvCode 2", code(3) + "abc"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.func_1) + ": " + row.func_2);
        TcpPair pair;
        pair.peer_sends(row.answers);
        shutdown(pair.peer.get(), SHUT_WR);
        const MGErr err = error_of([&] { pair.server.SendData(pair.sock, {'a', 'b', 'c'}); });
        EXPECT_EQ(err.func_1, row.func_1);
        EXPECT_EQ(err.func_2, row.func_2);
        EXPECT_EQ(err.num_param, err.func_1 == "SendData" ? 3 : 0);
        EXPECT_EQ(pair.peer_got(row.sent.size()), row.sent);
    }
    TcpPair pair;
    pair.peer_resets();
    EXPECT_FALSE(pair.server.SendData(pair.sock, {'a'}));
    EXPECT_EQ(pair.server.m_connect_error, ECONNRESET);
}

TEST(FramedExchange, RecvAllEndsAtItsSizeItsLimitOrATimeout) {
    struct Row {
        size_t sent;
        bool closed;
        uint64_t only_equal, less_then;
        bool result;
        const char* func_2; // of the error, null if none
        size_t got;         // behind the byte that was there before
    };
    const Row rows[] = {
        {100, true, 0, 100, true, nullptr, 100},
        {100, false, 0, 100, false, nullptr, 100},
        {101, true, 0, 100, false, "(read_all > less_then)", 101},
        {40000, true, 0, 0, true, nullptr, 40000},
        {40000, false, 39999, 0, true, nullptr, 39999},
        {99, false, 100, 0, false, nullptr, 99},
        {99, true, 100, 0, false, "(last_equal > 0)", 99},
        {0, true, 100, 0, true, nullptr, 0},
        {10, true, 10, 10, false, "(only_equal != 0) && (less_then != 0)", 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.sent << " of " << row.only_equal << " or up to " << row.less_then);
        TcpPair pair;
        const VirtualClock clock;
        const std::string sent(row.sent, 'x');
        pair.peer_sends(sent);
        if (row.closed) pair.peer_closes();
        std::vector<uint8_t> data{'!'};
        const auto receive = [&] {
            EXPECT_EQ(pair.server.RecvAll(pair.sock, data, row.only_equal, row.less_then), row.result);
        };
        if (row.func_2)
            EXPECT_EQ(error_of(receive).func_2, row.func_2);
        else
            receive();
        EXPECT_EQ(text(data), "!" + sent.substr(0, row.got));
    }
}

// A message that comes in pieces with time-outs between them; the last time-out ends the reading of the body.
TEST(FramedExchange, GathersWhatTimeoutsPullApart) {
    TcpPair pair;
    VirtualClock clock;
    const std::string pieces[] = {code(6).substr(0, 3), code(6).substr(3), "abc", "def"};
    clock.at_timeout = [&] {
        if (clock.timeouts > 4) return false;
        return pair.peer_sends(pieces[clock.timeouts - 1]), true;
    };
    std::vector<uint8_t> data;
    EXPECT_TRUE(pair.server.RecvData(pair.sock, data, 0, 6));
    EXPECT_EQ(text(data), "abcdef");
    EXPECT_EQ(clock.timeouts, 5);
    EXPECT_EQ(pair.peer_got(16), std::string(16, '\0'));
}

TEST(FramedExchange, OnlyTheLimitOnInactivityEndsTheWaitForACode) {
    TcpPair pair;
    VirtualClock clock;
    clock.at_timeout = [&] { return clock.timeouts == 1000 && (pair.peer_sends(code(5)), true); };
    EXPECT_EQ(pair.server.RecvCode(pair.sock), 5u);
    EXPECT_EQ(clock.timeouts, 1000);

    pair.server.SetLimitInactive(60);
    pair.server.m_begin_inactive = 1; // an earlier quiet doesn't count
    const time_t begin = clock.now;
    std::vector<uint8_t> data{1};
    EXPECT_EQ(exit_code_of([&] { pair.server.RecvData(pair.sock, data); }), MGSK_EXIT_LIMIT_INACTIVE);
    EXPECT_EQ(clock.now - begin, 75);
    EXPECT_TRUE(data.empty());
}
