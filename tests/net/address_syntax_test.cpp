// Addresses and networks as users type them.
#include "net/address_syntax.h"

#include <gtest/gtest.h>

#include <sstream>

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

TEST(AddressSyntax, TellsIdentifiersAndWritesNumbers) {
    for (const char* oid : {"1.2", "2.5.4.10"}) EXPECT_TRUE(string_is_oid(oid) && string_is_ansi(oid)) << oid;
    for (const char* other : {"", "1", "1.", ".1", "1..2", "1.a"}) EXPECT_FALSE(string_is_oid(other)) << other;
    EXPECT_EQ(int_to_string(-1) + uint32_to_string(~0u) + uint64_to_string(~0ull), "-1429496729518446744073709551615");
}

} // namespace
