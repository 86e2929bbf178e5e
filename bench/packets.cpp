// Holds the parsing and the rewriting of IP packets beside libtins, and their checksums beside a bare sum.
#include "compare.h"
#include "net/mg_ip.h"

#include <arpa/inet.h>
#include <cstring>
#include <tins/tins.h>

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint32_t new_src = 0xAC100506, new_dst = 0x08080404;
constexpr uint16_t new_sport = 4242, new_dport = 9999;

// As it goes over a wire: TCP with time stamps or UDP, `size` bytes in all.
Bytes packet(bool tcp, size_t size) {
    Tins::IP ip("10.200.3.4", "192.168.17.34");
    ip.ttl(64);
    const Bytes data = some_bytes(size - (tcp ? 52 : 28));
    if (tcp) {
        Tins::TCP header(443, 50123);
        header.add_option(Tins::TCP::option(Tins::TCP::NOP));
        header.add_option(Tins::TCP::option(Tins::TCP::NOP));
        header.timestamp(287454020, 1432778632);
        ip /= header / Tins::RawPDU(data);
    } else {
        ip /= Tins::UDP(53, 5353) / Tins::RawPDU(data);
    }
    return ip.serialize();
}

void rewrite(Tins::IP& ip) {
    ip.src_addr(Tins::IPv4Address(htonl(new_src)));
    ip.dst_addr(Tins::IPv4Address(htonl(new_dst)));
    if (auto* tcp = ip.find_pdu<Tins::TCP>()) {
        tcp->sport(new_sport);
        tcp->dport(new_dport);
    } else if (auto* udp = ip.find_pdu<Tins::UDP>()) {
        udp->sport(new_sport);
        udp->dport(new_dport);
    }
}

// The sum of 32-bit words in 64 bits, and nothing else.
uint64_t bare_sum(const uint8_t* data, size_t size) {
    uint64_t sum = 0;
    for (; size >= 4; data += 4, size -= 4) {
        uint32_t word;
        std::memcpy(&word, data, sizeof word);
        sum += word;
    }
    return sum;
}

} // namespace

int main() {
    constexpr int rounds = 20000;
    const Bytes packets[] = {packet(true, 60), packet(true, 440), packet(false, 440), packet(true, 1500)};
    const auto for_each = [&](auto&& work) {
        return [&packets, work] {
            for (int i = 0; i < rounds; ++i)
                for (const Bytes& bytes : packets) work(bytes);
        };
    };
    MGIp ip; // one for all: it keeps its room
    compare("80000 packets parsed / libtins", 0.5, for_each([&](const Bytes& bytes) {
                ip.Init(bytes.data(), bytes.size());
                ip.Parse(false); // libtins takes any checksum
                keep(ip);
            }),
            for_each([](const Bytes& bytes) {
                const Tins::IP parsed(bytes.data(), static_cast<uint32_t>(bytes.size()));
                keep(parsed);
            }));
    Bytes theirs;
    compare("80000 packets parsed and rewritten / libtins", 0.4, for_each([&](const Bytes& bytes) {
                ip.Init(bytes.data(), bytes.size());
                ip.Parse(false);
                ip.Change(new_src, new_sport, new_dst, new_dport);
                keep(ip);
            }),
            for_each([&](const Bytes& bytes) {
                Tins::IP parsed(bytes.data(), static_cast<uint32_t>(bytes.size()));
                rewrite(parsed);
                theirs = parsed.serialize();
            }));
    if (ip.m_buf != theirs) give_up("another packet");

    ip.Init(packets[2].data(), packets[2].size());
    const auto repeat = [](auto&& work) {
        return [work] {
            for (int i = 0; i < 10 * rounds; ++i) work();
        };
    };
    compare("200000 x both checksums of 440 bytes / a bare sum", 1.5, repeat([&] { ip.Parse(); }),
            repeat([&] { keep(bare_sum(ip.m_packet, ip.m_size)); }));
    const Bytes& large = packets[3];
    compare("200000 x CheckSum of 1480 bytes / a bare sum", 1.0, repeat([&] {
                keep(MGIp::CheckSum(reinterpret_cast<const uint16_t*>(large.data()), 740, nullptr, nullptr));
            }),
            repeat([&] { keep(bare_sum(large.data(), 1480)); }));
}
