// IPv4 packets: parsing, checksums, building and changing. The text form stands in ip_print.cpp.
#include "net/mg_ip.h"

#include "app/mg_err.h"
#include "net/network_order.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>

namespace {

constexpr uint8_t protocol_tcp = 6;
constexpr uint8_t protocol_udp = 17;
constexpr size_t ethernet_header = 14;
constexpr size_t min_ip_header = 20;
constexpr size_t tcp_header = 20;
constexpr size_t udp_header = 8;
constexpr size_t pseudo_header = 12;
constexpr size_t ip_checksum_at = 10;
constexpr size_t tcp_checksum_at = 16;
constexpr size_t udp_checksum_at = 6;

const char* const bad_lengths = "Неправильный размер заголовка";

bool has_ports(uint8_t protocol) {
    return protocol == protocol_tcp || protocol == protocol_udp;
}

size_t checksum_at(uint8_t protocol) {
    return protocol == protocol_tcp ? tcp_checksum_at : udp_checksum_at;
}

[[noreturn]] void fail_size(MGErr& err, const char* mess_2, const char* condition, uint64_t size) {
    err.num_param = static_cast<int64_t>(size);
    fail(err, mess_2, condition);
}

// The checksum of an IP header of that many words, reckoned with its own place as 0; the bytes stay as they are.
uint16_t header_checksum(uint8_t* packet, int words) {
    uint8_t* const checksum = packet + ip_checksum_at;
    const uint16_t in_packet = get16(checksum);
    put16(checksum, 0);
    const uint16_t sum = MGIp::CheckSum(reinterpret_cast<uint16_t*>(packet), words, nullptr, nullptr);
    put16(checksum, in_packet);
    return sum;
}

void test_checksum(MGErr& err, uint16_t in_packet, uint16_t computed, const char* mess_2) {
    if (in_packet == computed) return;
    err.num_param = in_packet;
    err.num_2_param = computed;
    fail(err, mess_2, "checksum");
}

} // namespace

void MGIp::Clear() {
    m_buf.clear();
    m_packet = nullptr;
    m_size = 0;
    ClearMem(m_eth_dst, sizeof m_eth_dst);
    ClearMem(m_eth_src, sizeof m_eth_src);
    m_eth_type = 0;
    ClearParse();
}

void MGIp::ClearParse() {
    m_ver = m_ihl = m_dscp = m_ecn = m_flags = m_ttl = m_protocol = 0;
    m_len = m_id = m_offset = m_checksum = 0;
    m_src_ip = m_dst_ip = 0;
    m_src_port = m_dst_port = m_transport_checksum = 0;
    m_seq = m_ack = 0;
    m_tcp_len = m_tcp_reserved = 0;
    m_tcp_flags = m_window = m_urgent = 0;
    m_options.clear();
    m_udp_len = 0;
    m_udp_data = nullptr;
}

void MGIp::Init(const void* data, size_t size) {
    return at_edge("MGIp::Init", [&] {
        Data2Vector(data, size, m_buf);
        m_packet = m_buf.data();
        m_size = m_buf.size();
    });
}

uint16_t MGIp::SkipEthernet() {
    return at_edge("MGIp::SkipEthernet", [&] {
        MGErr err = error_of("MGIp::SkipEthernet", "Ошибка проверки Ethernet пакета");
        if (m_buf.size() <= ethernet_header)
            fail_size(err, "Размер пакета должен быть более 14 байт", "(n <= 14)", m_buf.size());

        CopyMem(m_eth_dst, m_buf.data(), sizeof m_eth_dst);
        CopyMem(m_eth_src, m_buf.data() + 6, sizeof m_eth_src);
        m_eth_type = get16(m_buf.data() + 12);
        m_buf.erase(m_buf.begin(), m_buf.begin() + ethernet_header);
        m_packet = m_buf.data();
        m_size = m_buf.size();
        return m_eth_type;
    });
}

bool MGIp::IsIp() {
    if (m_size < min_ip_header || m_packet[0] >> 4 != 4) return false;
    const size_t header = (m_packet[0] & 15) * 4u;
    if (header < min_ip_header || header > m_size || get16(m_packet + 2) < min_ip_header) return false;
    return header_checksum(m_packet, static_cast<int>(header / 2)) == get16(m_packet + ip_checksum_at);
}

size_t MGIp::GetIpLen(const unsigned char* buf, size_t n) {
    return at_edge("MGIp::GetIpLen", [&]() -> size_t {
        MGErr err = error_of("MGIp::GetIpLen", "Ошибка получения длины IP пакета");
        if (n == 0) return 0;
        if (buf[0] >> 4 != 4) fail(err, "Заголовок IP пакета не содержит 4 версию", "(ver != 4)");
        const unsigned ihl = buf[0] & 15;
        if (ihl < 5) fail_size(err, "Размер IP заголовка меньне 5 блоков по 4 байта", "(ihl < 5)", ihl);
        if (n < 4) return 0;
        const uint16_t len = get16(buf + 2);
        if (len < min_ip_header) fail_size(err, "Размер IP пакета меньше 20 байт", "(len < 20)", len);
        return len > n ? 0 : len;
    });
}

