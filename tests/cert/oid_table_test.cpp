#include "cert/oid_table.h"

#include "cert/der_reader.h"

#include <gtest/gtest.h>
#include <openssl/objects.h>
#include <set>
#include <string>

namespace {

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
