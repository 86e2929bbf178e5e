// Waits of one time-out, the loops around them, and the limits that end a conversation. What is called for every piece
// of a message makes its error only where it throws it.
#include "app/mg_err.h"
#include "net/exchange.h"
#include "net/mg_socket.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <span>
#include <sys/socket.h>

using namespace vorma;

namespace {

// poll() for so many seconds in all, however often a signal interrupts it; so it never fails with EINTR.
int poll_for(std::span<pollfd> fds, uint32_t timeout) {
    using std::chrono::seconds, std::chrono::nanoseconds, std::chrono::steady_clock;
    const auto end = steady_clock::now() + seconds(timeout);
    nanoseconds left = seconds(timeout);
    for (;;) {
        const timespec wait{std::chrono::duration_cast<seconds>(left).count(), (left % seconds(1)).count()};
        const int ready = ppoll(fds.data(), fds.size(), &wait, nullptr);
        if (ready >= 0 || errno != EINTR) return ready;
        left = std::max<nanoseconds>(end - steady_clock::now(), nanoseconds::zero());
    }
}

pollfd to_read(int sock) {
    return {sock, POLLIN | POLLRDHUP, 0};
}

// SO_ERROR, which is thereby forgotten; -1 with errno where there is none, as on a device.
int error_of_socket(int sock) {
    int code = 0;
    socklen_t size = sizeof code;
    return getsockopt(sock, SOL_SOCKET, SO_ERROR, &code, &size) < 0 ? -1 : code;
}

// Whether the connection is gone. A peer's orderly close raises no POLLHUP, and what it sent before must still be
// read: it counts once nothing is left. A reset shows for a moment as an error alone, before the hang-up; another error
// goes to cause.
bool is_closed(const pollfd& fd, int& cause) {
    if (fd.revents & POLLHUP) return true;
    if (fd.revents & POLLERR) {
        cause = std::max(error_of_socket(fd.fd), 0);
        return is_connection_end(cause);
    }
    char next;
    return (fd.revents & POLLRDHUP) && recv(fd.fd, &next, sizeof next, MSG_PEEK | MSG_DONTWAIT) == 0;
}

template <class Error>
[[noreturn]] void fail_with_cause(const Error& error, int cause, const char* func_2) {
    MGErr err = error();
    err.err_code = cause;
    if (cause != 0) err.err_description = system_error_text(cause);
    fail(err, "Ошибка получения данных из сетевого соединения", func_2);
}

void exit_if_signal(MGSignal* signal) {
    if (signal && signal->GetSignalExit()) throw MGExit(MGSK_EXIT_SIGNAL);
}

// A limit of 0 is none.
void test_limit(int64_t limit, time_t& begin, int32_t code) {
    if (limit == 0) return;
    const time_t now = time(nullptr);
    if (begin == 0) {
        begin = now;
    } else if (now - begin > limit) {
        begin = 0;
        throw MGExit(code);
    }
}

} // namespace

void vorma::begin_quiet(MGSocket& socket) {
    if (socket.m_begin_inactive != 0) socket.m_begin_inactive = time(nullptr);
}

bool MGSocket::RecvPoll(int sock, bool& is_close) {
    return at_edge("MGSocket::RecvPoll", [&] {
        const auto error = [] { return error_of("RecvPoll", "Ошибка ожидания данных из сетевого соединения"); };
        is_close = false;
        if_not_open(error, sock);
        pollfd m_fds[] = {to_read(sock)};
        const int ready = poll_for(m_fds, m_input_timeout);
        if (ready < 0) fail_errno(error(), "Ошибка функции ожидания сетевого соединения", "poll");
        if (ready == 0) return false;
        int cause = 0;
        is_close = is_closed(m_fds[0], cause);
        if (is_close) return true;
        if (m_fds[0].revents & POLLERR) fail_with_cause(error, cause, "(m_fds[0].revents & POLLERR)");
        if (m_fds[0].revents & POLLNVAL)
            fail(error(), "Неверный запрос получения данных из сетевого соединения", "(m_fds[0].revents & POLLNVAL)");
        if (!(m_fds[0].revents & POLLIN))
            fail(error(), "Ошибка несоответствия ожидаемого значения получения данных из сетевого соединения",
                 "!(m_fds[0].revents & POLLIN)");
        begin_quiet(*this);
        return true;
    });
}

