// A small reader of ASN.1 DER for taking certificates apart: a flat walk that steps from item to item in document order
// and enters what is constructed instead of passing over it. No tree, no schema, no copies: items point into the
// caller's buffer, which must outlive them. Functions return a DerCode; nothing throws but a failed allocation. Any
// thread may use these, on objects of its own.
#pragma once

#include "der_errors.h"
#include "der_memory.h"

#include <cstdint>
#include <string>
#include <vector>

enum DerClass : uint8_t { der_universal = 0, der_context = 2 };

enum DerTag : uint8_t {
    der_boolean = 1,
    der_integer = 2,
    der_bit_string = 3,
    der_octet_string = 4,
    der_object_id = 6,
    der_utf8_string = 12,
    der_sequence = 16,
    der_set = 17,
    der_numeric_string = 18,
    der_printable_string = 19,
    der_ia5_string = 22,
    der_utc_time = 23,
};

// The cursor.
struct DER_S_POINTER {
    const uint8_t* data = nullptr; // next unread byte
    uint32_t left = 0;             // bytes left from there
    uint32_t used = 0;             // consumed by the last step: the header, and the value of a primitive item
};

// One item. The value of a primitive item lies within the buffer. A constructed one may claim to be longer than the
// buffer: der_inner_size tells how much of it there is.
struct DER_S_ENCODING {
    uint8_t tag_class = 0;
    uint8_t constructed = 0;        // 0 or 1
    uint8_t tag = 0;                // 0 to 31; the form for higher tags is not known, 31 stands for itself
    uint32_t length = 0;            // of the value; for a BIT STRING without its leading byte
    const uint8_t* value = nullptr; // for a BIT STRING behind its leading byte
    uint32_t bit_shift = 0;         // unused bits of a BIT STRING, 0 to 7
};

// One object identifier.
struct DER_S_OBJ_ID {
    const uint8_t* data = nullptr;    // the body, in the buffer
    uint32_t length = 0;              // of the body
    std::unique_ptr<uint32_t[]> arcs; // modulo 2^32
    uint32_t arc_count = 0;
    bool known = false;               // stands in oid_table
    const char* short_name = nullptr; // of the table's row; set when known
    const char* long_name = nullptr;  // likewise
    std::string oid_text;             // "1.2.840"
};

// A date as it stands: nothing is known of its zone, and the ranges are not checked.
struct DER_S_UTC_TIME {
    uint32_t year = 0; // in full
    uint32_t month = 0;
    uint32_t day = 0;
    uint32_t hour = 0;
    uint32_t minute = 0;
    uint32_t second = 0;
};

// One attribute of a distinguished name.
struct DER_S_NAME_PART {
    DER_S_OBJ_ID type;
    const uint8_t* value = nullptr; // in the buffer
    uint32_t value_length = 0;
    uint32_t value_tag = 0; // the string type
};

// A distinguished name.
struct DER_S_FULL_NAME {
    std::vector<DER_S_NAME_PART> parts; // in the order of the encoding
    uint32_t part_count = 0;
    bool has_text = false;
    std::string text; // "CN=…,O=…,C=…": the last part of the encoding first, bytes of the values untouched
};

// Walking.
void der_init_parsing(DER_S_POINTER& cursor, const uint8_t* buffer, uint32_t size);
// One step: der_end, an error, or 0 with the item filled. A constructed item is entered.
uint32_t der_parsing_next(DER_S_POINTER& cursor, DER_S_ENCODING& item);
// One step where the data must go on: their end gives `at_end`.
uint32_t der_parsing_need(DER_S_POINTER& cursor, DER_S_ENCODING& item, uint32_t at_end);
// Passes over the value of a constructed item that the last step entered.
uint32_t der_parsing_skip(DER_S_POINTER& cursor, const DER_S_ENCODING& item);
// Counts the items of this kind at any depth. With skip nothing inside of such an item is counted.
uint32_t der_number_tag(const uint8_t* buffer, uint32_t size, uint8_t tag_class, uint8_t constructed, uint8_t tag,
                        uint32_t& count, bool skip);

// Steps to the end of the data and calls visit(item) for each item; 0 from it goes on, der_end ends the walk well,
// an error ends it with that error.
template <class Visit>
uint32_t der_walk(DER_S_POINTER& cursor, Visit&& visit) {
    DER_S_ENCODING item;
    uint32_t code = der_ok;
    while (code == der_ok) {
        code = der_parsing_next(cursor, item);
        if (code == der_ok) code = visit(item);
    }
    return code == der_end ? der_ok : code;
}

// How many bytes of the constructed item that was just entered the buffer really holds.
inline uint32_t der_inner_size(const DER_S_POINTER& cursor, const DER_S_ENCODING& item) {
    return item.length < cursor.left ? item.length : cursor.left;
}

namespace vorma {

inline bool is_universal(const DER_S_ENCODING& item, uint8_t tag) {
    return item.tag_class == der_universal && !item.constructed && item.tag == tag;
}
inline bool is_context(const DER_S_ENCODING& item, uint8_t constructed, uint8_t tag) {
    return item.tag_class == der_context && item.constructed == constructed && item.tag == tag;
}
inline bool is_sequence(const DER_S_ENCODING& item) {
    return item.tag_class == der_universal && item.constructed && item.tag == der_sequence;
}
// A UTF8String, NumericString, PrintableString or IA5String: the strings that are read.
bool is_text(const DER_S_ENCODING& item);

} // namespace vorma

// Values.
// YYMMDDhhmmss and one byte that is not looked at; YY counts from 2000. The length must be 13.
uint32_t der_get_utc_time(DER_S_UTC_TIME& time, const uint8_t* value, uint32_t length);
// Clears the low `shift` bits of the last byte, for a shift of 1 to 7.
void der_null_bit_shift(uint32_t shift, uint8_t* value, uint32_t length);
// Reads a distinguished name. One without attributes is no error and has no text.
uint32_t der_get_name(DER_S_FULL_NAME& name, const uint8_t* buffer, uint32_t size);

// Object identifiers.
// Decodes oid.data and oid.length into the rest of the record. A body above 255 bytes gives der_bad_oid.
uint32_t der_get_obj_id(DER_S_OBJ_ID& oid);
// The same for a primitive item's value.
uint32_t der_get_obj_id(DER_S_OBJ_ID& oid, const DER_S_ENCODING& item);
// Whether the dotted form of a primitive item's value begins with the text.
uint32_t compare_oid(const DER_S_ENCODING& item, const std::string& text, bool& equal);
// "1.2.840"; an arc above 2^31 shows as a negative number.
std::string get_oid_str(const uint32_t* arcs, uint32_t count);
// Gives back the arcs and the text.
void mem_free_oid(DER_S_OBJ_ID& oid);
