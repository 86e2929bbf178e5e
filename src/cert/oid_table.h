// The table of object identifiers: gives the body of an identifier its names, and gives code row numbers to test for.
// Constant data without an index: a body is looked for from the first row on, since a certificate has few of them.
// Beside it the names of the universal tags of ASN.1. Used by the DER reader and by MGCert. Any thread may call these.
#pragma once

#include <cstddef>
#include <cstdint>

struct DER_S_OBJ_ID;

// One row. A row that has gone is empty: no names, nid 0, length 0; its number is never given to another identifier.
struct OidRow {
    const char* short_name = nullptr; // what a name's text shows before its "="
    const char* long_name = nullptr;
    int32_t nid = 0;               // the row's own number
    int32_t length = 0;            // bytes in data; 0 also for what has a name but no identifier
    const uint8_t* data = nullptr; // the body of the DER encoding, without tag and length
};

constexpr size_t oid_row_count = 1090;
extern const OidRow oid_table[oid_row_count];

// The rows that code tests for.
enum OidRowNumber : int32_t {
    oid_pkcs7_data = 21,
    oid_signing_time = 52,
    oid_subject_key_id = 82,
    oid_key_usage = 83,
    oid_key_period = 84,
    oid_alt_name = 85,
    oid_basic_constraints = 87,
    oid_policies = 89,
    oid_ext_key_usage = 126,
    oid_extension_request = 172,
    oid_prev_cert_link = 923,
};

// The names of the first row with this body, of whole length: no prefix matches. A length of 0 finds row 0.
bool get_name_oid(const uint8_t* body, uint32_t length, const char*& short_name, const char*& long_name);
// Whether oid.data and oid.length are the body of the row. False for a number that no row has.
bool compare_nid_oid(int32_t nid, const DER_S_OBJ_ID& oid);
// The body of the row; it belongs to the table. False for a number that no row has.
bool get_nid_oid(int32_t nid, const uint8_t*& body, uint32_t& length);

// "SEQUENCE" for 16; "undefined" above 30.
const char* get_tag_name(uint32_t tag);
