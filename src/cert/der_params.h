// The values of certificate extensions, read by kind into records. A kind names what a value is, not where it lies;
// MGCert knows which extension holds which. The caller gives an empty record, and owns it and what it then holds;
// pointers go into the walked buffer. After an error the record holds what was read so far. Any thread may use
// these, on objects of its own.
#pragma once

#include "der_reader.h"

// Kind of value, and the record that it fills.
enum DerKind : uint32_t {
    der_kind_key_usage = 1,         // DER_S_KEY_USAGE
    der_kind_key_period = 2,        // DER_S_KEY_PERIOD
    der_kind_ext_key_usage = 3,     // DER_S_OID_LIST
    der_kind_policies = 4,          // DER_S_OID_LIST
    der_kind_basic_constraints = 5, // DER_S_BASIC_CONSTRAINTS
    der_kind_alt_names = 6,         // DER_S_ALT_NAMES
    der_kind_other_name = 7,        // DER_S_ALT_NAMES, its next `other`
    der_kind_context_blob = 8,      // DER_S_BLOB, with present
    der_kind_extensions = 9,        // DER_S_EXTENSION_LIST
    der_kind_octet_string = 10,     // DER_S_BLOB
    der_kind_prev_cert_link = 11,   // DER_S_PREV_CERT_LINK
};

// As a little-endian number the first content byte is the low one.
struct DER_S_KEY_USAGE {
    uint8_t bits[4] = {};
    uint32_t length = 0; // how many of them are set
    uint8_t bit_shift = 0;
};

struct DER_S_KEY_PERIOD {
    DER_S_UTC_TIME begin;
    DER_S_UTC_TIME end;
    bool has_begin = false;
    bool has_end = false;
};

// Lists: items has room for what the value was found to hold, the first `count` of them are filled.
struct DER_S_OID_LIST {
    std::vector<DER_S_OBJ_ID> items;
    uint32_t count = 0;
    bool allocated = false; // room was made, once, by the first SEQUENCE
};

struct DER_S_BASIC_CONSTRAINTS {
    bool has_ca = false;
    bool is_ca = false;
    int8_t path_length = 0;
};

struct DER_S_ALT_NAME {
    const uint8_t* value = nullptr;
    uint32_t length = 0;
    DerText text; // zero-terminated copy; of an address the dotted form
};

struct DER_S_OTHER_NAME {
    DER_S_OBJ_ID type;
    const uint8_t* value = nullptr;
    uint32_t length = 0;
    DerText text; // zero-terminated copy; null if the name has no text
};

template <class Name>
struct DerNameList {
    bool present = false; // the value holds names of this sort
    std::vector<Name> items;
    uint32_t count = 0;
};

struct DER_S_ALT_NAMES {
    DerNameList<DER_S_ALT_NAME> email;
    DerNameList<DER_S_ALT_NAME> dns;
    DerNameList<DER_S_ALT_NAME> url;
    DerNameList<DER_S_ALT_NAME> ip;
    DerNameList<DER_S_OTHER_NAME> other;
    const uint8_t* counted_to = nullptr; // end of the bytes that were searched for names
};

struct DER_S_EXTENSION {
    DER_S_OBJ_ID id;
    bool has_critical = false;
    bool critical = false;
    const uint8_t* value = nullptr;
    uint32_t value_length = 0;
};

struct DER_S_EXTENSION_LIST {
    std::vector<DER_S_EXTENSION> items;
    uint32_t count = 0;
};

struct DER_S_BLOB {
    const uint8_t* data = nullptr;
    uint32_t length = 0;
    bool present = false;
};

struct DER_S_PREV_CERT_LINK {
    const uint8_t* key_id = nullptr;
    uint32_t key_id_length = 0;
    bool has_key_id = false;
    DER_S_FULL_NAME issuer;
    bool has_issuer = false;
    const uint8_t* serial = nullptr;
    uint32_t serial_length = 0;
    bool has_serial = false;
};

// Walks the buffer and offers each item to get_der_param until that is done. Target is the record of the kind.
uint32_t parse_der_struct(void* target, const uint8_t* buffer, uint32_t size, uint32_t kind);
// Takes the item at hand if it belongs to the value: 0 to go on, der_end when nothing more is wanted, or an error. May
// step the cursor further.
uint32_t get_der_param(void* target, DER_S_POINTER& cursor, DER_S_ENCODING& item, uint32_t kind);
