// IPv4 packets: parsing, checksums, building and changing. The text form stands in ip_print.cpp.
#include "net/mg_ip.h"

#include "app/mg_err.h"
#include "net/ip_layout.h"
#include "net/network_order.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <optional>

using namespace vorma;

namespace {

constexpr uint8_t protocol_tcp = 6;
constexpr uint8_t protocol_udp = 17;
constexpr size_t ethernet_header = 14;
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

template <class Word>
uint64_t word_at(const uint8_t* bytes) {
    Word word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// Adds the 16-bit words of `size` bytes, an odd last byte as the first of a word, to a sum for `folded`. The order of a
// word's bytes doesn't matter until then, so four words are taken at once, the sums of two and two side by side.
uint64_t add_words(uint64_t sum, const uint8_t* bytes, size_t size) {
    uint64_t other = 0;
    for (; size >= 8; bytes += 8, size -= 8) {
        const uint64_t words = word_at<uint64_t>(bytes);
        sum += words & 0xFFFFFFFF;
        other += words >> 32;
    }
    if (size & 4) sum += word_at<uint32_t>(bytes);
    if (size & 2) sum += word_at<uint16_t>(bytes + (size & 4));
    const uint8_t last[2] = {size & 1 ? bytes[size - 1] : uint8_t{0}};
    return sum + other + word_at<uint16_t>(last);
}

// The checksum that the sum comes to, in host order.
uint16_t folded(uint64_t sum) {
    while (sum > 0xFFFF) sum = (sum >> 16) + (sum & 0xFFFF);
    return ntohs(static_cast<uint16_t>(~sum));
}

// The checksum of the bytes, and of what `sum` holds already, with its own place `at` as 0.
uint16_t checksum_without(size_t at, const uint8_t* bytes, size_t size, uint64_t sum = 0) {
    const size_t behind = at + sizeof(uint16_t);
    return folded(add_words(add_words(sum, bytes, at), bytes + behind, size - behind));
}

uint16_t header_checksum(const uint8_t* packet, size_t header) {
    return checksum_without(ip_checksum_at, packet, header);
}

// The checksum over data that is only partly here, of which a part with the checksum `before` became one with `after`
// (RFC 1624).
uint16_t updated_checksum(uint16_t checksum, uint16_t before, uint16_t after) {
    uint32_t sum = static_cast<uint16_t>(~checksum) + uint32_t{before} + static_cast<uint16_t>(~after);
    while (sum > 0xFFFF) sum = (sum >> 16) + (sum & 0xFFFF);
    return static_cast<uint16_t>(~sum);
}

// A checksum as UDP writes it: 0 would say that there is none (RFC 768).
uint16_t udp_sum(uint16_t checksum) {
    return checksum != 0 ? checksum : 0xFFFF;
}

// The bytes from `at` to the end of the vector, none if it doesn't point into it or to its end.
std::optional<size_t> bytes_from(const std::vector<uint8_t>& bytes, const uint8_t* at) {
    const auto offset = reinterpret_cast<uintptr_t>(at) - reinterpret_cast<uintptr_t>(bytes.data());
    if (!at || offset > bytes.size()) return std::nullopt;
    return bytes.size() - offset;
}

} // namespace

// What an operation tells of itself when it fails. The error is made only then: nearly all packets are sound.
struct MGIp::Operation {
    const char* name;
    const char* mess_1;

    [[noreturn]] void Fail(const char* mess_2, const char* condition, uint64_t number = 0,
                           uint64_t number_2 = 0) const {
        MGErr err = error_of(name, mess_1);
        err.num_param = static_cast<int64_t>(number);
        err.num_2_param = static_cast<int64_t>(number_2);
        fail(err, mess_2, condition);
    }
};

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
        const Operation operation{"MGIp::SkipEthernet", "Ошибка проверки Ethernet пакета"};
        if (m_buf.size() <= ethernet_header)
            operation.Fail("Размер пакета должен быть более 14 байт", "(n <= 14)", m_buf.size());

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
    return header_checksum(m_packet, header) == get16(m_packet + ip_checksum_at);
}

