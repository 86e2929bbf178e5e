// Reading from and writing to a connection.
#include "app/mg_err.h"
#include "net/exchange.h"
#include "net/mg_socket.h"

#include <cerrno>
#include <chrono>
#include <sys/socket.h>

using namespace vorma;

namespace {

MGErr recv_error() {
    return error_of("Recv", "Ошибка получения данных из сетевого соединения");
}

// Whether a send that signals keep interrupting has used up the time that limit_sends gave it.
bool is_late(int sock, std::chrono::steady_clock::time_point begin) {
    timeval limit{};
    socklen_t size = sizeof limit;
    getsockopt(sock, SOL_SOCKET, SO_SNDTIMEO, &limit, &size);
    const auto at_most = std::chrono::seconds(limit.tv_sec) + std::chrono::microseconds(limit.tv_usec);
    return at_most.count() != 0 && std::chrono::steady_clock::now() - begin >= at_most;
}

} // namespace

void vorma::limit_sends(int sock, uint32_t seconds) {
    const timeval limit{static_cast<time_t>(seconds), seconds == 0 ? 1 : 0}; // 0 would be no limit
    setsockopt(sock, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

void vorma::fail_recv() {
    fail_errno(recv_error(), "Ошибка чтения данных из сокета", "recv");
}

size_t MGSocket::Recv(int sock, void* buf, size_t size) {
    return at_edge("MGSocket::Recv", [&] {
        if_not_open(recv_error, sock);
        ssize_t got;
        do got = recv(sock, buf, size, 0);
        while (got < 0 && errno == EINTR);
        if (got < 0) fail_recv();
        return static_cast<size_t>(got);
    });
}

size_t MGSocket::Send(int sock, const void* buf, size_t size) {
    return at_edge("MGSocket::Send", [&] {
        const auto error = [] { return error_of("Send", "Ошибка отправки данных в сетевое соединение"); };
        if_not_open(error, sock);
        const auto begin = std::chrono::steady_clock::now();
        ssize_t put;
        while ((put = send(sock, buf, size, 0)) < 0 && errno == EINTR) {
            if (!is_late(sock, begin)) continue;
            errno = EAGAIN; // as the limit says it
            break;
        }
        if (put < 0) fail_errno(error(), "Ошибка функции записи данных", "send");
        return static_cast<size_t>(put);
    });
}

bool MGSocket::SendAll(int sock, const std::vector<uint8_t>& data) {
    for (size_t sent = 0; sent < data.size();) {
        size_t put = 0;
        if (!while_connected([&] { put = Send(sock, data.data() + sent, data.size() - sent); }) || put == 0)
            return false;
        sent += put;
    }
    return true;
}

void MGSocket::ConnSend(int sock, const std::vector<uint8_t>& data) {
    if (data.empty()) return;
    if (!SendPoll(sock)) throw MGExit(MGSK_EXIT_CLOSE_TIMEOUT);
    if (!SendAll(sock, data)) throw MGExit(MGSK_EXIT_CLOSE_CONNECT);
}

size_t MGSocket::RecvInVector(int sock, std::vector<uint8_t>& data, size_t size) {
    return at_edge("MGSocket::RecvInVector", [&] {
        try {
            data.resize(size);
            data.resize(Recv(sock, data.data(), size));
        } catch (...) {
            data.clear();
            throw;
        }
        return data.size();
    });
}
