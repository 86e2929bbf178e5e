#include "virtual_clock.h"

#include "net/mg_socket.h"
#include "net/mg_trelm.h"
#include "support/error_of.h"
#include "support/provider/stand_in.h"
#include "support/temp_dir.h"
#include "tcp_pair.h"

#include <csignal>
#include <numeric>
#include <thread>

namespace {

const bool sigpipe_ignored = std::signal(SIGPIPE, SIG_IGN) != SIG_ERR;

// A code as it lies on the wire: little-endian on the machines that the service runs on.
std::string code(uint64_t number) {
    return {reinterpret_cast<const char*>(&number), sizeof number};
}

std::vector<uint8_t> bytes_of(size_t size) {
    std::vector<uint8_t> data(size);
    std::iota(data.begin(), data.end(), static_cast<uint8_t>(size));
    return data;
}

class Trelm : public MGTrelm {
public:
    Trelm() {
        static const std::string none;
        InitLib();
        InitConnect(0, none, none, none, none);
        Initialize();
    }
};

// How an operation ended: "done", "failed" where it gives false, "exit 1", or the func_2 of its MGErr.
template <class Body>
std::string outcome(Body&& body) {
    try {
        return body() ? "done" : "failed";
    } catch (const MGExit& exit) {
        return "exit " + std::to_string(exit.GetCode());
    } catch (const MGErr& err) {
        return err.func_2;
    }
}

// A client and a server in threads of their own, and between them a wire that moves `piece` bytes at a time and, once
// `limit` bytes have passed, carries no more: both sides then see the other close.
struct Conversation {
    Trelm client_trelm, server_trelm;
    size_t piece = 17408;
    size_t limit = SIZE_MAX;
    bool options = true;
    std::string client = "-", server = "-";

    using Talk = std::function<bool(MGSocket&, int sock, MGTrelm&)>;

    void run(const Talk& client_talk, const Talk& server_talk) {
        TcpPair client_end, server_end;
        MGSocket client_socket;
        client_socket.SetSendSock(client_end.peer.release());
        std::thread client_thread([&] {
            MGTrelm& trelm = client_trelm;
            client = outcome([&] {
                const bool done = client_socket.TlsClientAuth(nullptr, trelm, "vorma.test", options) &&
                                  client_talk(client_socket, client_socket.m_sock, trelm);
                trelm.TlsDestroy();
                return done;
            });
            client_socket.Clear();
        });
        std::thread server_thread([&] {
            MGTrelm& trelm = server_trelm;
            MGSocket& socket = server_end.server;
            server = outcome([&] {
                socket.TlsServerAuth(nullptr, trelm, options);
                const bool done = server_talk(socket, socket.m_recv_sock, trelm);
                trelm.TlsDestroy();
                return done;
            });
            socket.ClearRecvSock();
        });
        carry(client_end.server.m_recv_sock, server_end.peer.get());
        client_thread.join();
        server_thread.join();
    }

private:
    void carry(int a, int b) {
        std::vector<char> buffer(piece);
        pollfd ends[] = {{a, POLLIN, 0}, {b, POLLIN, 0}};
        for (int open = 2; open > 0;) {
            poll(ends, 2, -1);
            for (int i = 0; i < 2; ++i) {
                if (!ends[i].revents) continue;
                const int other = i == 0 ? b : a;
                const ssize_t got = recv(ends[i].fd, buffer.data(), buffer.size(), 0);
                const size_t passes = got > 0 ? std::min(limit, static_cast<size_t>(got)) : 0;
                send(other, buffer.data(), passes, 0);
                limit -= passes;
                if (got <= 0) {
                    shutdown(other, SHUT_WR);
                    ends[i].fd = -1;
                    --open;
                } else if (limit == 0) {
                    shutdown(a, SHUT_WR);
                    shutdown(b, SHUT_WR);
                }
            }
        }
    }
};

Conversation::Talk sends(std::vector<size_t> sizes) {
    return [=](MGSocket& socket, int sock, MGTrelm& trelm) {
        for (const size_t size : sizes)
            if (!socket.TlsSendData(trelm, nullptr, sock, bytes_of(size))) return false;
        return true;
    };
}

Conversation::Talk receives(std::vector<size_t> sizes) {
    return [=](MGSocket& socket, int sock, MGTrelm& trelm) {
        std::vector<uint8_t> data;
        for (const size_t size : sizes) {
            if (size == 0) continue; // nothing is sent for it
            EXPECT_TRUE(socket.TlsRecvData(trelm, nullptr, sock, data, size % 2 ? size : 0, size % 2 ? 0 : size));
            EXPECT_TRUE(data == bytes_of(size));
        }
        return true;
    };
}

} // namespace