bool MGSocket::RecvPoll2(int sock_1, int sock_2, bool& is_close, bool& from_1, bool& from_2) {
    return at_edge("MGSocket::RecvPoll2", [&] {
        const auto error = [] { return error_of("RecvPoll2", "Ошибка ожидания данных из двух сетевых соединений"); };
        is_close = from_1 = from_2 = false;
        for (const int sock : {sock_1, sock_2}) if_not_open(error, sock);
        pollfd m_fds[] = {to_read(sock_1), to_read(sock_2)};
        const int ready = poll_for(m_fds, m_input_timeout);
        if (ready < 0) fail_errno(error(), "Ошибка функции ожидания сетевого соединения", "poll");
        if (ready == 0) return false;
        from_1 = m_fds[0].revents & POLLIN;
        from_2 = m_fds[1].revents & POLLIN;
        int cause = 0;
        is_close = is_closed(m_fds[0], cause) || is_closed(m_fds[1], cause);
        if (is_close) return true;
        const short either = m_fds[0].revents | m_fds[1].revents;
        if (either & POLLERR)
            fail_with_cause(error, cause, "(m_fds[0].revents & POLLERR) || (m_fds[1].revents & POLLERR)");
        if (either & POLLNVAL)
            fail(error(), "Неверный запрос получения данных из сетевого соединения",
                 "(m_fds[0].revents & POLLNVAL) || (m_fds[1].revents & POLLNVAL)");
        if (!from_1 && !from_2)
            fail(error(), "Ошибка несоответствия ожидаемого значения получения данных из сетевого соединения",
                 "!(m_fds[0].revents & POLLIN) && !(m_fds[1].revents & POLLIN)");
        begin_quiet(*this);
        return true;
    });
}

bool MGSocket::RecvPollWait(int sock, MGSignal* signal, bool exit_if_timeout, bool is_auth) {
    return at_edge("MGSocket::RecvPollWait", [&] {
        const auto look_around = [&] {
            if (is_auth) TestLimitAuth();
            exit_if_signal(signal);
        };
        bool is_close = false;
        look_around();
        while (!RecvPoll(sock, is_close)) {
            look_around();
            if (exit_if_timeout) return false;
        }
        if (is_close) throw MGExit(MGSK_EXIT_CLOSE_CONNECT);
        return true;
    });
}

void MGSocket::RecvPollWait2(int sock_1, int sock_2, MGSignal* signal, bool& from_1, bool& from_2, bool is_inactive,
                             bool is_reset) {
    at_edge("MGSocket::RecvPollWait2", [&] {
        bool is_close = false;
        do {
            exit_if_signal(signal);
            if (is_inactive) TestLimitInactive();
            if (is_reset) TestResetTimeout();
        } while (!RecvPoll2(sock_1, sock_2, is_close, from_1, from_2));
        if (is_close) throw MGExit(MGSK_EXIT_CLOSE_CONNECT);
    });
}

bool MGSocket::SendPoll(int sock) {
    return at_edge("MGSocket::SendPoll", [&] {
        const auto error = [] {
            return error_of("SendPoll", "Ошибка ожидания подключения к серверу для отправки данных на сервер");
        };
        if_not_open(error, sock);
        if (const int flags = fcntl(sock, F_GETFL); flags < 0 || flags & O_NONBLOCK) {
            MGErr err = error();
            SetNonBlock(err, sock, false);
        }
        limit_sends(sock, m_output_timeout);
        pollfd m_fds[] = {{sock, POLLOUT, 0}};
        if (poll_for(m_fds, m_output_timeout) < 0)
            fail_errno(error(), "Ошибка функции ожидания сетевого соединения", "poll");
        const int code = error_of_socket(sock);
        if (code < 0) fail_errno(error(), "Ошибка получения результата соединения", "getsockopt");
        m_connect_error = code;
        if (code != 0) return false;
        if (!(m_fds[0].revents & POLLOUT))
            fail(error(), "Ошибка несоответствия ожидаемого значения получения данных из сетевого соединения",
                 "!(m_fds[0].revents & POLLOUT)");
        return true;
    });
}

bool MGSocket::RecvAccept() {
    return at_edge("MGSocket::RecvAccept", [&] {
        MGErr err = error_of("RecvAccept", "Ошибка получения сокета чтения данных");
        if (!m_is_listen) fail(err, "Не выполнено подключение к сетевому соединению", "(!m_is_listen)");
        bool is_close = false;
        if (!RecvPoll(m_sock, is_close) || is_close) return false;
        ClearSock(m_recv_sock);
        do m_recv_sock = accept4(m_sock, nullptr, nullptr, SOCK_CLOEXEC);
        while (m_recv_sock < 0 && errno == EINTR);
        if (m_recv_sock < 0) fail_errno(err, "Ошибка функции приема данных из сетевого соединения", "accept");
        limit_sends(m_recv_sock, m_output_timeout);
        return true;
    });
}

void MGSocket::TestLimitAuth() {
    test_limit(m_limit_auth, m_begin_auth, MGSK_EXIT_LIMIT_AUTH);
}

void MGSocket::TestLimitInactive() {
    test_limit(m_limit_inactive, m_begin_inactive, MGSK_EXIT_LIMIT_INACTIVE);
}

void MGSocket::TestResetTimeout() {
    test_limit(m_reset_timeout, m_begin_reset, MGSK_EXIT_RESET_TIMEOUT);
}
