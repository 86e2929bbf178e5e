// One IPv4 packet with its TCP or UDP header: the bytes and the parsed fields side by side. Parses, checks, writes and
// rewrites; sends nothing. The service's work at the IP level stands on it.
// It trusts no length that a packet states: what runs past the bytes at hand is refused before anything is read there.
// Every operation that throws throws MGErr. One object serves one thread at a time; any thread may call what is static.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// One TCP option.
struct MGIpOpt {
    uint8_t kind = 0;
    uint8_t len = 0;           // the length byte as it stands; 0 for kind 1, which has none
    std::vector<uint8_t> data; // the len - 2 bytes behind the length byte; empty if len is 2 or less
};

class MGIp {
public:
    // The packet's bytes, in network order. All other numbers are in host order.
    std::vector<uint8_t> m_buf;
    uint8_t* m_packet = nullptr; // first byte of the IP header, inside m_buf
    uint64_t m_size = 0;         // bytes at m_packet

    // The Ethernet header, from SkipEthernet.
    uint8_t m_eth_dst[6] = {};
    uint8_t m_eth_src[6] = {};
    uint16_t m_eth_type = 0;

    // The parsed fields. IP:
    uint8_t m_ver = 0;
    uint8_t m_ihl = 0; // header length in 32-bit words
    uint8_t m_dscp = 0;
    uint8_t m_ecn = 0;
    uint16_t m_len = 0; // total length in bytes
    uint16_t m_id = 0;
    uint8_t m_flags = 0;   // 2 don't fragment, 1 more fragments
    uint16_t m_offset = 0; // of a fragment, in units of 8 bytes
    uint8_t m_ttl = 0;
    uint8_t m_protocol = 0; // 6 for TCP, 17 for UDP
    uint16_t m_checksum = 0;
    uint32_t m_src_ip = 0;
    uint32_t m_dst_ip = 0;
    // TCP and UDP:
    uint16_t m_src_port = 0;
    uint16_t m_dst_port = 0;
    uint16_t m_transport_checksum = 0;
    // TCP:
    uint32_t m_seq = 0;
    uint32_t m_ack = 0;
    uint8_t m_tcp_len = 0; // header length in 32-bit words
    uint8_t m_tcp_reserved = 0;
    // NS 0x100, CWR 0x80, ECE 0x40, URG 0x20, ACK 0x10, PSH 0x08, RST 0x04, SYN 0x02, FIN 0x01
    uint16_t m_tcp_flags = 0;
    uint16_t m_window = 0;
    uint16_t m_urgent = 0;
    std::vector<MGIpOpt> m_options; // in packet order
    // UDP:
    uint16_t m_udp_len = 0; // header and data; as stated, so it may be below 8, and in a fragment above what is there
    // The UDP data, not owned. After Parse it points into m_buf and is good until m_buf changes; MakeIp keeps a copy of
    // data that stands there, and points to it.
    const uint8_t* m_udp_data = nullptr;

    MGIp() = default;
    ~MGIp() { Clear(); }
    MGIp(const MGIp&) = delete; // m_packet and m_udp_data point into m_buf
    MGIp& operator=(const MGIp&) = delete;

    // Back to an empty packet; ClearParse empties the parsed fields alone.
    void Clear();
    void ClearParse();

    // Takes a copy of the bytes. Parses nothing.
    void Init(const void* data, size_t size);
    // Takes the Ethernet header off the front, keeps its fields, and gives back its type. Throws if nothing would be
    // left.
    uint16_t SkipEthernet();

    // Whether the bytes begin with a sound IP header with the right checksum. Throws nothing, sets no field.
    bool IsIp();
    // The total length of the packet at buf, the first of a stream, or 0 while n bytes don't hold it whole. Throws as
    // soon as the bytes can't begin a packet. A null has no bytes.
    static size_t GetIpLen(const unsigned char* buf, size_t n);