// Throws unless the bytes hold the IP header, `transport_header` bytes behind it, and the whole of m_len.
void MGIp::TestLengths(MGErr& err, uint64_t transport_header) const {
    const uint64_t header = m_ihl * 4u;
    if (m_size < min_ip_header) fail_size(err, bad_lengths, "(m_size < 20)", m_size);
    if (m_size < m_len) fail_size(err, bad_lengths, "(m_size < m_len)", m_size);
    if (m_ihl < 5) fail_size(err, bad_lengths, "(m_ihl < 5)", m_ihl);
    if (m_len < header) fail_size(err, bad_lengths, "(m_len < m_ihl * 4)", m_len);
    if (m_len < header + transport_header) fail_size(err, bad_lengths, "(m_len < m_ihl * 4 + header)", m_len);
}

void MGIp::Parse(bool check, bool only_ip) {
    return at_edge("MGIp::Parse", [&] {
        MGErr err = error_of("MGIp::Parse", "Ошибка разбора заголовка IP пакета");
        ClearParse();

        if (m_size < min_ip_header) fail_size(err, bad_lengths, "(m_size < 20)", m_size);
        m_ver = m_packet[0] >> 4;
        if (m_ver != 4) fail(err, "Данные не содержат 4 версию", "(m_ver != 4)");
        m_ihl = m_packet[0] & 15;
        if (m_ihl < 5) fail_size(err, "Размер заголовка меньне 5 блоков по 4 байта", "(m_ihl < 5)", m_ihl);
        m_dscp = m_packet[1] >> 2;
        m_ecn = m_packet[1] & 3;
        m_len = get16(m_packet + 2);
        if (m_len < min_ip_header) fail_size(err, "Размер пакета меньше 20 байт", "(m_len < 20)", m_len);
        TestLengths(err, 0);

        m_id = get16(m_packet + 4);
        m_flags = m_packet[6] >> 5;
        m_offset = get16(m_packet + 6) & 0x1FFF;
        m_ttl = m_packet[8];
        m_protocol = m_packet[9];
        m_checksum = get16(m_packet + ip_checksum_at);
        if (check)
            test_checksum(err, m_checksum, header_checksum(m_packet, m_ihl * 2),
                          "Не совпадает контрольная сумма заголовка IP пакета");
        m_src_ip = get32(m_packet + 12);
        m_dst_ip = get32(m_packet + 16);
        if (!only_ip && has_ports(m_protocol)) ParseTransport(err, check);
    });
}

void MGIp::ParseTransport(MGErr& err, bool check) {
    const bool tcp = m_protocol == protocol_tcp;
    TestLengths(err, tcp ? tcp_header : udp_header);
    uint8_t* const header = Transport();
    m_src_port = get16(header);
    m_dst_port = get16(header + 2);
    m_transport_checksum = get16(header + checksum_at(m_protocol));
    if (check)
        test_checksum(err, m_transport_checksum, TransportCheckSum(header + checksum_at(m_protocol)),
                      tcp ? "Не совпадает контрольная сумма заголовка TCP пакета"
                          : "Не совпадает контрольная сумма заголовка UDP пакета");
    if (tcp) {
        ParseTcp(err);
        return;
    }
    m_udp_len = get16(header + 4);
    const bool fragment = m_offset != 0 || (m_flags & 1) != 0; // its UDP length is that of the whole
    if (!fragment && m_len - m_ihl * 4 < m_udp_len)
        fail_size(err, bad_lengths, "(m_len < m_ihl * 4 + m_udp_len)", m_len);
    m_udp_data = header + udp_header;
}

void MGIp::ParseTcp(MGErr& err) {
    const uint8_t* const header = Transport();
    m_seq = get32(header + 4);
    m_ack = get32(header + 8);
    const uint16_t word = get16(header + 12);
    m_tcp_len = static_cast<uint8_t>(word >> 12);
    m_tcp_reserved = word >> 9 & 7;
    m_tcp_flags = word & 0x1FF;
    m_window = get16(header + 14);
    m_urgent = get16(header + 18);
    if (m_len < (m_ihl + m_tcp_len) * 4) fail_size(err, bad_lengths, "(m_len < (m_ihl + m_tcp_len) * 4)", m_len);
    if (m_tcp_len > 5) ParseOptions(err);
}

