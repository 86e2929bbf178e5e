// Sockets and their settings, binding, listening and connecting.
#include "app/mg_err.h"
#include "net/mg_socket.h"

#include <arpa/inet.h>
#include <cerrno>
#include <fcntl.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace vorma;

namespace {

constexpr int listen_queue = 64;
constexpr int bind_retries = 12;
constexpr unsigned bind_pause = 10; // seconds

// A signal doesn't cut the pause short.
void pause_before_retry() {
    unsigned left = bind_pause;
    while (left > 0) left = sleep(left);
}

} // namespace

MGSocket::~MGSocket() {
    Clear();
}

void MGSocket::Init() {
    at_edge("MGSocket::Init", [&] {
        MGErr err = error_of("Init", "Ошибка инициализации сетевого подключения");
        ClearSock(m_sock);
        ClearSock(m_recv_sock);
        m_is_listen = false;
        InitSocketExt(err, m_sock, AF_INET, SOCK_STREAM, 0);
        // A side that answers a message and then sends its own writes two codes in a row: held back until the first is
        // acknowledged, the second would cost 40 ms. Accepted sockets inherit this.
        const int no_delay = 1;
        setsockopt(m_sock, IPPROTO_TCP, TCP_NODELAY, &no_delay, sizeof no_delay);
    });
}

void MGSocket::Clear() {
    for (int* sock : {&m_sock, &m_recv_sock, &m_raw_sock, &m_tun_sock}) ClearSock(*sock);
    m_is_listen = false;
}

void MGSocket::ClearRecvSock() {
    ClearSock(m_recv_sock);
}

void MGSocket::ClearSock(int& sock) {
    if (sock < 0) return;
    shutdown(sock, SHUT_RDWR);
    close(sock);
    sock = -1;
}

int MGSocket::SetNonBlock(int sock, bool non_block) {
    return at_edge("MGSocket::SetNonBlock", [&] {
        MGErr err = error_of("SetNonBlock", "Ошибка установки блокирующего сокет параметра");
        return SetNonBlock(err, sock, non_block);
    });
}

int MGSocket::SetNonBlock(MGErr& err, int sock, bool non_block) {
    const int former = GetFcntl(err, sock);
    const int flags = non_block ? former | O_NONBLOCK : former & ~O_NONBLOCK;
    if (flags != former) SetFcntl(err, sock, flags);
    return former;
}

int MGSocket::GetFcntl(MGErr& err, int sock) {
    return at_edge("MGSocket::GetFcntl", [&] {
        IfErrSockExt(err, sock);
        const int flags = fcntl(sock, F_GETFL);
        if (flags < 0) fail_errno(err, "Не удалось получить флаги соединения", "fcntl");
        return flags;
    });
}

void MGSocket::SetFcntl(MGErr& err, int sock, int flags) {
    at_edge("MGSocket::SetFcntl", [&] {
        IfErrSockExt(err, sock);
        if (fcntl(sock, F_SETFL, flags) < 0) fail_errno(err, "Не удалось установить флаги соединения", "fcntl");
    });
}

void MGSocket::SetAddress(MGErr& err, const std::string& ip, uint16_t port, sockaddr_in& addr) {
    at_edge("MGSocket::SetAddress", [&] {
        addr = {};
        addr.sin_family = AF_INET;
        addr.sin_port = htons(port);
        addr.sin_addr.s_addr = htonl(INADDR_ANY);
        if (!ip.empty() && inet_aton(ip.c_str(), &addr.sin_addr) == 0)
            fail(err, "Не удалось преобразовать IP адрес из строки в число", "inet_aton");
    });
}

void MGSocket::IfErrSock(MGErr& err) const {
    IfErrSockExt(err, m_sock);
}

void MGSocket::IfErrSockExt(MGErr& err, int sock) {
    at_edge("MGSocket::IfErrSockExt", [&] {
        if (sock < 0) fail(err, "Не выполнена инициализация соединения", "(sock < 0)");
    });
}

void MGSocket::BindExt(const std::string& ip, uint16_t port, int sock) {
    at_edge("MGSocket::BindExt", [&] {
        MGErr err = error_of("BindExt", "Ошибка подключения IP адреса к созданному сетевому соединению");
        err.opt_param = ip;
        err.uint32_param = port;
        IfErrSockExt(err, sock);
        SetNonBlock(err, sock, true);
        sockaddr_in addr;
        SetAddress(err, ip, port, addr);
        for (int retry = 0; bind(sock, reinterpret_cast<const sockaddr*>(&addr), sizeof addr) < 0; ++retry) {
            if (errno != EADDRINUSE || retry == bind_retries) {
                err.num_param = sock;
                fail_errno(err, "Не удалось привязать IP адрес к соединению", "bind");
            }
            pause_before_retry();
        }
    });
}

void MGSocket::ListenExt(int sock, int queue) {
    at_edge("MGSocket::ListenExt", [&] {
        MGErr err = error_of("ListenExt", "Ошибка установки ожидания");
        IfErrSockExt(err, sock);
        if (listen(sock, queue) < 0) fail_errno(err, "Не удалось установить очередь ожидания соединения", "listen");
        m_is_listen = true;
    });
}

void MGSocket::BindAndListen(const std::string& ip, uint16_t port) {
    BindExt(ip, port, m_sock);
    ListenExt(m_sock, listen_queue);
}

void MGSocket::Connect(const std::string& ip, uint16_t port) {
    at_edge("MGSocket::Connect", [&] {
        MGErr err = error_of("Connect", "Ошибка установки соединения с сервером по IP адресу и порту");
        err.opt_param = ip;
        err.uint32_param = port;
        IfErrSock(err);
        SetNonBlock(err, m_sock, true);
        sockaddr_in addr;
        SetAddress(err, ip, port, addr);
        // An interrupted connect goes on by itself, as one in progress does.
        if (connect(m_sock, reinterpret_cast<const sockaddr*>(&addr), sizeof addr) < 0 && errno != EINPROGRESS &&
            errno != EINTR)
            fail_errno(err, "Не удалось соединиться с сервером по IP адресу", "connect");
    });
}