// A message and its echo for each size, one right behind the other.
TEST(TlsTransport, CarriesMessagesOfAnySizeInAnyPieces) {
    const size_t sizes[] = {1, 8, 0, 16383, 16384, 16385, 17408, 17409, 40000, 300000};
    const auto turns = [&](bool begins) -> Conversation::Talk {
        return [&sizes, begins](MGSocket& socket, int sock, MGTrelm& trelm) {
            bool done = true;
            for (const size_t size : sizes)
                for (const bool sending : {begins, !begins})
                    done = done && (sending ? sends({size}) : receives({size}))(socket, sock, trelm);
            return done;
        };
    };
    for (const size_t piece : {size_t{5}, size_t{1000}, size_t{17408}, size_t{100000}})
        for (const bool client_begins : {true, false}) {
            SCOPED_TRACE(testing::Message() << piece << (client_begins ? " from client" : " from server"));
            const ProviderTest provider;
            Conversation talk;
            talk.piece = piece;
            talk.run(turns(client_begins), turns(!client_begins));
            EXPECT_EQ(talk.client, "done");
            EXPECT_EQ(talk.server, "done");
        }
}

TEST(TlsTransport, ShowsThePeersCertificate) {
    for (const bool options : {true, false}) {
        const ProviderTest provider;
        Conversation talk;
        talk.options = options;
        std::vector<uint8_t> cert{1};
        talk.run(sends({5}), [&](MGSocket& socket, int sock, MGTrelm& trelm) {
            socket.TlsServerAuthCert(trelm, cert);
            return receives({5})(socket, sock, trelm);
        });
        EXPECT_EQ(talk.server, "done");
        EXPECT_EQ(std::string(cert.begin(), cert.end()).find("vorma.test") != std::string::npos, options);
        EXPECT_EQ(
            std::set<std::string>(provider_stand_in.sessions_asked.begin(), provider_stand_in.sessions_asked.end()),
            (options ? std::set<std::string>{"(null) 24", "vorma.test 65"}
                     : std::set<std::string>{"(null) 20", "vorma.test 1"}));
    }
}

TEST(TlsTransport, AnOrderlyEndFollowsAPeersCloseAnywhere) {
    for (const bool client_sends : {true, false})
        for (size_t limit = 1;; limit += 61) {
            SCOPED_TRACE(testing::Message() << limit << (client_sends ? " bytes, from client" : " bytes, from server"));
            const ProviderTest provider;
            Conversation talk;
            talk.limit = limit;
            std::atomic<bool> shaken[2] = {};
            const auto after = [&](int side, const Conversation::Talk& next) {
                return [&shaken, side, next](MGSocket& socket, int sock, MGTrelm& trelm) {
                    shaken[side] = true;
                    try {
                        return next(socket, sock, trelm);
                    } catch (...) {
                        EXPECT_FALSE(trelm.session);
                        throw;
                    }
                };
            };
            const Conversation::Talk send = sends({700}), receive = receives({700});
            talk.run(after(0, client_sends ? send : receive), after(1, client_sends ? receive : send));
            const std::string& sender = client_sends ? talk.client : talk.server;
            const std::string& receiver = client_sends ? talk.server : talk.client;
            if (sender == "done") {
                EXPECT_EQ(receiver, "done");
                break;
            }
            EXPECT_EQ(sender, shaken[client_sends ? 0 : 1] ? "failed" : "exit 1");
            EXPECT_TRUE(receiver == "exit 1" || (receiver == "done" && sender == "failed")) << receiver;
        }
}