// options = { 0x01 | kind len {byte} } [ 0x00 {byte} ], all within the TCP header. A length byte of 0 or 1 counts as 2,
// so that each turn moves on.
void MGIp::ParseOptions(MGErr& err) {
    const uint8_t* option = Transport() + tcp_header;
    const uint8_t* const end = Transport() + m_tcp_len * 4;
    while (option != end && *option != 0) {
        MGIpOpt opt;
        opt.kind = option[0];
        ptrdiff_t taken = 1;
        if (opt.kind != 1) {
            if (end - option < 2) fail_size(err, bad_lengths, "(end - option < 2)", end - option);
            opt.len = option[1];
            taken = opt.len > 2 ? opt.len : 2;
            if (end - option < taken) fail_size(err, bad_lengths, "(end - option < opt.len)", end - option);
            opt.data.assign(option + 2, option + taken);
        }
        m_options.push_back(std::move(opt));
        option += taken;
    }
}

// The checksum of the TCP or UDP header whose checksum stands at `checksum`, with its data and the pseudo header,
// reckoned with that place as 0; the bytes stay as they are.
uint16_t MGIp::TransportCheckSum(uint8_t* checksum) {
    uint8_t pseudo[pseudo_header];
    Pseudo(pseudo);
    const int size = m_len - m_ihl * 4;
    const uint8_t* const odd_byte = size % 2 != 0 ? Transport() + size - 1 : nullptr;
    const uint16_t in_packet = get16(checksum);
    put16(checksum, 0);
    const uint16_t sum =
        CheckSum(reinterpret_cast<uint16_t*>(Transport()), size / 2, odd_byte, reinterpret_cast<uint16_t*>(pseudo));
    put16(checksum, in_packet);
    return sum;
}

void MGIp::MakeIp() {
    return at_edge("MGIp::MakeIp", [&] {
        MGErr err = error_of("MGIp::MakeIp", "Ошибка создания заголовка IP пакета");
        if (m_len < min_ip_header) fail_size(err, bad_lengths, "(m_len < 20)", m_len);
        if (m_len < m_ihl * 4) fail_size(err, bad_lengths, "(m_len < m_ihl * 4)", m_len);

        m_buf.resize(m_len);
        m_packet = m_buf.data();
        m_size = m_buf.size();
        m_packet[0] = static_cast<uint8_t>(m_ver * 16 + m_ihl);
        m_packet[1] = static_cast<uint8_t>(m_dscp * 4 + m_ecn);
        put16(m_packet + 2, m_len);
        put16(m_packet + 4, m_id);
        put16(m_packet + 6, static_cast<uint16_t>(m_flags * 8192 + m_offset));
        m_packet[8] = m_ttl;
        m_packet[9] = m_protocol;
        put32(m_packet + 12, m_src_ip);
        put32(m_packet + 16, m_dst_ip);
        m_checksum = header_checksum(m_packet, m_ihl * 2);
        put16(m_packet + ip_checksum_at, m_checksum);
    });
}

void MGIp::MakeUdp() {
    return at_edge("MGIp::MakeUdp", [&] {
        MGErr err = error_of("MGIp::MakeUdp", "Ошибка создания UDP пакета");
        if (m_udp_len < udp_header) fail_size(err, bad_lengths, "(m_udp_len < 8)", m_udp_len);
        TestLengths(err, m_udp_len);
        const size_t data_size = m_udp_len - udp_header;
        if (data_size != 0 && !m_udp_data) fail(err, "Не заданы данные UDP пакета", "(m_udp_data == NULL)");

        uint8_t* const header = Transport();
        put16(header, m_src_port);
        put16(header + 2, m_dst_port);
        put16(header + 4, m_udp_len);
        if (data_size != 0) std::memmove(header + udp_header, m_udp_data, data_size); // may be its own data in place
        m_transport_checksum = TransportCheckSum(header + udp_checksum_at);
        put16(header + udp_checksum_at, m_transport_checksum);
    });
}

void MGIp::MakeUdpForExit(const char* ip) {
    static constexpr uint8_t data[] = {1, 2, 3, 4, 5, 6, 7, 8};
    m_ver = 4;
    m_ihl = 5;
    m_dscp = 0;
    m_ecn = 0;
    m_len = 36;
    m_id = 57677;
    m_flags = 2;
    m_offset = 0;
    m_ttl = 64;
    m_protocol = protocol_udp;
    m_src_ip = m_dst_ip = IpStrToUint32(ip, false);
    m_src_port = 21212;
    m_dst_port = 31313;
    m_udp_len = 16;
    m_udp_data = data;
    MakeIp();
    MakeUdp();
}

