#include "cert/der_bytes.h"
#include "cert/der_params.h"
#include "cert/der_reader.h"
#include "cert/oid_table.h"

#include <gtest/gtest.h>

#include <openssl/objects.h>
#include <set>
#include <string>

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
        {"04", der_end, 1, 0}, // a lone identifier byte is the end
        {"04 00", der_ok, 2, 0},
        {"04 84 00 00 00 01 aa", der_ok, 7, 1},
        {"30 05", der_ok, 2, 5}, // a constructed length is not tested
        {"03 02 07 80", der_ok, 4, 1},
        {"04 84 ff ff ff ff 00", 0xeeee0001, 6, 0xffffffff},
        {"30 80 00 00", 0xeeee0002, 2, 0x80},
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

TEST(DerReader, ObjectIdentifiers) {
    const struct {
        Bytes body;
        uint32_t code;
        std::string text;
        const char* known;
    } rows[] = {
        {hex("2a 86 48"), der_ok, "1.2.840", "ISO-US"},
        {hex("50"), der_ok, "2.0", nullptr},
        {hex("55 04 03 00"), der_ok, "2.5.4.3.0", nullptr},   // the beginning is known
        {hex("2a 90 80 80 80 00"), der_ok, "1.2.0", nullptr}, // 2^32
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
    for (const auto& [value, code] : {std::pair<const char*, uint32_t>("990131235958?", der_ok),
                                      {"2101312359Z", 0xeeee0009},
                                      {"2101:1235959Z", 0xeeee000a}}) {
        DER_S_UTC_TIME time;
        const Bytes bytes = text(value);
        EXPECT_EQ(der_get_utc_time(time, bytes.data(), size_of(bytes)), code) << value;
    }
}

Bytes part(const char* oid, uint8_t tag, const std::string& value) {
    return item(0x31, item(0x30, join({item(0x06, hex(oid)), item(tag, text(value))})));
}

TEST(DerReader, NamesThatAreRefused) {
    for (const auto& [name, code] : {std::pair(part("550403", 0x1e, "ab"), 0xeeee000c), // BMPString
                                     {hex("30 05 06 03 550403"), 0xeeee001d},
                                     {hex("06 03 550403 0c 09 61"), 0xeeee0001}}) {
        DER_S_FULL_NAME read;
        EXPECT_EQ(der_get_name(read, name.data(), size_of(name)), code);
        EXPECT_EQ(read.text, "");
    }
}

// What of the values is refused and where a walk ends; values that are right are held against OpenSSL elsewhere.
TEST(DerReader, KindsOfValues) {
    const auto read = [](auto&& record, uint32_t kind, const Bytes& value) {
        return parse_der_struct(&record, value.data(), size_of(value), kind);
    };
    EXPECT_EQ(read(DER_S_KEY_USAGE(), der_kind_key_usage, hex("03 06 00 01 02 03 04 05")), 0xeeee000f);
    EXPECT_EQ(read(DER_S_KEY_PERIOD(), der_kind_key_period, hex("80 02 32 30")), 0xeeee0021);
    EXPECT_EQ(read(DER_S_EXTENSION_LIST(), der_kind_extensions, hex("06 01 55 05 00")), 0xeeee001f);
    EXPECT_EQ(read(DER_S_PREV_CERT_LINK(), der_kind_prev_cert_link, hex("a1 02 a4 00")), 0xeeee002c);

    // Names for which no room was made are passed over.
    DER_S_ALT_NAMES names;
    const Bytes loose = hex("82 01 61 30 06 82 01 62 87 01 01 82 01 63 87 04 01 02 03 04 87 04 01 02 03 04");
    EXPECT_EQ(read(names, der_kind_alt_names, loose), der_ok);
    ASSERT_EQ(names.dns.count, 1u);
    EXPECT_STREQ(names.dns.items[0].text.get(), "b");
    EXPECT_EQ(names.ip.count, 1u) << "room was made for the address of a wrong length";

    // [0] key, [1] { [4] { name } }, [2] serial
    DER_S_PREV_CERT_LINK link;
    const Bytes name = item(0x30, part("550403", 0x0c, "x"));
    const Bytes value = item(0x30, join({hex("80 02 0102"), item(0xa1, item(0xa4, name)), hex("82 01 07 82 01 08")}));
    EXPECT_EQ(read(link, der_kind_prev_cert_link, value), der_ok);
    EXPECT_TRUE(link.has_key_id && link.key_id_length == 2 && link.has_issuer && link.has_serial && *link.serial == 7);
    EXPECT_EQ(link.issuer.text, "CN=x");
}

std::string body_of(const OidRow& row) {
    return {row.data, row.data + row.length};
}

// Rows that OpenSSL doesn't have, or has otherwise.
TEST(OidTable, FindsTheRowsThatCount) {
    const struct {
        int32_t row;
        const char *short_name, *long_name, *oid;
    } rows[] = {
        {48, "Email", "emailAddress", "1.2.840.113549.1.9.1"},
        {379, "ORG", "org", "1.3"}, // the lower of two rows with one body
        {oid_prev_cert_link, "prevCertLink", "Link to previous certificate", "1.3.6.1.4.1.32473.2.3.5"},
        {991, "OGRN", "OGRN", "1.2.643.100.1"}, // not row 990, 1.2.643.100
        {1089, "identificationKind", "Identification Kind", "1.2.643.100.114"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.short_name);
        DER_S_OBJ_ID oid;
        ASSERT_TRUE(get_nid_oid(row.row, oid.data, oid.length));
        ASSERT_EQ(der_get_obj_id(oid), der_ok);
        EXPECT_STREQ(oid.short_name, row.short_name);
        EXPECT_STREQ(oid.long_name, row.long_name);
        EXPECT_EQ(oid.oid_text, row.oid);
    }
    DER_S_OBJ_ID nothing;
    EXPECT_FALSE(get_nid_oid(846, nothing.data, nothing.length));
}

TEST(OidTable, AgreesWithOpenssl) {
    const auto body_there = [](int nid) {
        const ASN1_OBJECT* object = OBJ_nid2obj(nid);
        const uint8_t* data = OBJ_get0_data(object);
        return std::string(data, data + OBJ_length(object));
    };
    // Rows where this table goes its own way.
    const std::set<int> own = {48, 102, 118, 124, 350, 393, 404, 511, 772, 774, 775};
    for (size_t i = 0; i < oid_row_count; i++) EXPECT_EQ(oid_table[i].nid, oid_table[i].short_name ? i : 0);
    for (int i = 0; i <= 804; i++) {
        if (own.contains(i)) continue;
        EXPECT_STREQ(oid_table[i].short_name, OBJ_nid2sn(i));
        EXPECT_STREQ(oid_table[i].long_name, OBJ_nid2ln(i));
        EXPECT_EQ(body_of(oid_table[i]), body_there(i)) << i;
    }
    // Its later entries have other numbers here; names and bodies are the same.
    for (size_t i = 805; i <= 1067; i++) {
        if ((i > 862 && i < 1022) || i == 846) continue;
        const int nid = OBJ_sn2nid(oid_table[i].short_name);
        ASSERT_NE(nid, NID_undef) << oid_table[i].short_name;
        EXPECT_EQ(body_of(oid_table[i]), body_there(nid)) << i;
    }
}

} // namespace