size_t MGIp::GetIpLen(const unsigned char* buf, size_t n) {
    return at_edge("MGIp::GetIpLen", [&]() -> size_t {
        const Operation operation{"MGIp::GetIpLen", "Ошибка получения длины IP пакета"};
        if (!buf || n == 0) return 0;
        if (buf[0] >> 4 != 4) operation.Fail("Заголовок IP пакета не содержит 4 версию", "(ver != 4)");
        const unsigned ihl = buf[0] & 15;
        if (ihl < 5) operation.Fail("Размер IP заголовка меньне 5 блоков по 4 байта", "(ihl < 5)", ihl);
        if (n < 4) return 0;
        const uint16_t len = get16(buf + 2);
        if (len < min_ip_header) operation.Fail("Размер IP пакета меньше 20 байт", "(len < 20)", len);
        return len > n ? 0 : len;
    });
}

// Throws unless the bytes hold the IP header, `transport_header` bytes behind it, and the whole of m_len.
void MGIp::TestLengths(const Operation& operation, uint64_t transport_header) const {
    const uint64_t header = m_ihl * 4u;
    if (m_size < min_ip_header) operation.Fail(bad_lengths, "(m_size < 20)", m_size);
    if (m_size < m_len) operation.Fail(bad_lengths, "(m_size < m_len)", m_size);
    if (m_ihl < 5) operation.Fail(bad_lengths, "(m_ihl < 5)", m_ihl);
    if (m_len < header) operation.Fail(bad_lengths, "(m_len < m_ihl * 4)", m_len);
    if (m_len < header + transport_header) operation.Fail(bad_lengths, "(m_len < m_ihl * 4 + header)", m_len);
}

void MGIp::Parse(bool check, bool only_ip) {
    return at_edge("MGIp::Parse", [&] {
        const Operation operation{"MGIp::Parse", "Ошибка разбора заголовка IP пакета"};
        ClearParse();

        if (m_size < min_ip_header) operation.Fail(bad_lengths, "(m_size < 20)", m_size);
        m_ver = m_packet[0] >> 4;
        if (m_ver != 4) operation.Fail("Данные не содержат 4 версию", "(m_ver != 4)");
        m_ihl = m_packet[0] & 15;
        if (m_ihl < 5) operation.Fail("Размер заголовка меньне 5 блоков по 4 байта", "(m_ihl < 5)", m_ihl);
        m_dscp = m_packet[1] >> 2;
        m_ecn = m_packet[1] & 3;
        m_len = get16(m_packet + 2);
        if (m_len < min_ip_header) operation.Fail("Размер пакета меньше 20 байт", "(m_len < 20)", m_len);
        TestLengths(operation, 0);

        m_id = get16(m_packet + 4);
        m_flags = m_packet[6] >> 5;
        m_offset = get16(m_packet + 6) & 0x1FFF;
        m_ttl = m_packet[8];
        m_protocol = m_packet[9];
        m_checksum = get16(m_packet + ip_checksum_at);
        if (const uint16_t computed = check ? header_checksum(m_packet, m_ihl * 4u) : m_checksum;
            computed != m_checksum)
            operation.Fail("Не совпадает контрольная сумма заголовка IP пакета", "checksum", m_checksum, computed);
        m_src_ip = get32(m_packet + 12);
        m_dst_ip = get32(m_packet + 16);
        if (!only_ip && has_ports(m_protocol)) ParseTransport(operation, check);
    });
}

void MGIp::ParseTransport(const Operation& operation, bool check) {
    const bool tcp = m_protocol == protocol_tcp;
    TestLengths(operation, tcp ? tcp_header : udp_header);
    const uint8_t* const header = Transport();
    m_src_port = get16(header);
    m_dst_port = get16(header + 2);
    m_transport_checksum = get16(header + checksum_at(m_protocol));
    if (check) TestTransportCheckSum(operation);
    if (tcp) {
        ParseTcp(operation);
        return;
    }
    m_udp_len = get16(header + 4);
    const bool fragment = m_offset != 0 || (m_flags & more_fragments) != 0; // its UDP length is that of the whole
    if (!fragment && m_len - m_ihl * 4 < m_udp_len)
        operation.Fail(bad_lengths, "(m_len < m_ihl * 4 + m_udp_len)", m_len);
    m_udp_data = header + udp_header;
}

void MGIp::TestTransportCheckSum(const Operation& operation) const {
    const bool tcp = m_protocol == protocol_tcp;
    const uint16_t computed = TransportCheckSum(checksum_at(m_protocol));
    if (m_transport_checksum == computed) return;
    if (!tcp && m_transport_checksum == udp_sum(computed)) return;
    operation.Fail(tcp ? "Не совпадает контрольная сумма заголовка TCP пакета"
                       : "Не совпадает контрольная сумма заголовка UDP пакета",
                   "checksum", m_transport_checksum, computed);
}

