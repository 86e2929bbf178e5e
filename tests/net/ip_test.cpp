// MGIp against packets that an independent packet builder made, and against a checksum reckoned in another way.
#include "app/mg_err.h"
#include "net/address_syntax.h"
#include "net/mg_ip.h"
#include "net/mg_socket.h"
#include "net/network_order.h"
#include "support/bytes.h"
#include "support/error_of.h"
#include "support/temp_dir.h"

#include <sstream>

namespace {

// Of golden/packets.txt: TCP, odd length, every common option, also in an Ethernet frame and padded; IP options with
// all TCP flags; UDP, odd; ICMP; the fragments of a datagram; what they are once addresses and ports are changed.
Bytes packet(const std::string& name) {
    std::istringstream words(read_file(GOLDEN "/packets.txt"));
    for (std::string found, digits; words >> found >> digits;)
        if (found == name) return hex(digits);
    return {};
}

void init(MGIp& ip, const Bytes& bytes) {
    ip.Init(bytes.data(), bytes.size());
}

// Port, reserved bits, flags, urgent pointer, UDP length, fragment offset.
std::string numbers_of(const MGIp& ip) {
    std::ostringstream numbers;
    numbers << ip.m_src_port << ' ' << +ip.m_tcp_reserved << ' ' << ip.m_tcp_flags << ' ' << ip.m_urgent << ' '
            << ip.m_udp_len << ' ' << ip.m_offset;
    return numbers.str();
}

// The Internet checksum by another way: low byte first, each carry brought around at once, swapped at the end.
size_t other_sum(const Bytes& bytes) {
    uint32_t sum = 0;
    for (size_t i = 0; i < bytes.size(); ++i) {
        sum += i % 2 != 0 ? bytes[i] * 256u : bytes[i];
        if (sum > 0xFFFF) sum -= 0xFFFF;
    }
    return 0xFFFF - (sum % 256 * 256 + sum / 256);
}

TEST(MGIp, ParsesWhatOthersBuilt) {
    MGIp ip;
    init(ip, Bytes(14));
    EXPECT_EQ(condition_of([&] { ip.SkipEthernet(); }), "(n <= 14)");
    init(ip, packet("framed"));
    MGSocket::Data2Vector(ip.m_packet + 1, ip.m_size - 1, ip.m_buf); // of its own bytes
    EXPECT_TRUE(std::equal(ip.m_buf.begin(), ip.m_buf.end(), packet("framed").begin() + 1));
    init(ip, packet("framed"));
    EXPECT_EQ(ip.SkipEthernet(), 0x0800);
    EXPECT_EQ(ip.m_eth_dst[5] * 10 + ip.m_eth_src[5], 12);
    EXPECT_TRUE(ip.IsIp());
    ip.Parse();
    EXPECT_EQ(ip.Print2String(), read_file(GOLDEN "/packet.txt")) << "each number as the builder was given it";
    MGIp fresh; // and one that is cleared are alike
    ip.ClearParse();
    for (const uint8_t protocol : {uint8_t{0}, uint8_t{6}, uint8_t{17}}) {
        fresh.m_protocol = ip.m_protocol = protocol;
        EXPECT_EQ(fresh.Print2String(), ip.Print2String());
    }
    ip.m_packet[36] = 0;
    const Bytes damaged = ip.m_buf;
    EXPECT_EQ(condition_of([&] { ip.Parse(); }), "checksum");
    EXPECT_EQ(ip.m_buf, damaged);
    ip.m_packet[8] ^= 1;
    EXPECT_EQ(condition_of([&] { ip.Parse(true, true); }), "checksum");
    EXPECT_FALSE(ip.IsIp());

    // Fragments: the first states the length of the whole datagram, the last has no UDP header.
    init(ip, packet("first_fragment"));
    ip.Parse(false);
    EXPECT_EQ(numbers_of(ip), "1000 0 0 0 58 0");
    init(ip, packet("last_fragment"));
    ip.Parse(true, true);
    EXPECT_EQ(numbers_of(ip), "0 0 0 0 0 4");
}

TEST(MGIp, ChangesAndBuildsWhatOthersWouldBuild) {
    const std::pair<std::string, const char*> rows[] = {
        {"tcp_odd", "50123 0 194 0 0 0"},  {"tcp_even", "1 5 511 9 0 0"}, {"udp_odd", "5353 0 0 0 11 0"},
        {"udp_no_sum", "5353 0 0 0 11 0"}, {"icmp", "0 0 0 0 0 0"},
    };
    for (const auto& [name, numbers] : rows) {
        SCOPED_TRACE(name);
        MGIp ip;
        init(ip, packet(name));
        EXPECT_EQ(condition_of([&] { ip.Parse(); }), name == "udp_no_sum" ? "checksum" : "");
        ip.Parse(false);
        EXPECT_EQ(numbers_of(ip), numbers);
        ip.Change(0, 0, 0, 0);
        EXPECT_EQ(ip.m_buf, packet(name));
        ip.Change(MGIp::IpCharToInt(172, 16, 5, 6), 4242, MGIp::IpStrToUint32("8.8.4.4", false), 9999);
        EXPECT_EQ(ip.m_buf, packet(name + "_changed"));
        EXPECT_EQ(MGIp::IpUint32ToStr(ip.m_src_ip, false), "172.16.5.6");
    }
    // Fragments stay what they are of one whole: the first has the checksum of all, a later one only data.
    MGIp first, last, ip;
    for (const auto& [fragment, name] : {std::pair(&first, "first_fragment"), {&last, "last_fragment"}}) {
        init(*fragment, packet(name));
        fragment->Parse(true, true);
        fragment->Change(MGIp::IpCharToInt(172, 16, 5, 6), 4242, 0, 9999);
        EXPECT_TRUE(fragment->IsIp());
    }
    Bytes whole(12);
    first.Pseudo(whole.data());
    whole[11] = 58; // the length of the whole
    MGIp::Append2Vector(whole, first.m_packet + 20, first.m_size - 20);
    MGIp::Append2Vector(whole, last.m_packet + 20, last.m_size - 20);
    EXPECT_EQ(other_sum(whole), 0u);
    const Bytes sent = packet("last_fragment");
    EXPECT_TRUE(std::equal(last.m_buf.begin() + 20, last.m_buf.end(), sent.begin() + 20, sent.end()));

    // A checksum of 0 goes out as FFFF, but as it is from MakeUdp.
    ip.MakeUdpForExit("127.0.0.1");
    vorma::put16(ip.m_packet + 34, static_cast<uint16_t>(0x0708 + ip.m_transport_checksum));
    ip.Change(0, 21212, 0, 0);
    EXPECT_EQ(ip.m_transport_checksum, 0xFFFF);
    EXPECT_EQ(condition_of([&] { ip.Parse(); }), "");
    ip.MakeUdp();
    EXPECT_EQ(ip.m_transport_checksum, 0);
    EXPECT_EQ(condition_of([&] { ip.Parse(); }), "");

    // A packet is made anew of its own data, with IP options and without.
    init(ip, packet("udp_odd"));
    ip.Parse();
    for (const auto& [ihl, size] : {std::pair(7, 60000), std::pair(5, 31)}) {
        ip.m_ihl = static_cast<uint8_t>(ihl);
        ip.m_len = static_cast<uint16_t>(size);
        ip.MakeIp();
        ip.MakeUdp();
    }
    EXPECT_EQ(ip.m_buf, packet("udp_odd"));
    ip.MakeUdpForExit("127.0.0.1");
    EXPECT_EQ(ip.m_buf, packet("for_exit"));
    MGIp bare; // without data, which a parsed packet tells by an empty end
    bare.MakeUdpForExit("127.0.0.1");
    bare.m_len = 28, bare.m_udp_len = 8;
    for (int time = 0; time < 2; ++time)
        EXPECT_EQ(condition_of([&] { bare.MakeIp(), bare.MakeUdp(), bare.Parse(); }), "");
    bare.m_len = 29, bare.m_udp_len = 9, bare.MakeIp();
    bare.m_udp_data = bare.m_packet + 29; // its end, where no byte is left
    EXPECT_EQ(condition_of([&] { bare.MakeUdp(); }), "(m_udp_data + m_udp_len - 8)");
}

TEST(MGIp, ChecksumsAgreeWithAnotherReckoning) {
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        const size_t size = random() % (i % 1000 == 0 ? 65536 : 130) + 1;
        const Bytes any = i % 3 == 0 ? Bytes(size, 0xFF) : random_bytes(random, size);
        const uint8_t* const odd_byte = size % 2 != 0 ? &any.back() : nullptr;
        const auto* words = reinterpret_cast<const uint16_t*>(any.data());
        ASSERT_EQ(MGIp::CheckSum(words, static_cast<int>(size / 2), odd_byte, nullptr), other_sum(any)) << i;
    }
}