void MGIp::Change(uint32_t src_ip, uint16_t src_port, uint32_t dst_ip, uint16_t dst_port) {
    return at_edge("MGIp::Change", [&] {
        if (src_ip == 0 && src_port == 0 && dst_ip == 0 && dst_port == 0) return;
        MGErr err = error_of("MGIp::Change", "Ошибка изменения IP пакета");
        const bool tcp = m_protocol == protocol_tcp;
        const bool transport = has_ports(m_protocol) && m_offset == 0; // a later fragment holds data in its place
        TestLengths(err, !transport ? 0 : tcp ? tcp_header : udp_header);

        if (src_ip != 0) put32(m_packet + 12, m_src_ip = src_ip);
        if (dst_ip != 0) put32(m_packet + 16, m_dst_ip = dst_ip);
        if (src_ip != 0 || dst_ip != 0)
            put16(m_packet + ip_checksum_at, m_checksum = header_checksum(m_packet, m_ihl * 2));
        if (!transport) return;

        uint8_t* const header = Transport();
        if (src_port != 0) put16(header, m_src_port = src_port);
        if (dst_port != 0) put16(header + 2, m_dst_port = dst_port);
        uint8_t* const checksum = header + checksum_at(m_protocol);
        if (!tcp && get16(checksum) == 0) return;
        put16(checksum, m_transport_checksum = TransportCheckSum(checksum));
    });
}

void MGIp::Pseudo(unsigned char* buf) const {
    CopyMem(buf, m_packet + 12, 8);
    buf[8] = 0;
    buf[9] = m_packet[9];
    put16(buf + 10, static_cast<uint16_t>(m_len - m_ihl * 4));
}

uint16_t MGIp::CheckSum(const uint16_t* data, int words, const unsigned char* odd_byte, const uint16_t* pseudo) {
    uint32_t sum = 0;
    // Byte by byte: the words of a packet may stand at odd addresses.
    const auto add = [&sum](const uint16_t* from, int count) {
        const auto* bytes = reinterpret_cast<const uint8_t*>(from);
        for (int i = 0; i < count; ++i) sum += get16(bytes + 2 * i);
    };
    if (pseudo) add(pseudo, pseudo_header / 2);
    add(data, words);
    if (odd_byte) sum += static_cast<uint32_t>(*odd_byte) << 8;
    sum = (sum >> 16) + (sum & 0xFFFF);
    sum = (sum >> 16) + (sum & 0xFFFF);
    return static_cast<uint16_t>(~sum);
}

uint32_t MGIp::IpCharToInt(uint8_t a, uint8_t b, uint8_t c, uint8_t d) {
    const uint8_t bytes[] = {a, b, c, d};
    return get32(bytes);
}

uint32_t MGIp::IpStrToUint32(const char* ip, bool network_order) {
    return at_edge("MGIp::IpStrToUint32", [&] {
        MGErr err = error_of("MGIp::IpStrToUint32", "Ошибка преобразования IP адреса из строки в число");
        err.opt_param = ip;
        const char* const mess_2 = "Ошибка функции преобразования IP адреса";
        in_addr address{};
        const int result = inet_pton(AF_INET, ip, &address);
        if (result < 0) {
            err.str_param = "Заданное значение не содержит допустимого значения семейства IP адресов";
            fail_errno(err, mess_2, "inet_pton");
        }
        if (result == 0) {
            err.str_param = "Заданное значение не содержит строку символов, представляющую правильный сетевой IP адрес";
            fail(err, mess_2, "inet_pton");
        }
        return network_order ? address.s_addr : ntohl(address.s_addr);
    });
}

std::string MGIp::IpUint32ToStr(uint32_t ip, bool network_order) {
    return at_edge("MGIp::IpUint32ToStr", [&]() -> std::string {
        MGErr err = error_of("MGIp::IpUint32ToStr", "Ошибка преобразования IP адреса из числа в строку");
        const in_addr address{network_order ? ip : htonl(ip)};
        char text[INET_ADDRSTRLEN];
        if (!inet_ntop(AF_INET, &address, text, sizeof text))
            fail_errno(err, "Ошибка функции преобразования IP адреса", "inet_ntop");
        return text;
    });
}

void MGIp::Data2Vector(const void* data, size_t size, std::vector<uint8_t>& out) {
    std::vector<uint8_t> copy; // data may stand in `out`
    if (data) Append2Vector(copy, data, size);
    out.swap(copy);
}

void MGIp::Append2Vector(std::vector<uint8_t>& out, const void* data, size_t size) {
    const auto* bytes = static_cast<const uint8_t*>(data);
    out.insert(out.end(), bytes, bytes + size);
}

void MGIp::ClearMem(void* data, size_t size) {
    std::memset(data, 0, size);
}

void MGIp::CopyMem(void* to, const void* from, size_t size) {
    std::memcpy(to, from, size);
}
