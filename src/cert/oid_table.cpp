// Lookups in the table of object identifiers, and the names of the universal tags.
#include "cert/oid_table.h"

#include "cert/der_memory.h"
#include "cert/der_reader.h"

#include <iterator>

using namespace vorma;

namespace {

const char* const der_name_tag[] = {
    "End-of-Content",    "BOOLEAN",           "INTEGER",       "BIT STRING",     "OCTET STRING",    "NULL",
    "OBJECT IDENTIFIER", "Object Descriptor", "EXTERNAL",      "REAL",           "ENUMERATED",      "EMBEDDED PDV",
    "UTF8String",        "RELATIVE-OID",      "Reserved",      "Reserved",       "SEQUENCE",        "SET",
    "NumericString",     "PrintableString",   "T61String",     "VideotexString", "IA5String",       "UTCTime",
    "GeneralizedTime",   "GraphicString",     "VisibleString", "GeneralString",  "UniversalString", "CHARACTER STRING",
    "BMPString",
};

bool has_body(const OidRow& row, const uint8_t* body, uint32_t length) {
    return static_cast<uint32_t>(row.length) == length && memory_compare(row.data, body, length);
}

// The first row of that number, null if there is none: a row's number is its place.
const OidRow* row_of(int32_t nid) {
    if (nid < 0 || static_cast<size_t>(nid) >= oid_row_count || oid_table[nid].nid != nid) return nullptr;
    return &oid_table[nid];
}

} // namespace

bool get_name_oid(const uint8_t* body, uint32_t length, const char*& short_name, const char*& long_name) {
    for (const OidRow& row : oid_table) {
        if (!has_body(row, body, length)) continue;
        short_name = row.short_name;
        long_name = row.long_name;
        return true;
    }
    return false;
}

bool compare_nid_oid(int32_t nid, const DER_S_OBJ_ID& oid) {
    const OidRow* const row = row_of(nid);
    return row && has_body(*row, oid.data, oid.length);
}

bool get_nid_oid(int32_t nid, const uint8_t*& body, uint32_t& length) {
    const OidRow* const row = row_of(nid);
    if (!row) return false;
    body = row->data;
    length = static_cast<uint32_t>(row->length);
    return true;
}

const char* get_tag_name(uint32_t tag) {
    return tag < std::size(der_name_tag) ? der_name_tag[tag] : "undefined";
}