TEST(MGIp, RefusesWhatIsNoPacketAndLengthsThatLie) {
    const struct {
        const char* name;
        size_t at;
        uint8_t byte;
        const char* condition;
    } rows[] = {{"udp_odd", 0, 0x65, "(m_ver != 4)"},
                {"udp_odd", 0, 0x44, "(m_ihl < 5)"},
                {"udp_odd", 3, 19, "(m_len < 20)"},
                {"udp_odd", 0, 0x48, "(m_len < m_ihl * 4)"},
                {"udp_odd", 0, 0x46, "(m_len < m_ihl * 4 + header)"},
                {"tcp_odd", 32, 0xE0, "(m_len < (m_ihl + m_tcp_len) * 4)"},
                {"udp_odd", 25, 12, "(m_len < m_ihl * 4 + m_udp_len)"}};
    for (const auto& row : rows) {
        MGIp ip;
        init(ip, packet(row.name));
        ip.m_buf[row.at] = row.byte;
        EXPECT_EQ(condition_of([&] { ip.Parse(false); }), row.condition);
    }
    // A packet cut short anywhere, in a buffer of just that size.
    for (const char* name : {"tcp_odd", "tcp_even", "udp_odd", "icmp"}) {
        const Bytes whole = packet(name);
        for (size_t size = 0; size < whole.size(); ++size) {
            MGIp ip;
            ip.Init(whole.data(), size);
            EXPECT_EQ(ip.IsIp(), size >= (whole[0] & 15) * 4u);
            EXPECT_NE(condition_of([&] { ip.Parse(false); }), "");
            EXPECT_NE(condition_of([&] { ip.Change(1, 1, 1, 1); }), "");
            EXPECT_EQ(MGIp::GetIpLen(ip.m_packet, size), 0u);
        }
        Bytes stream = whole;
        MGIp::Append2Vector(stream, whole.data(), 7);
        EXPECT_EQ(MGIp::GetIpLen(stream.data(), stream.size()), whole.size());
    }
}

TEST(MGIp, WalksOptionListsToTheirEnd) {
    const char* const rows[][3] = {// the options, what is stored (kind:len:data), the condition
                                   {"00010101", "", ""},
                                   {"05000301", "5:0:0 3:1:0 ", ""},
                                   {"01010103", "1:0:0 1:0:0 1:0:0 ", "(end - option < 2)"},
                                   {"01030500", "1:0:0 ", "(end - option < opt.len)"}};
    for (const auto& [options, expected, condition] : rows) {
        MGIp ip; // no byte stands behind the options
        Bytes bytes = packet("options"), list = hex(options);
        bytes.insert(bytes.end(), list.begin(), list.end());
        init(ip, bytes);
        EXPECT_EQ(condition_of([&] { ip.Parse(false); }), condition) << options;
        std::ostringstream stored;
        for (const MGIpOpt& opt : ip.m_options) stored << +opt.kind << ':' << +opt.len << ':' << opt.data.size() << ' ';
        EXPECT_EQ(stored.str(), expected) << options;
    }
}

} // namespace