// Whichever call of the provider fails, that side ends with its error, the other sees it close, and no session stays.
TEST(TlsTransport, AFailureOfTheProviderEndsTheConversation) {
    for (int call = 1;; ++call) {
        SCOPED_TRACE(call);
        const ProviderTest provider;
        Conversation talk;
        provider_stand_in.fail_call = provider_stand_in.calls + call;
        talk.run(sends({20000}), receives({20000}));
        const std::string failed = provider_stand_in.failed;
        if (failed.empty()) {
            EXPECT_EQ(talk.client + " " + talk.server, "done done");
            break;
        }
        EXPECT_NE(talk.client == failed, talk.server == failed) << talk.client << " " << talk.server;
        const std::string& other = talk.client == failed ? talk.server : talk.client;
        EXPECT_TRUE(other == "exit 1" || other == "failed" || other == "done") << other;
    }
}

// The peer asks for a new handshake while the client waits for a message.
TEST(TlsTransport, AWaitSitsThroughANewHandshake) {
    const ProviderTest provider;
    Conversation talk;
    talk.run(
        [](MGSocket& socket, int sock, MGTrelm& trelm) {
            std::vector<uint8_t> data{'!'};
            socket.TlsConnRecv(sock, nullptr, trelm, 5, data, true);
            return std::string(data.begin(), data.end()) == "!news" && trelm.TlsComplete();
        },
        [](MGSocket& socket, int sock, MGTrelm& trelm) {
            std::vector<uint8_t> in, out;
            provider_stand_in.renegotiate = true;
            trelm.TlsWrite({}, out);
            socket.ConnSend(sock, out);
            for (bool begun = false; !begun || !trelm.TlsComplete();) {
                socket.RecvPollWait(sock, nullptr, false, false);
                socket.RecvAuth(sock, trelm, in, false);
                EXPECT_FALSE(trelm.TlsRead(in, out, false));
                trelm.TlsWrite({}, out);
                socket.ConnSend(sock, out);
                begun = begun || !trelm.TlsComplete();
            }
            socket.TlsConnSend(sock, trelm, {'n', 'e'});
            socket.TlsConnSend(sock, trelm, {'w', 's'});
            return true;
        });
    EXPECT_EQ(talk.client, "done");
    EXPECT_EQ(talk.server, "done");
}

// The limits and the flag, against a peer that keeps silent.
TEST(TlsTransport, OnlyLimitsAndTheFlagEndTheWaitForASilentPeer) {
    struct Row {
        int64_t auth, inactive;
        int flag_after; // time-outs
        bool in_handshake;
        int exit;
        time_t seconds;
    };
    const Row rows[] = {
        {30, 0, 0, true, MGSK_EXIT_LIMIT_AUTH, 45},      {0, 20, 7, true, MGSK_EXIT_SIGNAL, 105},
        {0, 20, 0, false, MGSK_EXIT_LIMIT_INACTIVE, 30}, {1, 0, 7, false, MGSK_EXIT_SIGNAL, 105},
        {30, 20, 1, false, MGSK_EXIT_SIGNAL, 15},
    };
    for (const Row& row : rows)
        for (const bool tls : {true, false}) {
            SCOPED_TRACE(testing::Message() << row.exit << " after " << row.seconds << (tls ? " with TLS" : ""));
            if (!tls && row.in_handshake) continue;
            const ProviderTest provider;
            TcpPair pair;
            VirtualClock clock;
            MGSignal signal;
            Trelm trelm;
            clock.at_timeout = [&] {
                if (clock.timeouts == row.flag_after) signal.SetSignalExit(true);
                return false;
            };
            MGSocket& server = pair.server;
            server.SetLimitAuth(row.auth);
            server.SetLimitInactive(row.inactive);
            server.TurnOffTls(!tls);
            server.m_begin_auth = server.m_begin_inactive = 1; // earlier quiet doesn't count
            std::vector<uint8_t> data{1};
            if (tls) trelm.TlsCreate("", false, false);
            const time_t begin = clock.now;
            EXPECT_EQ(exit_code_of([&] {
                          if (row.in_handshake) {
                              trelm.TlsDestroy();
                              server.TlsServerAuth(&signal, trelm, false);
                          } else {
                              server.TlsRecvData(trelm, &signal, pair.sock, data, 0, 0);
                          }
                      }),
                      row.exit);
            EXPECT_EQ(clock.now - begin, row.seconds);
            EXPECT_FALSE(trelm.session);
            EXPECT_EQ(data.empty(), !row.in_handshake);
        }
}