void MGIp::ParseTcp(const Operation& operation) {
    const uint8_t* const header = Transport();
    m_seq = get32(header + 4);
    m_ack = get32(header + 8);
    const uint16_t word = get16(header + 12);
    m_tcp_len = static_cast<uint8_t>(word >> 12);
    m_tcp_reserved = word >> 9 & 7;
    m_tcp_flags = word & 0x1FF;
    m_window = get16(header + 14);
    m_urgent = get16(header + 18);
    if (m_len < (m_ihl + m_tcp_len) * 4) operation.Fail(bad_lengths, "(m_len < (m_ihl + m_tcp_len) * 4)", m_len);
    if (m_tcp_len > 5) ParseOptions(operation);
}

// options = { 0x01 | kind len {byte} } [ 0x00 {byte} ], all within the TCP header. A length byte of 0 or 1 counts as 2,
// so that each turn moves on.
void MGIp::ParseOptions(const Operation& operation) {
    constexpr size_t usual = 8;
    m_options.reserve(usual);
    const uint8_t* option = Transport() + tcp_header;
    const uint8_t* const end = Transport() + m_tcp_len * 4;
    while (option != end && *option != 0) {
        const uint8_t kind = option[0];
        uint8_t len = 0;
        ptrdiff_t taken = 1;
        if (kind != 1) {
            if (end - option < 2) operation.Fail(bad_lengths, "(end - option < 2)", end - option);
            len = option[1];
            taken = len > 2 ? len : 2;
            if (end - option < taken) operation.Fail(bad_lengths, "(end - option < opt.len)", end - option);
        }
        MGIpOpt& opt = m_options.emplace_back(kind, len);
        if (taken > 2) opt.data.assign(option + 2, option + taken);
        option += taken;
    }
}

// The checksum of the TCP or UDP header, which stands `at` bytes behind its beginning, with its data and the pseudo
// header.
uint16_t MGIp::TransportCheckSum(size_t at) const {
    uint8_t pseudo[pseudo_header];
    Pseudo(pseudo);
    return checksum_without(at, Transport(), m_len - m_ihl * 4u, add_words(0, pseudo, sizeof pseudo));
}

void MGIp::MakeIp() {
    return at_edge("MGIp::MakeIp", [&] {
        const Operation operation{"MGIp::MakeIp", "Ошибка создания заголовка IP пакета"};
        if (m_len < min_ip_header) operation.Fail(bad_lengths, "(m_len < 20)", m_len);
        if (m_len < m_ihl * 4) operation.Fail(bad_lengths, "(m_len < m_ihl * 4)", m_len);

        if (const std::optional<size_t> rest = bytes_from(m_buf, m_udp_data)) {
            m_udp_copy.assign(m_udp_data, m_udp_data + *rest);
            m_udp_data = m_udp_copy.data();
        }
        m_buf.resize(m_len);
        m_packet = m_buf.data();
        m_size = m_buf.size();
        m_packet[0] = static_cast<uint8_t>(m_ver * 16 + m_ihl);
        m_packet[1] = static_cast<uint8_t>(m_dscp * 4 + m_ecn);
        put16(m_packet + 2, m_len);
        put16(m_packet + 4, m_id);
        put16(m_packet + 6, static_cast<uint16_t>((m_flags << flags_shift) + m_offset));
        m_packet[8] = m_ttl;
        m_packet[9] = m_protocol;
        put32(m_packet + 12, m_src_ip);
        put32(m_packet + 16, m_dst_ip);
        put16(m_packet + ip_checksum_at, 0);
        m_checksum = folded(add_words(0, m_packet, m_ihl * 4u));
        put16(m_packet + ip_checksum_at, m_checksum);
    });
}

