// Holds the exchange of messages and the log beside bare system calls: bench_runtime DIR. DIR takes the log files,
// which are removed.
#include "compare.h"
#include "net/mg_socket.h"
#include "runtime/mg_info.h"
#include "runtime/owners.h"

#include <cstdio>
#include <fcntl.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

// --- Exchange over the loopback ---

// The four steps of a message with nothing around the calls.
void send_bare(int sock, const void* data, size_t size) {
    for (size_t sent = 0; sent < size;) {
        const ssize_t put = send(sock, static_cast<const char*>(data) + sent, size - sent, 0);
        if (put < 0) give_up("send");
        sent += static_cast<size_t>(put);
    }
}

void recv_bare(int sock, void* data, size_t size) {
    for (size_t read = 0; read < size;) {
        const ssize_t piece = recv(sock, static_cast<char*>(data) + read, size - read, 0);
        if (piece <= 0) give_up("recv");
        read += static_cast<size_t>(piece);
    }
}

void exchange(size_t size, int messages, double aim) {
    MGSocket server, client;
    server.Init();
    server.BindAndListen("127.0.0.1", 0);
    sockaddr_in address{};
    socklen_t length = sizeof address;
    getsockname(server.m_sock, reinterpret_cast<sockaddr*>(&address), &length);
    client.Init();
    client.Connect("127.0.0.1", ntohs(address.sin_port));
    if (!client.SendPoll(client.m_sock) || !server.RecvAccept()) give_up("connect");
    const int from = client.m_sock, to = server.m_recv_sock;
    const std::vector<uint8_t> data = some_bytes(size);
    std::vector<uint8_t> got, bare(size);

    const auto framed_exchange = [&] {
        std::thread sender([&] {
            for (int i = 0; i < messages; ++i) client.SendData(from, data);
        });
        for (int i = 0; i < messages; ++i) server.RecvData(to, got);
        sender.join();
    };
    const auto bare_loop = [&] {
        std::thread sender([&] {
            for (int i = 0; i < messages; ++i) {
                uint64_t code = size;
                send_bare(from, &code, sizeof code);
                recv_bare(from, &code, sizeof code);
                send_bare(from, data.data(), size);
                recv_bare(from, &code, sizeof code);
            }
        });
        for (int i = 0; i < messages; ++i) {
            uint64_t code;
            recv_bare(to, &code, sizeof code);
            send_bare(to, &code, sizeof code);
            recv_bare(to, bare.data(), size);
            send_bare(to, &code, sizeof code);
        }
        sender.join();
    };
    char name[64];
    std::snprintf(name, sizeof name, "%d messages of %zu KiB / send and recv", messages, size >> 10);
    compare(name, aim, framed_exchange, bare_loop);
    if (got != data || bare != data) give_up("another message");
}

// --- Log entries ---

void log_entries(const std::string& dir) {
    constexpr int entries = 10000;
    MGFile log;
    const std::string ours = dir + "/bench.log", theirs = dir + "/bench.plain";
    log.SetLogFile(ours.c_str());
    MGInfo info;
    info.AddRow("Файл", std::string("base.sql.gz"));
    info.AddRow("Длина", 123456789);
    const std::string entry = "\n____INFO____2024-03-31 12:00:00\n" + info.GetString();
    const auto append_ours = [&] {
        for (int i = 0; i < entries; ++i) log.PrintInfoInLogFile(info);
    };
    const auto open_log = [&] { return open(theirs.c_str(), O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0664); };
    const auto append = [&](int fd) {
        if (write(fd, entry.data(), entry.size()) != static_cast<ssize_t>(entry.size())) give_up("write");
    };
    compare("10000 log entries / open, write and close", 1.2, append_ours, [&] {
        for (int i = 0; i < entries; ++i) append(vorma::FileDescriptor(open_log()).get());
    });
    unlink(ours.c_str());
    unlink(theirs.c_str());
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: bench_runtime DIR\n");
        return 2;
    }
    try {
        exchange(64 << 20, 2, 1.05);
        exchange(1 << 10, 1000, 1.1);
        log_entries(argv[1]);
    } catch (const MGErr& err) {
        std::fprintf(stderr, "%s", err.GetString().c_str());
        return 1;
    }
}