TEST(TlsTransport, AClientNeedsANameAndAServer) {
    const ProviderTest provider;
    Trelm trelm;
    MGSocket client;
    EXPECT_EQ(error_of([&] { client.TlsClientAuth(nullptr, trelm, "", false); }).func_2, "server.empty()");

    uint16_t closed_port;
    {
        MGSocket gone;
        gone.Init();
        gone.BindExt("127.0.0.1", 0, gone.m_sock);
        closed_port = port_of(gone.m_sock);
    }
    client.Init();
    client.Connect("127.0.0.1", closed_port);
    EXPECT_FALSE(client.TlsClientAuth(nullptr, trelm, "vorma.test", false));
    EXPECT_FALSE(trelm.session);

    provider_stand_in.peer_name = "another.test";
    Conversation talk;
    talk.run(sends({1}), receives({1}));
    EXPECT_EQ(talk.client, "TRELM_TlsSessionHandshake");
    EXPECT_EQ(talk.server, "exit 1");
}

TEST(TlsTransport, TheFirstErrorGoesOnAndTheSecondIsLogged) {
    const ProviderTest provider;
    const TempDir dir;
    TcpPair pair;
    Trelm trelm;
    pair.server.SetLogFile(dir.path("log").c_str());
    pair.peer_sends("no handshake");
    pair.peer_closes();
    provider_stand_in.fail_function = "TRELM_TlsSessionDestroy";
    const MGErr err = error_of([&] { pair.server.TlsServerAuth(nullptr, trelm, false); });
    EXPECT_EQ(err.func_2, "TRELM_TlsSessionHandshake");
    EXPECT_EQ(err.uint32_param, stand_in_trouble);
    EXPECT_FALSE(trelm.session);
    EXPECT_NE(dir.read("log").find("TRELM_TlsSessionDestroy"), std::string::npos);
}

