// Reading from and writing to a connection.
#include "app/mg_err.h"
#include "net/mg_socket.h"

#include <cerrno>
#include <sys/socket.h>

size_t MGSocket::Recv(int sock, void* buf, size_t size) {
    return at_edge("MGSocket::Recv", [&] {
        MGErr err = error_of("Recv", "Ошибка получения данных из сетевого соединения");
        ssize_t got;
        do got = recv(sock, buf, size, 0);
        while (got < 0 && errno == EINTR);
        if (got < 0) fail_errno(err, "Ошибка чтения данных из сокета", "recv");
        return static_cast<size_t>(got);
    });
}

size_t MGSocket::Send(int sock, const void* buf, size_t size) {
    return at_edge("MGSocket::Send", [&] {
        MGErr err = error_of("Send", "Ошибка отправки данных в сетевое соединение");
        ssize_t put;
        do put = send(sock, buf, size, 0);
        while (put < 0 && errno == EINTR);
        if (put < 0) fail_errno(err, "Ошибка функции записи данных", "send");
        return static_cast<size_t>(put);
    });
}

bool MGSocket::SendAll(int sock, const std::vector<uint8_t>& data) {
    for (size_t sent = 0; sent < data.size();) {
        const size_t put = Send(sock, data.data() + sent, data.size() - sent);
        if (put == 0) return false;
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
