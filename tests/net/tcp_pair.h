// A connection over the loopback, on a port given by the kernel: the tested object at one end, a descriptor that a test
// plays the peer with at the other.
#pragma once

#include "net/mg_socket.h"
#include "runtime/owners.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <sys/socket.h>

inline uint16_t port_of(int sock) {
    sockaddr_in addr{};
    socklen_t size = sizeof addr;
    getsockname(sock, reinterpret_cast<sockaddr*>(&addr), &size);
    return ntohs(addr.sin_port);
}

struct TcpPair {
    MGSocket server; // listens, and has accepted `sock`
    FileDescriptor peer;
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
        EXPECT_EQ(send(peer.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
    }
    void peer_closes() { peer.reset(); }
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
        ssize_t got = expected == 0 ? 0 : recv(peer.get(), bytes.data(), expected, MSG_WAITALL);
        const size_t first = got > 0 ? static_cast<size_t>(got) : 0;
        got = recv(peer.get(), bytes.data() + first, bytes.size() - first, MSG_DONTWAIT);
        bytes.resize(first + (got > 0 ? static_cast<size_t>(got) : 0));
        return bytes;
    }
};

// The code of the MGExit that body throws, 0 if none.
template <class Body>
int exit_code_of(Body&& body) {
    try {
        body();
    } catch (const MGExit& exit) {
        return exit.GetCode();
    }
    return 0;
}