void MGIp::MakeUdp() {
    return at_edge("MGIp::MakeUdp", [&] {
        const Operation operation{"MGIp::MakeUdp", "Ошибка создания UDP пакета"};
        if (m_udp_len < udp_header) operation.Fail(bad_lengths, "(m_udp_len < 8)", m_udp_len);
        TestLengths(operation, m_udp_len);
        const size_t data_size = m_udp_len - udp_header;
        if (data_size != 0 && !m_udp_data) operation.Fail("Не заданы данные UDP пакета", "(m_udp_data == NULL)");
        for (const std::vector<uint8_t>* own : {&m_buf, &m_udp_copy})
            if (bytes_from(*own, m_udp_data).value_or(data_size) < data_size)
                operation.Fail(bad_lengths, "(m_udp_data + m_udp_len - 8)", m_udp_len);

        uint8_t* const header = Transport();
        put16(header, m_src_port);
        put16(header + 2, m_dst_port);
        put16(header + 4, m_udp_len);
        if (data_size != 0) std::memmove(header + udp_header, m_udp_data, data_size); // may be its own data in place
        m_transport_checksum = TransportCheckSum(udp_checksum_at);
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
        const bool tcp = m_protocol == protocol_tcp;
        const bool transport = has_ports(m_protocol) && m_offset == 0; // a later fragment holds data in its place
        TestLengths({"MGIp::Change", "Ошибка изменения IP пакета"}, !transport ? 0 : tcp ? tcp_header : udp_header);

        const uint16_t before = transport ? ChangedPartCheckSum() : 0;
        if (src_ip != 0) put32(m_packet + 12, m_src_ip = src_ip);
        if (dst_ip != 0) put32(m_packet + 16, m_dst_ip = dst_ip);
        if (src_ip != 0 || dst_ip != 0)
            put16(m_packet + ip_checksum_at, m_checksum = header_checksum(m_packet, m_ihl * 4u));
        if (!transport) return;

        uint8_t* const header = Transport();
        if (src_port != 0) put16(header, m_src_port = src_port);
        if (dst_port != 0) put16(header + 2, m_dst_port = dst_port);
        uint8_t* const place = header + checksum_at(m_protocol);
        const uint16_t old = get16(place);
        if (!tcp && old == 0) return;
        const uint16_t sum = (m_flags & more_fragments) != 0 ? updated_checksum(old, before, ChangedPartCheckSum())
                                                             : TransportCheckSum(checksum_at(m_protocol));
        put16(place, m_transport_checksum = tcp ? sum : udp_sum(sum));
    });
}

// The checksum of what Change can change in the pseudo header and the transport header.
uint16_t MGIp::ChangedPartCheckSum() const {
    constexpr size_t addresses = 8, ports = 4;
    return folded(add_words(add_words(0, m_packet + 12, addresses), Transport(), ports));
}

void MGIp::Pseudo(unsigned char* buf) const {
    CopyMem(buf, m_packet + 12, 8);
    buf[8] = 0;
    buf[9] = m_packet[9];
    put16(buf + 10, static_cast<uint16_t>(m_len - m_ihl * 4));
}

uint16_t MGIp::CheckSum(const uint16_t* data, int words, const unsigned char* odd_byte, const uint16_t* pseudo) {
    uint64_t sum = pseudo ? add_words(0, reinterpret_cast<const uint8_t*>(pseudo), pseudo_header) : 0;
    if (words > 0) sum = add_words(sum, reinterpret_cast<const uint8_t*>(data), static_cast<size_t>(words) * 2);
    return folded(odd_byte ? add_words(sum, odd_byte, 1) : sum);
}

uint32_t MGIp::IpCharToInt(uint8_t a, uint8_t b, uint8_t c, uint8_t d) {
    const uint8_t bytes[] = {a, b, c, d};
    return get32(bytes);
}

uint32_t MGIp::IpStrToUint32(const char* ip, bool network_order) {
    return at_edge("MGIp::IpStrToUint32", [&] {
        MGErr err = error_of("MGIp::IpStrToUint32", "Ошибка преобразования IP адреса из строки в число");
        err.opt_param = ip ? ip : "";
        const char* const mess_2 = "Ошибка функции преобразования IP адреса";
        in_addr address{};
        const int result = ip ? inet_pton(AF_INET, ip, &address) : 0;
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
    at_edge("MGIp::Data2Vector", [&] {
        const auto* bytes = static_cast<const uint8_t*>(data);
        if (!bytes) {
            out.clear();
        } else if (!bytes_from(out, bytes)) {
            out.assign(bytes, bytes + size);
        } else {
            out = std::vector<uint8_t>(bytes, bytes + size);
        }
    });
}

void MGIp::Append2Vector(std::vector<uint8_t>& out, const void* data, size_t size) {
    at_edge("MGIp::Append2Vector", [&] {
        if (!data) return;
        const auto* bytes = static_cast<const uint8_t*>(data);
        const std::vector<uint8_t> copy(bytes, bytes + size); // data may stand in `out`
        out.insert(out.end(), copy.begin(), copy.end());
    });
}

void MGIp::ClearMem(void* data, size_t size) {
    std::memset(data, 0, size);
}

void MGIp::CopyMem(void* to, const void* from, size_t size) {
    std::memcpy(to, from, size);
}
