#include "cert/der_params.h"

#include "cert/der_bytes.h"

#include <gtest/gtest.h>

namespace {

uint32_t size_of(const Bytes& bytes) {
    return static_cast<uint32_t>(bytes.size());
}

TEST(DerReader, StepsAndRefusesSteps) {
    const struct {
        const char* bytes;
        uint32_t code; // of the first step
        uint32_t used; // by it
        uint32_t length;
    } rows[] = {
        {"", der_end, 0, 0},
        {"04", der_end, 1, 0}, // a lone identifier byte is the end
        {"04 00", der_ok, 2, 0},
        {"04 02 aa bb cc", der_ok, 4, 2},
        {"04 81 01 aa", der_ok, 4, 1},
        {"04 84 00 00 00 01 aa", der_ok, 7, 1},
        {"30 05", der_ok, 2, 5}, // a constructed length is not tested
        {"30 84 ff ff ff ff", der_ok, 6, 0xffffffff},
        {"03 02 07 80", der_ok, 4, 1},
        {"23 00", der_ok, 2, 0}, // bits in pieces are no BIT STRING to read
        {"04 05 00", 0xeeee0001, 2, 5},
        {"04 84 ff ff ff ff 00", 0xeeee0001, 6, 0xffffffff},
        {"30 80 00 00", 0xeeee0002, 2, 0x80},
        {"30 85 00 00 00 00 01", 0xeeee0003, 2, 0x85},
        {"04 82 01", 0xeeee0004, 2, 0x82},
        {"03 00", 0xeeee0005, 2, 0},
        {"03 02 08 00", 0xeeee0006, 4, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.bytes);
        const Bytes bytes = hex(row.bytes);
        DER_S_POINTER cursor;
        DER_S_ENCODING item;
        der_init_parsing(cursor, bytes.data(), size_of(bytes));
        EXPECT_EQ(der_parsing_next(cursor, item), row.code);
        EXPECT_EQ(cursor.used, row.used);
        EXPECT_EQ(cursor.data + cursor.left, bytes.data() + bytes.size());
        EXPECT_EQ(item.length, row.length);
    }
}

TEST(DerReader, WalksFlatAndSkips) {
    // SEQUENCE { [0] { INTEGER, [0] {} }, INTEGER }, INTEGER
    const Bytes bytes = hex("30 0a a0 05 02 01 05 a0 00 02 01 06 02 01 07");
    uint32_t count = 0;
    EXPECT_EQ(der_number_tag(bytes.data(), size_of(bytes), der_universal, 0, der_integer, count, false), der_ok);
    EXPECT_EQ(count, 3u);
    EXPECT_EQ(der_number_tag(bytes.data(), size_of(bytes), der_context, 1, 0, count, false), der_ok);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(der_number_tag(bytes.data(), size_of(bytes), der_context, 1, 0, count, true), der_ok);
    EXPECT_EQ(count, 1u);
    const Bytes cut = hex("30 05 02 01 05");
    EXPECT_EQ(der_number_tag(cut.data(), size_of(cut), der_universal, 1, der_sequence, count, true), 0xeeee0019);
    EXPECT_EQ(der_number_tag(cut.data(), size_of(cut), der_universal, 0, der_integer, count, true), 0xeeee001a);
}

TEST(DerReader, ObjectIdentifiers) {
    const struct {
        Bytes body;
        uint32_t code;
        std::string text;
        const char* known;
    } rows[] = {
        {hex("2a 86 48"), der_ok, "1.2.840", "ISO-US"},
        {hex("55"), der_ok, "2.5", "X500"},
        {hex("4f"), der_ok, "1.39", nullptr},
        {hex("27"), der_ok, "0.39", nullptr},
        {hex("50"), der_ok, "2.0", nullptr},
        {hex("55 04 03 00"), der_ok, "2.5.4.3.0", nullptr},    // the beginning is known
        {hex("2a 90 80 80 80 00"), der_ok, "1.2.0", nullptr},  // 2^32
        {hex("2a 8f ff ff ff 7f"), der_ok, "1.2.-1", nullptr}, // 2^32 - 1
        {hex(""), 0xeeee0007, "", nullptr},
        {hex("55 04 83"), 0xeeee0008, "", nullptr},
        {Bytes(256, 1), 0xeeee0008, "", nullptr},
    };
    DER_S_OBJ_ID oid; // the same for all: nothing is left of the one before
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text + " of " + std::to_string(row.body.size()));
        oid.data = row.body.data();
        oid.length = size_of(row.body);
        EXPECT_EQ(der_get_obj_id(oid), row.code);
        EXPECT_EQ(oid.oid_text, row.text);
        ASSERT_EQ(oid.known, row.known != nullptr);
        EXPECT_STREQ(oid.known ? oid.short_name : nullptr, row.known);
    }
    const Bytes longest(255, 1);
    oid.data = longest.data();
    oid.length = size_of(longest);
    EXPECT_EQ(der_get_obj_id(oid), der_ok);
    EXPECT_EQ(oid.arc_count, 256u);
}

TEST(DerReader, Times) {
    DER_S_UTC_TIME time;
    const auto read = [&](const char* value) {
        const Bytes bytes = text(value);
        return der_get_utc_time(time, bytes.data(), size_of(bytes));
    };
    EXPECT_EQ(read("990131235958?"), der_ok);
    EXPECT_EQ((std::vector{time.year, time.month, time.day, time.hour, time.minute, time.second}),
              (std::vector<uint32_t>{2099, 1, 31, 23, 59, 58}));
    EXPECT_EQ(read("2101312359Z"), 0xeeee0009);
    EXPECT_EQ(read("2101312359/9Z"), 0xeeee000a);
    EXPECT_EQ(read("2101:1235959Z"), 0xeeee000a);
}