    // Fills the parsed fields from the bytes; the bytes stay as they are. With check, both checksums must be right;
    // with only_ip the transport header isn't looked at, as befits a fragment: a later one has none, and the checksum
    // in the first is that of the whole datagram. The UDP checksum FFFF stands for a sum of 0 too, and 0 is taken only
    // where the sum is 0. Throws: no IPv4 header, a wrong checksum, a length or an option list that runs past its
    // bytes. The fields read until then stay set.
    void Parse(bool check, bool only_ip);
    void Parse(bool check) { Parse(check, false); }
    void Parse() { Parse(true, false); }

    // Sizes m_buf to m_len and writes the IP header from the fields, with its checksum; IP options and all behind the
    // header stay as m_buf held them, 0 where it was shorter. Throws if the header doesn't fit m_len.
    void MakeIp();
    // After MakeIp: writes the UDP header from the fields and the m_udp_len - 8 bytes at m_udp_data behind it, with the
    // checksum. Throws if they don't fit.
    void MakeUdp();
    // The fixed packet of the exit, 36 bytes of UDP from and to `ip`. Throws on what isn't an address.
    void MakeUdpForExit(const char* ip);

    // Rewrites addresses and ports of the parsed packet in place, in fields and bytes; 0 leaves a value as it is. The
    // checksums are made anew, so that a damaged packet would pass for sound: only what Parse took with its check, a
    // fragment with only_ip, may be changed. Of a first fragment the transport checksum is brought up to date, since it
    // is that of the whole datagram (RFC 1624). A UDP checksum of 0, which says that there is none, stays 0, and one
    // that comes to 0 is written as FFFF (RFC 768). Of a protocol other than TCP and UDP, and of a fragment that isn't
    // the first, only the addresses change. Throws, with nothing changed, on lengths that run past the bytes.
    void Change(uint32_t src_ip, uint16_t src_port, uint32_t dst_ip, uint16_t dst_port);

    // Writes the 12 bytes of the pseudo header, of the packet's bytes and the lengths in the fields.
    void Pseudo(unsigned char* buf) const;
    // The Internet checksum (RFC 1071), in host order, over `words` words of data, after them odd_byte as the high byte
    // of a word, and the 6 words of pseudo; both of these may be null. All words are big-endian and need no alignment.
    static uint16_t CheckSum(const uint16_t* data, int words, const unsigned char* odd_byte, const uint16_t* pseudo);

    // An address of its four numbers, `a` the highest byte.
    static uint32_t IpCharToInt(uint8_t a, uint8_t b, uint8_t c, uint8_t d);
    // Between the dotted form and a number, in host order unless network_order. Throw on what isn't an address, a null
    // among it.
    static uint32_t IpStrToUint32(const char* ip, bool network_order);
    static std::string IpUint32ToStr(uint32_t ip, bool network_order);

    // The parsed fields as text for a person, in the user's language; Print puts it on standard output.
    std::string Print2String() const;
    void Print() const;

    // `out` becomes a copy of the bytes, or gets them at its end; data may stand in it, and a null has no bytes.
    static void Data2Vector(const void* data, size_t size, std::vector<uint8_t>& out);
    static void Append2Vector(std::vector<uint8_t>& out, const void* data, size_t size);
    static void ClearMem(void* data, size_t size);
    static void CopyMem(void* to, const void* from, size_t size);

private:
    uint8_t* Transport() const { return m_packet + m_ihl * 4; }
    struct Operation;
    void TestLengths(const Operation& operation, uint64_t transport_header) const;
    void ParseTransport(const Operation& operation, bool check);
    void TestTransportCheckSum(const Operation& operation) const;
    void ParseTcp(const Operation& operation);
    void ParseOptions(const Operation& operation);
    uint16_t TransportCheckSum(size_t at) const;
    uint16_t ChangedPartCheckSum() const;

    std::vector<uint8_t> m_udp_copy; // the data that MakeIp kept
};