// With TLS off: the bytes on the wire, and a peer that doesn't keep to them.
TEST(TlsTransport, SpeaksThePlainWireFormatWithTlsOff) {
    MGTrelm unused;
    TcpPair pair;
    MGSocket& server = pair.server;
    server.TurnOffTls(true);
    EXPECT_TRUE(server.TlsClientAuth(nullptr, unused, "", false));
    server.TlsServerAuth(nullptr, unused, false);
    std::vector<uint8_t> data{1};
    server.TlsServerAuthCert(unused, data);
    EXPECT_TRUE(data.empty());
    EXPECT_TRUE(server.TlsSendData(unused, nullptr, pair.sock, {}));

    const auto against = [&](const std::function<void()>& script, const std::function<bool()>& talk) {
        std::thread peer(script);
        EXPECT_TRUE(talk());
        peer.join();
    };
    against(
        [&] {
            EXPECT_EQ(pair.peer_got(8), code(4));
            pair.peer_sends(code(0));
            EXPECT_EQ(pair.peer_got(4), "body");
            pair.peer_sends(code(0));
        },
        [&] {
            return server.TlsSendData(unused, nullptr, pair.sock, {'b', 'o', 'd', 'y'});
        });
    against(
        [&] {
            pair.peer_sends(code(3));
            EXPECT_EQ(pair.peer_got(8), code(0));
            pair.peer_sends("abc");
            EXPECT_EQ(pair.peer_got(8), code(0));
        },
        [&] { return server.TlsRecvData(unused, nullptr, pair.sock, data, 3, 0); });
    EXPECT_EQ(std::string(data.begin(), data.end()), "abc");
    const std::pair<uint64_t, const char*> lies[] = {{1, "( recv_byte != only_equal )"},
                                                     {0, "( recv_byte > less_then )"}};
    for (const auto& [said, func_2] : lies) {
        against(
            [&] {
                pair.peer_sends(code(said));
                EXPECT_EQ(pair.peer_got(8), code(0));
                pair.peer_sends("more than was said");
            },
            [&] {
                return outcome([&] { return server.TlsRecvData(unused, nullptr, pair.sock, data, 0, 4); }) == func_2;
            });
        EXPECT_TRUE(data.empty());
    }
}

TEST(TlsTransport, RefusesABrokenMessage) {
    struct Row {
        bool sends;
        std::string answers;
        uint64_t only_equal, less_then;
        const char* result;
        int64_t num_param;
    };
    const Row rows[] = {
        {true, code(7), 0, 0, "RecvCode 1", 7},
        {true, code(1) + "x", 0, 0, "(code_data.size() != sizeof(uint64_t))", 9},
        {true, "half", 0, 0, "failed", 0},
        {false, "half", 0, 0, "exit 1", 0},
        {false, code(3) + code(3), 0, 0, "(code_data.size() != sizeof(uint64_t))", 16},
        {false, code(3), 4, 0, "( recv_byte != only_equal )", 4},
        {false, code(3), 0, 2, "( recv_byte > less_then )", 0},
        {false, code(3), 3, 3, "(only_equal != 0) && (less_then != 0)", 3},
        {false, code(3), 0, 0, "exit 1", 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.result);
        MGTrelm unused;
        TcpPair pair;
        pair.server.TurnOffTls(true);
        pair.peer_sends(row.answers);
        shutdown(pair.peer.get(), SHUT_WR);
        std::vector<uint8_t> data{'a', 'b', 'c'};
        MGErr err;
        EXPECT_EQ(outcome([&] {
                      try {
                          return row.sends ? pair.server.TlsSendData(unused, nullptr, pair.sock, data)
                                           : pair.server.TlsRecvData(unused, nullptr, pair.sock, data, row.only_equal,
                                                                     row.less_then);
                      } catch (const MGErr& thrown) {
                          err = thrown;
                          throw;
                      }
                  }),
                  row.result);
        EXPECT_EQ(err.num_param, row.num_param);
        EXPECT_EQ(err.func_1, err.func_2.empty() ? "" : row.sends ? "TlsSendData" : "TlsRecvData");
        EXPECT_EQ(data.empty(), !row.sends);
    }
}

TEST(TlsTransport, TheExtendedDebugLogTellsTheSteps) {
    const ProviderTest provider;
    const TempDir dir;
    Conversation talk;
    talk.run(sends({5}), [&](MGSocket& socket, int sock, MGTrelm& trelm) {
        socket.SetDebugLogFile(dir.path("debug").c_str());
        socket.SetDebugLog(true, true);
        return receives({5})(socket, sock, trelm);
    });
    const std::string log = dir.read("debug");
    for (const char* line : {"\nTlsConnRecv: BEGIN\n", "\nTlsConnRecv.out_data.size(): 5\n",
                             "\nTlsConnSend.in_data.size(): 8\n", "\nTlsConnSend: END\n"})
        EXPECT_NE(log.find(line), std::string::npos) << line;
}
