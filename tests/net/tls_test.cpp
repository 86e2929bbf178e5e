#include "connections.h"

#include "net/mg_trelm.h"
#include "support/bytes.h"
#include "support/error_of.h"
#include "support/patterns.h"
#include "support/provider/stand_in.h"
#include "support/temp_dir.h"

#include <gmock/gmock.h>

#include <dlfcn.h>
#include <numeric>
#include <optional>
#include <thread>

namespace {

using testing::HasSubstr;
using namespace std::string_literals;

struct Trelm : MGTrelm {
    Trelm() {
        const std::string none;
        InitLib();
        InitConnect(0, none, none, none, none);
        Initialize();
    }
};

Bytes bytes_of(size_t size) {
    Bytes data(size);
    std::iota(data.begin(), data.end(), static_cast<uint8_t>(size));
    return data;
}

struct End {
    MGSocket& socket;
    int sock;
    MGTrelm& trelm;

    bool sends(size_t size) const { return socket.TlsSendData(trelm, nullptr, sock, bytes_of(size)); }
    bool receives(size_t size) const {
        if (size == 0) return true; // nothing is sent for it
        Bytes data;
        EXPECT_TRUE(socket.TlsRecvData(trelm, nullptr, sock, data, size % 2 ? size : 0, size % 2 ? 0 : size));
        EXPECT_TRUE(data == bytes_of(size));
        return true;
    }
};

// A client and a server in threads of their own, and between them a wire that moves `piece` bytes at a time and, once
// `limit` bytes have passed, carries no more: both sides then see the other close.
struct Conversation {
    const ProviderTest provider;
    const TempDir logs;
    Trelm client_trelm, server_trelm;
    size_t piece = 17408;
    size_t limit = SIZE_MAX;
    bool options = true;
    bool plain = false;         // TLS is off
    std::string client, server; // how they ended

    using Talk = std::function<bool(const End&)>;

