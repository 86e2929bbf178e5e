// Holds pieces of the runtime beside the best public baseline: bench_runtime DIR prints for each the median of its
// times and of the baseline's, and their ratio. DIR takes the log files, which are removed.
#include "net/mg_socket.h"
#include "runtime/mg_info.h"
#include "runtime/owners.h"

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <fnmatch.h>
#include <functional>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <zlib.h>

namespace {

[[noreturn]] void give_up(const char* what) {
    std::perror(what);
    std::exit(1);
}

// Of the processor, all threads together: what other processes take meanwhile doesn't count.
double seconds(const std::function<void()>& step) {
    const std::clock_t begin = std::clock();
    step();
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

void compare(const char* name, const std::function<void()>& ours, const std::function<void()>& baseline) {
    constexpr int turns = 11;
    std::vector<double> our_times, baseline_times;
    for (int turn = 0; turn < turns; ++turn) {
        our_times.push_back(seconds(ours));
        baseline_times.push_back(seconds(baseline));
    }
    const auto median = [](std::vector<double>& times) {
        std::nth_element(times.begin(), times.begin() + turns / 2, times.end());
        return times[turns / 2];
    };
    const double our_time = median(our_times), baseline_time = median(baseline_times);
    std::printf("%-44s %9.2f ms %9.2f ms   x %.2f\n", name, our_time * 1e3, baseline_time * 1e3,
                our_time / baseline_time);
}

std::vector<uint8_t> some_bytes(size_t size) {
    std::vector<uint8_t> data(size);
    uint32_t state = 1;
    for (uint8_t& byte : data) byte = static_cast<uint8_t>((state = state * 1664525 + 1013904223) >> 24);
    return data;
}

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

void exchange(size_t size, int messages) {
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
    compare(name, framed_exchange, bare_loop);
    if (got != data || bare != data) give_up("another message");
}

// --- Checksums and masks ---

void checksums() {
    const std::vector<uint8_t> data = some_bytes(64 << 20);
    uint32_t ours = 0, zlib = 1;
    compare(
        "CRC-32 of 64 MiB / zlib", [&] { ours = MGFile::MakeCrc32Ext(data); },
        [&] { zlib = static_cast<uint32_t>(crc32_z(0, data.data(), data.size())); });
    if (ours != zlib) give_up("another checksum");
}

void masks(bool case_sensitive) {
    std::vector<std::string> names;
    for (int i = 0; i < 1000; ++i) {
        names.push_back("dump_branch_" + std::to_string(i) + "_2024-03-31.sql.gz");
        names.push_back("Отчёт филиала № " + std::to_string(i) + ".txt");
    }
    const std::string patterns[] = {"*.gz", "dump_*_202?-03-*", "Отчёт*7.txt", "*филиала*", "*_99?_*"};
    size_t ours = 0, theirs = 1;
    const auto count = [&](auto&& matches) {
        size_t found = 0;
        for (const std::string& pattern : patterns)
            for (const std::string& name : names) found += matches(name, pattern);
        return found;
    };
    compare(
        case_sensitive ? "10000 masks / fnmatch" : "10000 masks without case / fnmatch",
        [&] {
            ours = count([&](const std::string& name, const std::string& pattern) {
                return MGFile::CompareMaskUtf8(name, pattern, case_sensitive);
            });
        },
        [&] {
            theirs = count([&](const std::string& name, const std::string& pattern) {
                return fnmatch(pattern.c_str(), name.c_str(), case_sensitive ? 0 : FNM_CASEFOLD) == 0;
            });
        });
    if (ours != theirs) give_up("other matches");
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
    compare("10000 log entries / open, write and close", append_ours, [&] {
        for (int i = 0; i < entries; ++i) append(vorma::FileDescriptor(open_log()).get());
    });
    compare("10000 log entries / write alone", append_ours, [&] {
        const vorma::FileDescriptor fd(open_log());
        for (int i = 0; i < entries; ++i) append(fd.get());
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
    if (!std::setlocale(LC_ALL, "C.UTF-8")) give_up("setlocale");
    std::printf("%-44s %12s %12s\n", "", "ours", "baseline");
    try {
        exchange(64 << 20, 2);
        exchange(1 << 10, 1000);
        checksums();
        masks(true);
        masks(false);
        log_entries(argv[1]);
    } catch (const MGErr& err) {
        std::fprintf(stderr, "%s", err.GetString().c_str());
        return 1;
    }
}
