// The TUN device, and whole IP packets sent through a raw socket, fragmented here where they are too long for the way.
#include "net/ip_layout.h"
#include "net/mg_ip.h"
#include "net/mg_socket.h"
#include "net/network_order.h"
#include "runtime/descriptor_io.h"
#include "runtime/owners.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/if_tun.h>
#include <net/if.h>
#include <random>
#include <sys/ioctl.h>
#include <sys/socket.h>

using namespace vorma;

namespace {

constexpr size_t max_whole = 1500;
constexpr size_t max_packet = 0xFFFF;
constexpr size_t fragment_data = 1480;
constexpr uint16_t fragment_step = fragment_data / 8;

ssize_t send_to(int sock, const void* data, size_t size, const sockaddr_in& to) {
    ssize_t sent;
    do sent = sendto(sock, data, size, 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
    while (sent < 0 && errno == EINTR);
    return sent;
}

void write_header_checksum(MGIp& fragment) {
    uint8_t* const packet = fragment.m_packet;
    put16(packet + 10, 0);
    fragment.m_checksum = MGIp::CheckSum(reinterpret_cast<uint16_t*>(packet), min_ip_header / 2, nullptr, nullptr);
    put16(packet + 10, fragment.m_checksum);
}

// What the fragments of the next packet without an identification take: 1 to 0xFFFF in turn, from anywhere.
uint16_t next_identification() {
    static std::atomic<uint32_t> next(std::random_device{}());
    return static_cast<uint16_t>(next++ % 0xFFFF + 1);
}

// Builds and sends all fragments of the packet; gives back how many they are.
size_t send_fragments(MGErr& err, int sock, uint8_t* packet, size_t size, const sockaddr_in& to) {
    const auto last_size = static_cast<uint16_t>((size - min_ip_header) % fragment_data);
    const size_t count = (size - min_ip_header) / fragment_data + (last_size != 0 ? 1 : 0);
    // To the kernel 0 is no identification: it would give each fragment one of its own.
    const uint16_t id = get16(packet + 4) != 0 ? get16(packet + 4) : next_identification();
    for (size_t index = 0; index < count; ++index) {
        MGIp fragment;
        const bool last = index + 1 == count;
        MGSocket::MakeFragment(packet, fragment, static_cast<uint16_t>(index), last && last_size != 0, last_size, last);
        put16(fragment.m_packet + 4, id);
        write_header_checksum(fragment);
        const ssize_t b_write = send_to(sock, fragment.m_packet, fragment.m_size, to);
        if (b_write < 0) fail_errno(err, "Ошибка функции отправки фрагмента IP пакета", "sendto");
        if (static_cast<size_t>(b_write) != fragment.m_size)
            fail(err, "Отпарвлены не все данные фрагмента IP пакета", "((size_t)b_write != fragment.m_size)");
    }
    return count;
}

} // namespace

void MGSocket::InitSocket(int domain, int type, int protocol) {
    at_edge("MGSocket::InitSocket", [&] {
        MGErr err = error_of("InitSocket", "Ошибка инициализации сетевого подключения на уровне IP пакетов");
        ClearSock(m_raw_sock);
        InitSocketExt(err, m_raw_sock, domain, type, protocol);
    });
}

void MGSocket::InitRaw(int protocol) {
    InitSocket(AF_INET, SOCK_RAW, protocol);
}

void MGSocket::SetSockOpt(int sock, int level, int optname, const void* optval, unsigned optlen) {
    at_edge("MGSocket::SetSockOpt", [&] {
        MGErr err = error_of("SetSockOpt", "Ошибка установки опциональных параметров сокета");
        err.num_param = level;
        err.num_2_param = optname;
        err.uint32_param = static_cast<uint32_t>(sock);
        IfErrSockExt(err, sock);
        if (setsockopt(sock, level, optname, optval, optlen) < 0)
            fail_errno(err, "Ошибка функции установки параметра", "setsockopt");
    });
}

void MGSocket::SetIpHdrIncl(int sock) {
    const int on = 1;
    SetSockOpt(sock, IPPROTO_IP, IP_HDRINCL, &on, sizeof on);
}

void MGSocket::OpenTun(const char* dev) {
    at_edge("MGSocket::OpenTun", [&] {
        MGErr err = error_of("OpenTun", "Ошибка открытия виртуального сетевого интерфейса типа TUN");
        ClearSock(m_tun_sock);
        // Closed on exec: a device that a program started by us kept open would outlive this object.
        FileDescriptor tun(open("/dev/net/tun", O_RDWR | O_CLOEXEC));
        if (!tun) {
            err.str_param = "O_RDWR";
            fail_errno(err, "Не удалось открыть виртуальный сетевое подключение", "open", "/dev/net/tun");
        }
        ifreq ifr{};
        ifr.ifr_flags = IFF_TUN | IFF_NO_PI;
        if (dev) {
            std::memcpy(ifr.ifr_name, dev, strnlen(dev, sizeof ifr.ifr_name));
            err.opt_param = dev;
        }
        Ioctl(err, tun.get(), TUNSETIFF, &ifr, "Не удалось создать устройство типа TUN",
              "ioctl(m_tun_sock, TUNSETIFF, &ifr)");
        m_tun_sock = tun.release();
    });
}

size_t MGSocket::ReadTun(int sock, void* buf, size_t len_buf) {
    return at_edge("MGSocket::ReadTun", [&] {
        MGErr err = error_of("ReadTun", "Ошибка получения данных из виртуального сетевого интерфейса типа TUN");
        IfErrSockExt(err, sock);
        const ssize_t got = read_some(sock, static_cast<uint8_t*>(buf), len_buf);
        if (got < 0) fail_errno(err, "Ошибка чтения данных из сокета", "read");
        return static_cast<size_t>(got);
    });
}

size_t MGSocket::SendIp(int sock, void* buf, size_t len_buf) {
    return at_edge("MGSocket::SendTo", [&]() -> size_t {
        MGErr err = error_of("SendTo", "Ошибка отправки данных в сетевое соединение");
        err.num_param = static_cast<int64_t>(len_buf);
        IfErrSockExt(err, sock);
        if (!buf || len_buf < min_ip_header) fail(err, "Неправильный размер заголовка", "(len_buf < 20)");

        auto* const packet = static_cast<uint8_t*>(buf);
        sockaddr_in to{};
        to.sin_family = AF_INET;
        std::memcpy(&to.sin_addr, packet + 16, sizeof to.sin_addr);
        const ssize_t bytes_write = send_to(sock, packet, len_buf, to);
        if (bytes_write >= 0) {
            if (static_cast<size_t>(bytes_write) != len_buf)
                fail(err, "Отпарвлены не все данные", "((size_t)bytes_write != len_buf)");
            return len_buf;
        }
        if (errno != EMSGSIZE) fail_errno(err, "Ошибка функции отправки IP пакета", "sendto");
        if (len_buf <= max_whole) return 0;
        if (len_buf > max_packet)
            fail_errno(err, "Ошибка максимального значения размера IP пакета", "( len_buf > 0xFFFF )");
        // MakeFragment takes the header to be 20 bytes long: options would go out as data.
        if ((packet[0] & 15) != 5) fail(err, "Фрагментация IP пакета с опциями не поддерживается", "(ihl != 5)");
        return send_fragments(err, sock, packet, len_buf, to);
    });
}

void MGSocket::MakeFragment(unsigned char* data, MGIp& fragment, uint16_t index, bool partial, uint16_t part_len,
                            bool last) {
    at_edge("MGSocket::MakeFragment", [&] {
        const size_t size = partial ? part_len : fragment_data;
        fragment.m_len = static_cast<uint16_t>(min_ip_header + size);
        fragment.m_buf.resize(min_ip_header + size);
        uint8_t* const packet = fragment.m_packet = fragment.m_buf.data();
        fragment.m_size = fragment.m_buf.size();
        MGIp::CopyMem(packet, data, min_ip_header);
        MGIp::CopyMem(packet + min_ip_header, data + min_ip_header + index * fragment_data, size);

        fragment.m_offset = static_cast<uint16_t>(index * fragment_step);
        fragment.m_flags = last ? 0 : more_fragments;
        put16(packet + 6, static_cast<uint16_t>(fragment.m_flags << flags_shift | fragment.m_offset));
        put16(packet + 2, fragment.m_len);
        write_header_checksum(fragment);
    });
}
