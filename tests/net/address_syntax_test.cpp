#include "net/address_syntax.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

namespace {

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
        {"255.255.255.255", "ip, left at no network"},
        {"192.168.1.0/24", "net, ip_net, 192.168.1.0/24"},
        {"192.168.1.77/24", "ip_net, 192.168.1.0/24"},
        {"10.0.0.1/32", "net, ip_net, 10.0.0.1/32"},
        {"128.0.0.0/1", "net, ip_net, 128.0.0.0/1"},
        {"255.255.255.255/31", "ip_net, 255.255.255.254/31"},
        {"0.0.0.1/0", "ip_net, 0.0.0.0/0"},
        {"010.0.0.0/008", "net, ip_net, 10.0.0.0/8"}, // decimal, not octal
        {nullptr, "left at no network"},
    };
    for (const auto& [typed, expected] : rows) EXPECT_EQ(judged(typed), expected);

    uint32_t ip = 0;
    int prefix = 0;
    EXPECT_TRUE(string_is_ip_n("010.200.03.0000000000004", ip) && ip == 0x0ac80304);
    EXPECT_TRUE(string_is_net_n("10.20.30.40/13", ip, prefix, true) && ip == 0x0a141e28 && prefix == 13);
    EXPECT_FALSE(string_is_ip_n("1.2.3.256", ip) || string_is_net_n("1.2.3.4/8", ip, prefix, false));
    EXPECT_TRUE(ip == 0x0a141e28 && prefix == 13);

    std::istringstream refused("| \t\r\n|256.0.0.1|1.2.3|1.2.3.4.5|1.2.3.4.|.1.2.3.4|1..2.3|a.b.c.d|-1.2.3.4|+1.2.3.4|"
                               " 1.2.3.4|1.2.3.4 |1.2. 3.4|0x1.2.3.4|2147483648.0.0.1|1.2.3.99999999999999999999|"
                               "10.0.0.0/33|10.0.0.0/|/24|10.0.0.0/-1|10.0.0.0/8/8|10.0.0.0 /8|10.0.0.0/ 8|10.0.0/8|"
                               "10.0.0.0/4294967304|10.0.0.0/255.0.0.0");
    for (std::string typed; std::getline(refused, typed, '|');)
        EXPECT_EQ(judged(typed.c_str()), "left at no network") << typed;
}

TEST(AddressSyntax, JudgesOtherText) {
    const std::pair<const char*, std::string> rows[] = {
        {"", "empty ansi id "}, {" \t\n\r", "empty ansi "}, {"\v", "ansi "},
        {"abc_9", "ansi id "},  {"Abc", "ansi "},           {"имя", ""},
        {"-7", "ansi "},        {"007", "ansi num id "},    {"1.2.643", "ansi oid "},
        {".1.2", "ansi "},      {"1.2.", "ansi "},          {"1..2", "ansi "},
        {"1.a", "ansi "},
    };
    for (const auto& [s, expected] : rows) {
        std::string what = string_is_empty(s) ? "empty " : "";
        if (string_is_ansi(s)) what += "ansi ";
        if (string_is_num(s)) what += "num ";
        if (string_is_id(s)) what += "id ";
        if (string_is_oid(s)) what += "oid ";
        EXPECT_EQ(what, expected) << s;
    }
    EXPECT_TRUE(string_is_empty(nullptr) && !string_is_num(nullptr));

    int value = -1;
    EXPECT_FALSE(string_to_int("", &value) || string_to_int("1x", &value) || value != -1);
    EXPECT_TRUE(string_to_int("0002147483647", &value) && value == 2147483647);
    EXPECT_THROW(string_to_int("2147483648", &value), std::out_of_range);
}

TEST(AddressSyntax, DumpsBytesInLinesOfSixteen) {
    const std::string line = "00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F \n";
    const uint8_t bytes[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0xAB, 0xFF};
    EXPECT_EQ(sprintf_buf(nullptr, 0) + sprintf_buf(bytes, 1), "\n00 \n");
    EXPECT_EQ(sprintf_buf(bytes, 16) + sprintf_buf(bytes, 18), line + line + "AB FF \n");
}

} // namespace