Bytes part(const char* oid, uint8_t tag, const std::string& value) {
    return item(0x31, item(0x30, join({item(0x06, hex(oid)), item(tag, text(value))})));
}

TEST(DerReader, Names) {
    const Bytes c = part("550406", 0x13, "RU"), o = part("55040a", 0x0c, "Омега, \"А\""),
                cn = part("550403", 0x16, "a");
    const struct {
        const char* what;
        Bytes name;
        uint32_t code;
        std::string text;
    } rows[] = {
        {"last part first, nothing escaped", item(0x30, join({c, o, cn})), der_ok, "CN=a,O=Омега, \"А\",C=RU"},
        {"two in one set",
         item(0x31, join({item(0x30, hex("06 03 550403 12 01 31")), item(0x30, hex("06 03 55040b 0c 00"))})), der_ok,
         "OU=,CN=1"},
        {"unknown type", part("2a030405", 0x0c, "x"), der_ok, "1.2.3.4.5=x"},
        {"no parts", hex("30 00"), der_ok, ""},
        {"BMPString", join({c, part("550403", 0x1e, "ab")}), 0xeeee000c, ""},
        {"TeletexString", part("550403", 0x14, "ab"), 0xeeee000c, ""},
        {"string in pieces", hex("06 03 550403 2c 7f 61"), 0xeeee000c, ""},
        {"nothing behind the type", hex("30 05 06 03 550403"), 0xeeee001d, ""},
        {"bad type", part("550483", 0x0c, "x"), 0xeeee0008, ""},
        {"cut value", hex("06 03 550403 0c 09 61"), 0xeeee0001, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        DER_S_FULL_NAME name;
        EXPECT_EQ(der_get_name(name, row.name.data(), size_of(row.name)), row.code);
        EXPECT_EQ(name.text, row.text);
        EXPECT_EQ(name.has_text, !row.text.empty());
    }
}

// What of the values is refused and where a walk ends; values that are right are held against OpenSSL elsewhere.
TEST(DerReader, KindsOfValues) {
    const auto read = [](auto&& record, uint32_t kind, const Bytes& value) {
        return parse_der_struct(&record, value.data(), size_of(value), kind);
    };
    EXPECT_EQ(read(DER_S_KEY_USAGE(), der_kind_key_usage, hex("03 06 00 01 02 03 04 05")), 0xeeee000f);
    EXPECT_EQ(read(DER_S_KEY_PERIOD(), der_kind_key_period, hex("80 02 32 30")), 0xeeee0021);
    EXPECT_EQ(read(DER_S_OID_LIST(), der_kind_ext_key_usage, hex("30 02 06 00")), 0xeeee0007);
    EXPECT_EQ(read(DER_S_OID_LIST(), der_kind_policies, hex("30 05 06 03 55 04")), 0xeeee0001);
    EXPECT_EQ(read(DER_S_ALT_NAMES(), der_kind_alt_names, hex("30 04 a0 09 06 00")), 0xeeee0019);
    for (const auto& [value, code] : {std::pair("06 01 55", 0xeeee001d),
                                      {"06 01 55 01 01 ff", 0xeeee001e},
                                      {"06 01 55 01 01 ff 24 00", 0xeeee001f},
                                      {"06 01 55 05 00", 0xeeee001f}})
        EXPECT_EQ(read(DER_S_EXTENSION_LIST(), der_kind_extensions, hex(value)), code) << value;
    EXPECT_EQ(read(DER_S_PREV_CERT_LINK(), der_kind_prev_cert_link, hex("a1 00")), 0xeeee002b);
    EXPECT_EQ(read(DER_S_PREV_CERT_LINK(), der_kind_prev_cert_link, hex("a1 02 a4 00")), 0xeeee002c);
    EXPECT_EQ(read(DER_S_BLOB(), 12, hex("05 00")), 0xeeee0020);
    EXPECT_STREQ(err2str(0xeeee002d), "Нет описания этой ошибки");

    // Identifiers and names for which no room was made are passed over.
    DER_S_OID_LIST list;
    EXPECT_EQ(read(list, der_kind_ext_key_usage, hex("06 01 55 30 03 06 01 2a 06 01 2b")), der_ok);
    EXPECT_EQ(list.count, 1u);
    DER_S_ALT_NAMES names;
    const Bytes loose = hex("82 01 61 30 06 82 01 62 87 01 01 82 01 63 87 04 01 02 03 04 87 04 01 02 03 04");
    EXPECT_EQ(read(names, der_kind_alt_names, loose), der_ok);
    ASSERT_EQ(names.dns.count, 1u);
    EXPECT_STREQ(names.dns.items[0].text.get(), "b");
    EXPECT_EQ(names.ip.count, 1u) << "room was made for the address of a wrong length";

    // [0] key, [1] { [4] { name } }, [2] serial; a value in the wrong place is not the issuer.
    DER_S_PREV_CERT_LINK link, bare;
    const Bytes name = item(0x30, part("550403", 0x0c, "x"));
    const Bytes value = item(0x30, join({hex("80 02 0102"), item(0xa1, item(0xa4, name)), hex("82 01 07 82 01 08")}));
    EXPECT_EQ(read(link, der_kind_prev_cert_link, value), der_ok);
    EXPECT_TRUE(link.has_key_id && link.key_id_length == 2 && link.has_issuer && link.has_serial && *link.serial == 7);
    EXPECT_EQ(link.issuer.text, "CN=x");
    const Bytes other = join({item(0xa1, item(0xa3, name)), hex("a1 03 82 01 09")});
    EXPECT_EQ(read(bare, der_kind_prev_cert_link, other), der_ok);
    EXPECT_TRUE(bare.has_serial && !bare.has_issuer);
}

} // namespace
