// MGIp against packets that an independent packet builder made, and against a checksum reckoned in another way.
#include "app/mg_err.h"
#include "net/address_syntax.h"
#include "net/mg_ip.h"
#include "net/network_order.h"
#include "support/bytes.h"
#include "support/error_of.h"

#include <random>
#include <sstream>

namespace {

const std::string ethernet = "0200000000010200000000020800";
// TCP, odd length, every common option; IP options with all TCP flags; UDP, odd; ICMP; the fragments of a datagram.
const std::string tcp_odd =
    "45b9004bbeef40003f069c6ec0a811220ac80304c3cb01bbdeadbeef01020304d0c2faf0ebbb0000020405b4010303070402080a112233"
    "4455667788050a00000001fffffffe00006f6464";
const std::string tcp_even =
    "4800003800010000400670b501020304fafbfcfd070b040000000000000000000001ffff00000005000000065bff0001dce70009"
    "6576656e";
const std::string udp_odd = "4500001f00070000401166c50a0000010a00000214e90035000b1255616263";
const std::string udp_no_sum = "4500001f00070000401166c50a0000010a00000214e90035000b0000616263";
const std::string icmp = "4500002100030000400166d70a0000010a0000020800f82b0001000270696e6721";
const std::string first_fragment =
    "45000034004d20004011466a0a0000010a00000203e807d0003a854c000102030405060708090a0b0c0d0e0f1011121314151617";
const std::string last_fragment =
    "4500002e004d00044011666c0a0000010a00000218191a1b1c1d1e1f202122232425262728292a2b2c2d2e2f3031";

void init(MGIp& ip, const std::string& digits) {
    const Bytes packet = hex(digits);
    ip.Init(packet.data(), packet.size());
}

// What stands behind the labels of a print.
std::string values_of(const std::string& print) {
    std::istringstream lines(print);
    std::string values;
    for (std::string line; std::getline(lines, line);)
        if (const size_t at = line.find(": "); at != line.npos) values += line.substr(at + 2) + "|";
    return values;
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
    init(ip, ethernet + tcp_odd + "eeeeee"); // padded behind the total length
    EXPECT_EQ(ip.SkipEthernet(), 0x0800);
    EXPECT_EQ(ip.m_eth_dst[5] * 10 + ip.m_eth_src[5], 12);
    EXPECT_TRUE(ip.IsIp());
    ip.Parse();
    // The byte order and the bit fields, each number as the builder was given it.
    EXPECT_EQ(values_of(ip.Print2String()), "4|20|46|1|75|48879|2|0|63|6|40046|192.168.17.34|10.200.3.4|"
                                            "50123|443|60347|3735928559|16909060|13|0|64240|0|"
                                            "2|4|2|1|0|0|3|3|1|4|2|0|8|10|8|287454020|1432778632|5|10|8|");
    EXPECT_NE(ip.Print2String().find("\nNS[0], CWR[1], ECE[1], URG[0], ACK[0], PSH[0], RST[0], SYN[1], FIN[0]\n"
                                     "Размер окна: 64240\n"),
              std::string::npos);
    ip.m_packet[36] = 0;
    const Bytes damaged = ip.m_buf;
    EXPECT_EQ(condition_of([&] { ip.Parse(); }), "checksum");
    EXPECT_EQ(ip.m_buf, damaged);
    ip.m_packet[8] ^= 1;
    EXPECT_EQ(condition_of([&] { ip.Parse(true, true); }), "checksum");
    EXPECT_FALSE(ip.IsIp());

    // Fragments: the first states the length of the whole datagram, the last has no UDP header.
    init(ip, first_fragment);
    ip.Parse(false);
    EXPECT_EQ(numbers_of(ip), "1000 0 0 0 58 0");
    init(ip, last_fragment);
    ip.Parse(true, true);
    EXPECT_EQ(numbers_of(ip), "0 0 0 0 0 4");
}

TEST(MGIp, ChangesAndBuildsWhatOthersWouldBuild) {
    const struct {
        const std::string &packet, numbers, changed;
    } rows[] = {
        {tcp_odd, "50123 0 194 0 0 0",
         "45b9004bbeef40003f06bee2ac100506080804041092270fdeadbeef01020304d0c2faf09c150000020405b4010303070402080a"
         "1122334455667788050a00000001fffffffe00006f6464"},
        {tcp_even, "1 5 511 9 0 0",
         "48000038000100004006af92ac10050608080404070b040000000000000000001092270f00000005000000065bff0001e4240009"
         "6576656e"},
        {udp_odd, "5353 0 0 0 11 0", "4500001f000700004011bda5ac100506080804041092270f000b46b2616263"},
        {udp_no_sum, "5353 0 0 0 11 0", "4500001f000700004011bda5ac100506080804041092270f000b0000616263"},
        {icmp, "0 0 0 0 0 0", "45000021000300004001bdb7ac100506080804040800f82b0001000270696e6721"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.packet);
        MGIp ip;
        init(ip, row.packet);
        EXPECT_EQ(condition_of([&] { ip.Parse(); }), row.packet == udp_no_sum ? "checksum" : "");
        ip.Parse(false);
        EXPECT_EQ(numbers_of(ip), row.numbers);
        ip.Change(0, 0, 0, 0);
        EXPECT_EQ(ip.m_buf, hex(row.packet));
        ip.Change(MGIp::IpCharToInt(172, 16, 5, 6), 4242, MGIp::IpStrToUint32("8.8.4.4", false), 9999);
        EXPECT_EQ(ip.m_buf, hex(row.changed));
        EXPECT_EQ(MGIp::IpUint32ToStr(ip.m_src_ip, false), "172.16.5.6");
    }
    // Fragments stay what they are of one whole: the first has the checksum of all, a later one only data.
    MGIp first, last, ip;
    for (const auto& [fragment, digits] : {std::pair(&first, first_fragment), std::pair(&last, last_fragment)}) {
        init(*fragment, digits);
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
    EXPECT_EQ(Bytes(last.m_buf.begin() + 20, last.m_buf.end()), hex(last_fragment.substr(40)));

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
    init(ip, udp_odd);
    ip.Parse();
    for (const auto& [ihl, size] : {std::pair(7, 60000), std::pair(5, 31)}) {
        ip.m_ihl = static_cast<uint8_t>(ihl);
        ip.m_len = static_cast<uint16_t>(size);
        ip.MakeIp();
        ip.MakeUdp();
    }
    EXPECT_EQ(ip.m_buf, hex(udp_odd));
    ip.MakeUdpForExit("127.0.0.1");
    EXPECT_EQ(ip.m_buf, hex("45000024e14d400040115b797f0000017f00000152dc7a510010248a0102030405060708"));
}

TEST(MGIp, ChecksumsAgreeWithAnotherReckoning) {
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        Bytes bytes(random() % (i % 1000 == 0 ? 65536 : 130) + 1);
        for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(i % 3 == 0 ? 0xFF : random());
        const uint8_t* const odd_byte = bytes.size() % 2 != 0 ? &bytes.back() : nullptr;
        const auto* words = reinterpret_cast<const uint16_t*>(bytes.data());
        ASSERT_EQ(MGIp::CheckSum(words, static_cast<int>(bytes.size() / 2), odd_byte, nullptr), other_sum(bytes)) << i;
    }
}

TEST(MGIp, RefusesWhatIsNoPacketAndLengthsThatLie) {
    const struct {
        const std::string& packet;
        size_t at;
        uint8_t byte;
        const char* condition;
    } rows[] = {{udp_odd, 0, 0x65, "(m_ver != 4)"},
                {udp_odd, 0, 0x44, "(m_ihl < 5)"},
                {udp_odd, 3, 19, "(m_len < 20)"},
                {udp_odd, 0, 0x48, "(m_len < m_ihl * 4)"},
                {udp_odd, 0, 0x46, "(m_len < m_ihl * 4 + header)"},
                {tcp_odd, 32, 0xE0, "(m_len < (m_ihl + m_tcp_len) * 4)"},
                {udp_odd, 25, 12, "(m_len < m_ihl * 4 + m_udp_len)"}};
    for (const auto& row : rows) {
        MGIp ip;
        init(ip, row.packet);
        ip.m_buf[row.at] = row.byte;
        EXPECT_EQ(condition_of([&] { ip.Parse(false); }), row.condition);
    }
    // A packet cut short anywhere, in a buffer of just that size.
    for (const std::string& digits : {tcp_odd, tcp_even, udp_odd, icmp}) {
        const Bytes whole = hex(digits);
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
        init(ip,
             "4500002c000000004006000001020304050607080001000200000000000000006000000000000000" + std::string(options));
        EXPECT_EQ(condition_of([&] { ip.Parse(false); }), condition) << options;
        std::ostringstream stored;
        for (const MGIpOpt& opt : ip.m_options) stored << +opt.kind << ':' << +opt.len << ':' << opt.data.size() << ' ';
        EXPECT_EQ(stored.str(), expected) << options;
    }
}

// What a typed text is, and the network of an address with a prefix length.
std::string judged(const char* typed) {
    std::string network = "no network";
    const bool converted = convert_ip_to_net(typed, network);
    return std::string(string_is_ip(typed) ? "ip, " : "") + (string_is_net(typed) ? "net, " : "") +
           (string_is_ip_net(typed) ? "ip_net, " : "") + (converted ? "" : "left at ") + network;
}

TEST(AddressSyntax, JudgesAddressesAndNetworks) {
    const std::pair<const char*, std::string> rows[] = {
        {"0.0.0.0", "ip, left at no network"},
        {"192.168.1.77/24", "ip_net, 192.168.1.0/24"},
        {"0.0.0.1/0", "ip_net, 0.0.0.0/0"},
        {"010.0.0.0/008", "net, ip_net, 10.0.0.0/8"}, // decimal, not octal
    };
    for (const auto& [typed, expected] : rows) EXPECT_EQ(judged(typed), expected);

    std::istringstream refused("| \t\r\n|256.0.0.1|1.2.3|1.2.3.4.5|1..2.3|-1.2.3.4| 1.2.3.4|0x1.2.3.4|"
                               "1.2.3.99999999999999999999|10.0.0.0/33|/24|10.0.0.0/-1|10.0.0.0/255.0.0.0");
    for (std::string typed; std::getline(refused, typed, '|');)
        EXPECT_EQ(judged(typed.c_str()), "left at no network") << typed;
}

} // namespace
