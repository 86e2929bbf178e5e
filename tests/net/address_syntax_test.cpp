#include "net/address_syntax.h"

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>

// What each way of typing is: an address, an address with a prefix length, a network.
TEST(AddressSyntax, JudgesAddressesAndNetworks) {
    struct Row {
        const char* typed;
        std::optional<uint32_t> ip; // as string_is_ip_n
        bool ip_net, net;
        const char* network; // as convert_ip_to_net, null where refused
    };
    const Row rows[] = {
        {"1.2.3.4", 0x01020304, false, false, nullptr},
        {"0.0.0.0", 0, false, false, nullptr},
        {"255.255.255.255", 0xffffffff, false, false, nullptr},
        {"010.1.1.09", 0x0a010109, false, false, nullptr}, // decimal, not octal
        {"0000000000001.2.3.4", 0x01020304, false, false, nullptr},
        {"192.168.1.0/24", {}, true, true, "192.168.1.0/24"},
        {"192.168.1.77/24", {}, true, false, "192.168.1.0/24"},
        {"10.0.0.1/32", {}, true, true, "10.0.0.1/32"},
        {"128.0.0.0/1", {}, true, true, "128.0.0.0/1"},
        {"255.255.255.255/31", {}, true, false, "255.255.255.254/31"},
        {"0.0.0.0/0", {}, true, true, "0.0.0.0/0"},
        {"0.0.0.1/0", {}, true, false, "0.0.0.0/0"},
        {"010.0.0.0/008", {}, true, true, "10.0.0.0/8"},
        {nullptr, {}, false, false, nullptr},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.typed ? row.typed : "null");
        uint32_t ip = 77;
        EXPECT_EQ(string_is_ip_n(row.typed, ip), row.ip.has_value());
        EXPECT_EQ(ip, row.ip.value_or(77));
        EXPECT_EQ(string_is_ip(row.typed), row.ip.has_value());
        EXPECT_EQ(string_is_ip_net(row.typed), row.ip_net);
        EXPECT_EQ(string_is_net(row.typed), row.net);
        std::string network = "before";
        EXPECT_EQ(convert_ip_to_net(row.typed, network), row.network != nullptr);
        EXPECT_EQ(network, row.network ? row.network : "before");
    }
    uint32_t ip = 0;
    int prefix = 0;
    EXPECT_TRUE(string_is_net_n("10.20.30.40/13", ip, prefix, true));
    EXPECT_EQ(ip, 0x0a141e28u);
    EXPECT_EQ(prefix, 13);
}

TEST(AddressSyntax, RefusesWhatIsNeither) {
    for (const char* typed : {"",
                              " \t\r\n",
                              "256.0.0.1",
                              "1.2.3",
                              "1.2.3.4.5",
                              "1.2.3.4.",
                              ".1.2.3.4",
                              "1..2.3",
                              "a.b.c.d",
                              "-1.2.3.4",
                              "+1.2.3.4",
                              " 1.2.3.4",
                              "1.2.3.4 ",
                              "1.2. 3.4",
                              "0x1.2.3.4",
                              "2147483648.0.0.1",
                              "1.2.3.99999999999999999999",
                              "10.0.0.0/33",
                              "10.0.0.0/",
                              "/24",
                              "/",
                              "10.0.0.0/-1",
                              "10.0.0.0/+8",
                              "10.0.0.0/8/8",
                              "10.0.0.0 /8",
                              "10.0.0.0/ 8",
                              "10.0.0/8",
                              "10.0.0.0/4294967304",
                              "10.0.0.0/255.0.0.0"}) {
        SCOPED_TRACE(typed);
        EXPECT_FALSE(string_is_ip(typed));
        EXPECT_FALSE(string_is_net(typed));
        EXPECT_FALSE(string_is_ip_net(typed));
    }
}

TEST(AddressSyntax, JudgesOtherText) {
    struct Row {
        const char* s;
        bool empty, ansi, num, id, oid;
    };
    const Row rows[] = {
        {"", true, true, false, true, false},       {" \t\n\r", true, true, false, false, false},
        {"\v", false, true, false, false, false},   {"abc_9", false, true, false, true, false},
        {"Abc", false, true, false, false, false},  {"имя", false, false, false, false, false},
        {"007", false, true, true, true, false},    {"-7", false, true, false, false, false},
        {"1.2", false, true, false, false, true},   {"1.2.643.100", false, true, false, false, true},
        {".1.2", false, true, false, false, false}, {"1.2.", false, true, false, false, false},
        {"1..2", false, true, false, false, false}, {"1.a", false, true, false, false, false},
        {".", false, true, false, false, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.s);
        EXPECT_EQ(string_is_empty(row.s), row.empty);
        EXPECT_EQ(string_is_ansi(row.s), row.ansi);
        EXPECT_EQ(string_is_num(row.s), row.num);
        EXPECT_EQ(string_is_id(row.s), row.id);
        EXPECT_EQ(string_is_oid(row.s), row.oid);
    }
    EXPECT_TRUE(string_is_empty(nullptr));
    EXPECT_FALSE(string_is_num(nullptr));
}

TEST(AddressSyntax, ReadsNumbersUpToTheLargestInt) {
    int value = -1;
    for (const char* refused : {static_cast<const char*>(nullptr), "", "-1", " 1", "1x"})
        EXPECT_FALSE(string_to_int(refused, &value));
    EXPECT_EQ(value, -1);
    EXPECT_TRUE(string_to_int("0002147483647", &value));
    EXPECT_EQ(value, 2147483647);
    try {
        string_to_int("2147483648", &value);
        FAIL() << "no exception";
    } catch (const std::out_of_range& e) {
        EXPECT_STREQ(e.what(), "stoi");
    }
}

TEST(AddressSyntax, DumpsBytesInLinesOfSixteen) {
    const std::string line = "00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F \n";
    const uint8_t bytes[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0xAB, 0xFF};
    EXPECT_EQ(sprintf_buf(nullptr, 0), "\n");
    EXPECT_EQ(sprintf_buf(bytes, 1), "00 \n");
    EXPECT_EQ(sprintf_buf(bytes, 16), line);
    EXPECT_EQ(sprintf_buf(bytes, 18), line + "AB FF \n");
}