    void run(const Talk& client_talk, const Talk& server_talk) {
        TcpPair client_end, server_end;
        MGSocket client_socket;
        client_socket.SetSendSock(client_end.peer.release());
        client_socket.SetDebugLogFile(logs.path("client").c_str());
        client_socket.SetDebugLog(true, true);
        client_socket.TurnOffTls(plain), server_end.server.TurnOffTls(plain);
        std::thread client_thread([&] {
            client = outcome([&] {
                if (!client_socket.TlsClientAuth(nullptr, client_trelm, "vorma.test", options)) return false;
                const bool done = client_talk({client_socket, client_socket.m_sock, client_trelm});
                client_trelm.TlsDestroy();
                return done;
            });
            client_socket.Clear();
        });
        std::thread server_thread([&] {
            MGSocket& socket = server_end.server;
            server = outcome([&] {
                socket.TlsServerAuth(nullptr, server_trelm, options);
                const bool done = server_talk({socket, socket.m_recv_sock, server_trelm});
                server_trelm.TlsDestroy();
                return done;
            });
            socket.ClearRecvSock();
        });
        carry(client_end.server.m_recv_sock, server_end.peer.get());
        client_thread.join();
        server_thread.join();
        EXPECT_FALSE(client_trelm.session || server_trelm.session);
    }

private:
    void carry(int a, int b) {
        std::vector<char> buffer(piece);
        pollfd ends[] = {{a, POLLIN, 0}, {b, POLLIN, 0}};
        while (limit > 0 && (ends[0].fd >= 0 || ends[1].fd >= 0)) {
            poll(ends, 2, -1);
            for (pollfd& end : ends) {
                if (!end.revents) continue;
                const int other = &end == ends ? b : a;
                const ssize_t got = recv(end.fd, buffer.data(), buffer.size(), 0);
                const size_t passes = got > 0 ? std::min(limit, static_cast<size_t>(got)) : 0;
                send(other, buffer.data(), passes, 0);
                limit -= passes;
                if (got > 0) continue;
                shutdown(other, SHUT_WR);
                end.fd = -1;
            }
        }
        for (const int end : {a, b}) shutdown(end, SHUT_WR);
    }
};

// A message and its echo for each size, one right behind the other, in pieces of any size. With their options the
// client shows a certificate.
TEST(TlsTransport, CarriesMessagesOfAnySize) {
    const auto take_turns = [](const End& end, bool begins) {
        bool done = true;
        for (const size_t size : {1, 8, 0, 16383, 16384, 16385, 17408, 17409, 40000, 300000})
            for (const bool sending : {begins, !begins})
                done = done && (sending ? end.sends(size) : end.receives(size));
        return done;
    };
    for (const size_t piece : {5, 1000, 4000, 17408, 100000})
        for (const bool client_begins : {true, false}) {
            SCOPED_TRACE(testing::Message() << piece << (client_begins ? " from client" : " from server"));
            Conversation talk;
            talk.piece = piece;
            talk.options = client_begins;
            talk.plain = piece == 4000; // one size goes without TLS
            Bytes cert{1};
            talk.run([&](const End& end) { return take_turns(end, client_begins); },
                     [&](const End& end) {
                         if (!talk.plain) end.socket.TlsServerAuthCert(end.trelm, cert);
                         return take_turns(end, !client_begins);
                     });
            EXPECT_EQ(talk.client + " " + talk.server, "true true");
            EXPECT_EQ(text(cert).find("vorma.test") != std::string::npos, talk.options && !talk.plain);
        }
}

TEST(TlsTransport, AnOrderlyEndFollowsAPeersCloseAnywhere) {
    for (const bool client_sends : {true, false})
        for (size_t limit = 1;; limit += 61) {
            SCOPED_TRACE(testing::Message() << limit << (client_sends ? " bytes, from client" : " bytes, from server"));
            Conversation talk;
            talk.limit = limit;
            bool shaken = false; // the sender's hands
            const auto send = [&](const End& end) { return shaken = true, end.sends(700); };
            const auto receive = [](const End& end) { return end.receives(700); };
            client_sends ? talk.run(send, receive) : talk.run(receive, send);
            const std::string& sender = client_sends ? talk.client : talk.server;
            const std::string& receiver = client_sends ? talk.server : talk.client;
            if (sender == "true") {
                EXPECT_EQ(receiver, "true");
                break;
            }
            EXPECT_EQ(sender, shaken ? "false" : "exit 1");
            EXPECT_TRUE(receiver == "exit 1" || (receiver == "true" && sender == "false")) << receiver;
        }
}

// The peer asks for a new handshake while the client waits for a message. The log of both tells every step.
TEST(TlsTransport, AWaitSitsThroughANewHandshake) {
    Conversation talk;
    talk.run(
        [](const End& end) {
            Bytes data{'!'};
            end.socket.TlsConnSend(end.sock, end.trelm, data);
            end.socket.TlsConnRecv(end.sock, nullptr, end.trelm, 5, data, true);
            return text(data) == "!news" && end.trelm.TlsComplete();
        },
        [](const End& end) {
            const auto& [socket, sock, trelm] = end;
            Bytes in, out;
            socket.TlsConnRecv(sock, nullptr, trelm, 1, in, false);
            provider_stand_in.renegotiate = true;
            trelm.TlsWrite({}, out);
            socket.ConnSend(sock, out);
            for (bool begun = false; !begun || !trelm.TlsComplete();) {
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
    EXPECT_EQ(talk.client + " " + talk.server, "true true");
    EXPECT_THAT(regex_replaced(talk.logs.read("client"), "\n____DEBUG____.*\n|_data\\.size\\(\\)", ""),
                testing::MatchesRegex(read_file(GOLDEN "/tls_log.txt")));
}

TEST(TlsTransport, OnlyLimitsAndTheFlagEndTheWaitForASilentPeer) {
    enum Where { in_handshake, in_message, without_tls };
    const struct {
        Where where;
        int64_t auth, inactive;
        int flag_after; // time-outs
        const char* ending;
        time_t seconds;
    } rows[] = {{in_handshake, 30, 0, 0, "exit 5", 45}, {in_handshake, 0, 20, 7, "exit 2", 105},
                {in_message, 0, 20, 0, "exit 6", 30},   {in_message, 1, 0, 7, "exit 2", 105},
                {without_tls, 0, 20, 0, "exit 6", 30},  {without_tls, 30, 20, 1, "exit 2", 15}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.where << ": " << row.ending << " after " << row.seconds);
        const ProviderTest provider;
        TcpPair pair;
        VirtualClock clock;
        MGSignal signal;
        Trelm trelm;
        clock.at_timeout = [&] { return signal.SetSignalExit(clock.timeouts == row.flag_after), false; };
        MGSocket& server = pair.server;
        server.SetLimitAuth(row.auth);
        server.SetLimitInactive(row.inactive);
        server.m_begin_auth = server.m_begin_inactive = 1; // earlier quiet doesn't count
        server.TurnOffTls(row.where == without_tls);
        if (row.where == in_message) trelm.TlsCreate("", false, false);
        Bytes data{1};
        const time_t begin = clock.now;
        EXPECT_EQ(outcome([&] {
                      if (row.where == in_handshake) server.TlsServerAuth(&signal, trelm, false);
                      server.TlsRecvData(trelm, &signal, pair.sock, data, 0, 0);
                  }),
                  row.ending);
        EXPECT_EQ(clock.now - begin, row.seconds);
        EXPECT_FALSE(trelm.session);
        EXPECT_EQ(data.empty(), row.where != in_handshake);
    }
}

TEST(TlsTransport, AClientWithoutAServerIsToldSo) {
    const ProviderTest provider;
    Trelm trelm;
    MGSocket client, gone;
    gone.Init();
    gone.BindExt("127.0.0.1", 0, gone.m_sock);
    client.Init();
    client.Connect("127.0.0.1", port_of(gone.m_sock)); // nobody listens there
    EXPECT_FALSE(client.TlsClientAuth(nullptr, trelm, "vorma.test", false));
    EXPECT_FALSE(trelm.session);
    EXPECT_EQ(client.m_connect_error, ECONNREFUSED);
}

TEST(MGTrelm, StaysUnloadedWithoutTheLibraryOrAFunctionOfIt) {
    const ProviderTest provider;
    const std::string whole = vorma::provider_library;
    for (const auto& [library, missing] : {std::pair("/absent.so", "/absent.so"), {"libz.so.1", "TRELM_InitMinimal"}}) {
        MGTrelm trelm;
        trelm.InitLib(); // so that there is something to unload
        vorma::provider_library = library;
        EXPECT_EQ(error_of([&] { trelm.InitLib(); }).str_param, missing);
        EXPECT_FALSE(trelm.functions.InitMinimal);
        EXPECT_FALSE(dlopen(whole.c_str(), RTLD_LAZY | RTLD_NOLOAD));
        vorma::provider_library = whole;
    }
}

// A whole life with every kind of call of the provider, 18 in number; each of its calls fails once.
TEST(MGTrelm, EveryFailureOfTheProviderIsToldAndLeavesNothing) {
    const TempDir dir;
    dir.write("file", "a file of several pieces");
    Bytes hash;
    std::optional<Trelm> client;
    const auto live = [&] {
        client.emplace();
        Trelm server;
        shake_hands(*client, server);
        Bytes out;
        server.TlsQuery(1, out);
        EXPECT_NE(text(out).find("vorma.test"), std::string::npos);
        client->TlsWrite(bytes("secret"), out);
        EXPECT_EQ(text(out).find("secret"), std::string::npos);
        EXPECT_TRUE(server.TlsRead(out, out, false));
        EXPECT_EQ(text(out), "secret");
        client->TlsDestroy();
        client->SignFileDetached(dir.path("file"), dir.path("signature"), 20);
        hash = {1};
        client->VerifyFileDetached(dir.path("file"), dir.path("signature"), 20, hash);
    };
    std::set<std::string> failed;
    for (int call = 1;; ++call) {
        SCOPED_TRACE(call);
        const ProviderTest provider;
        provider_stand_in.fail_call = call;
        const std::string told = error_text(live), function = provider_stand_in.failed;
        EXPECT_TRUE(!client || client->m_file_handle == -1);
        client.reset();
        if (function.empty()) break;
        if (told.empty()) { // a destructor met the failure
            EXPECT_EQ(function, "TRELM_TlsSessionDestroy");
            continue;
        }
        failed.insert(function);
        const char* const place = function == "TRELM_InitMinimal" ? "" : "Файл:[ядро.c], Строка:[4711]\nКлюч\n№ 7\n";
        for (const std::string& part : {"\n" + function + "\n", " [0xE0700ABC]\n"s, "Сбой E0700ABC\n"s, place + ""s})
            EXPECT_THAT(told, HasSubstr(part));
        EXPECT_TRUE(hash.empty() || told.find("VerifyFileDetached") == std::string::npos);
    }
    EXPECT_EQ(failed.size(), 18u);
}

TEST(MGTrelm, SharedContextsLiveAsLongAsTheirLastHolder) {
    const ProviderTest provider;
    Bytes out;
    {
        Trelm copy; // what it had goes back
        MGTrelm copy_of_copy;
        {
            Trelm owner;
            owner.CopyTrelm(copy);
            owner.CopyTrelm(owner);
            copy.CopyTrelm(copy_of_copy);
            EXPECT_EQ(provider_stand_in.live.size(), 2u);
            EXPECT_FALSE(MGTrelm().shared || !copy_of_copy.shared);
            shake_hands(copy, copy_of_copy);
        }
        copy.TlsWrite(bytes("still there"), out);
        EXPECT_TRUE(copy_of_copy.TlsRead(out, out, false));
        EXPECT_EQ(text(out), "still there");
        for (int again = 0; again < 2; ++again) copy.Initialize(); // on its own feet again; its session ends
        EXPECT_EQ(provider_stand_in.live.size(), 2u + 2u);
        copy_of_copy.TlsCreate("", false, false);
        copy_of_copy.UnInitLib(); // before its destructor
    }
    EXPECT_FALSE(dlopen(vorma::provider_library.c_str(), RTLD_LAZY | RTLD_NOLOAD));
}

TEST(MGTrelm, SignsAndVerifiesFiles) {
    const ProviderTest provider;
    const TempDir dir;
    Trelm trelm;
    const std::string file = dir.path("file"), signature = dir.path("signature");
    Bytes hash, published;
    MGFile::String2Binary("248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1", published); // SHA-256
    dir.write("file", "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq");
    for (const uint32_t buffer_size : {1u, 7u, 56u, 4096u}) {
        trelm.SignFileDetached(file, signature, buffer_size);
        trelm.VerifyFileDetached(file, signature, buffer_size, hash);
        EXPECT_EQ(hash, published) << "in pieces of " << buffer_size;
    }

    dir.write("file", "another content");
    EXPECT_EQ(error_of([&] { trelm.VerifyFileDetached(file, signature, 4, hash); }).uint32_param, stand_in_bad_digest);
    EXPECT_TRUE(hash.empty());
    // Failures of the file system and of the caller, with the provider at work.
    const std::string absent = dir.path("absent/file");
    EXPECT_EQ(error_of([&] { trelm.SignFileDetached(file, absent, 4); }).func_1, "WriteFile");
    EXPECT_EQ(error_of([&] { trelm.SignFileDetached(file, signature, 0); }).err_description, "buffer_size");
    EXPECT_EQ(provider_stand_in.live.size(), 2u);
}

TEST(MGTrelm, ConvertsTexts) {
    std::string name = "\xCF\xF0\xEE\xF4\xE8\xEB\xFC No\xB9 1", out = "x";
    EXPECT_EQ(Utf8toAnsi1251("Профиль No№ 1"), name);
    EXPECT_EQ(Utf8toAnsi1251("a漢b"), "a");                      // as far as it can be converted
    EXPECT_EQ(MGTrelm::MemBlkToString({3, name.data()}), "Про"); // no zero byte behind it
    MGTrelm::conv_trelm_ansy1251_to_lower_utf8(name.c_str(), out);
    EXPECT_EQ(out, "профиль no№ 1");
}

TEST(MGTrelm, RefusesWhatLacksItsLibraryItsContextOrItsSession) {
    const ProviderTest provider;
    MGTrelm unloaded, loaded;
    Trelm initialised;
    loaded.InitLib();
    Bytes out;
    EXPECT_EQ(condition_of([&] { unloaded.Initialize(); }), "(!library)");
    EXPECT_EQ(condition_of([&] { unloaded.TlsHandshake({}, out); }), "(!library)");
    EXPECT_EQ(condition_of([&] { loaded.TlsCreate("", false, false); }), "(!context)");
    EXPECT_EQ(condition_of([&] { loaded.SignFileDetached("/dev/null", "/dev/null", 1); }), "(!context)");
    EXPECT_EQ(condition_of([&] { initialised.TlsHandshake({}, out); }), "(!session)");
    EXPECT_EQ(condition_of([&] { initialised.TlsRead({}, out, true); }), "(!session)");
}

} // namespace
