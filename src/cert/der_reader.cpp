// The flat walk, and the values that certificates are made of.
#include "cert/der_reader.h"

#include "cert/oid_table.h"

#include <charconv>
#include <string_view>

using namespace vorma;

namespace {

// length: 0x00-0x7f | 0x80+n, n bytes with the most significant first, n from 1 to 4. left is above 0.
uint32_t read_length(DER_S_POINTER& cursor, uint32_t& length) {
    const auto next_byte = [&] {
        cursor.left--;
        cursor.used++;
        return *cursor.data++;
    };
    length = next_byte();
    if (length < 0x80) return der_ok;

    const uint32_t count = length & 0x7f;
    if (count == 0) return der_indefinite_length;
    if (count > 4) return der_length_above_4_bytes;
    if (count > cursor.left) return der_length_cut;
    length = 0;
    for (uint32_t i = 0; i < count; i++) length = length << 8 | next_byte();
    return der_ok;
}

// The leading byte of a BIT STRING tells how many bits of its last byte are unused.
uint32_t read_bit_shift(DER_S_ENCODING& item) {
    if (item.length == 0) return der_empty_bit_string;
    item.bit_shift = *item.value++;
    item.length--;
    return item.bit_shift < 8 ? der_ok : der_bit_shift_above_7;
}

std::string name_text(const DER_S_FULL_NAME& name) {
    std::string text;
    for (auto part = name.parts.rbegin(); part != name.parts.rend(); ++part) {
        if (!text.empty()) text += ',';
        text += part->type.known ? std::string_view(part->type.short_name) : part->type.oid_text;
        text += '=';
        text.append(reinterpret_cast<const char*>(part->value), part->value_length);
    }
    return text;
}

} // namespace

void der_init_parsing(DER_S_POINTER& cursor, const uint8_t* buffer, uint32_t size) {
    cursor = {buffer, size, 0};
}

uint32_t der_parsing_next(DER_S_POINTER& cursor, DER_S_ENCODING& item) {
    cursor.used = 0;
    if (cursor.left == 0) return der_end;

    const uint8_t identifier = *cursor.data++;
    cursor.left--;
    cursor.used = 1;
    item.tag_class = identifier >> 6;
    item.constructed = identifier >> 5 & 1;
    item.tag = identifier & 0x1f;
    item.bit_shift = 0;
    if (cursor.left == 0) return der_end;

    if (uint32_t code = read_length(cursor, item.length)) return code;
    item.value = cursor.data;
    if (item.constructed) return der_ok; // entered: its length is the caller's to judge

    if (item.length > cursor.left) return der_value_too_long;
    cursor.data += item.length;
    cursor.left -= item.length;
    cursor.used += item.length;
    return is_universal(item, der_bit_string) ? read_bit_shift(item) : der_ok;
}

uint32_t der_parsing_need(DER_S_POINTER& cursor, DER_S_ENCODING& item, uint32_t at_end) {
    const uint32_t code = der_parsing_next(cursor, item);
    return code == der_end ? at_end : code;
}

uint32_t der_parsing_skip(DER_S_POINTER& cursor, const DER_S_ENCODING& item) {
    if (!item.constructed) return der_skip_not_constructed;
    if (cursor.left < item.length) return der_skip_too_long;
    cursor.data += item.length;
    cursor.left -= item.length;
    cursor.used += item.length;
    return der_ok;
}

uint32_t der_number_tag(const uint8_t* buffer, uint32_t size, uint8_t tag_class, uint8_t constructed, uint8_t tag,
                        uint32_t& count, bool skip) {
    DER_S_POINTER cursor;
    der_init_parsing(cursor, buffer, size);
    count = 0;
    return der_walk(cursor, [&](const DER_S_ENCODING& item) -> uint32_t {
        if (item.tag_class != tag_class || item.constructed != constructed || item.tag != tag) return der_ok;
        count++;
        return skip ? der_parsing_skip(cursor, item) : der_ok;
    });
}

bool vorma::is_text(const DER_S_ENCODING& item) {
    return is_universal(item, der_utf8_string) || is_universal(item, der_numeric_string) ||
           is_universal(item, der_printable_string) || is_universal(item, der_ia5_string);
}

uint32_t der_get_utc_time(DER_S_UTC_TIME& time, const uint8_t* value, uint32_t length) {
    if (length != 13) return der_utc_time_size;
    for (uint32_t i = 0; i < 12; i++)
        if (value[i] < '0' || value[i] > '9') return der_utc_time_format;

    const auto pair = [&](uint32_t index) -> uint32_t {
        return (value[2 * index] - '0') * 10u + (value[2 * index + 1] - '0');
    };
    time = {2000 + pair(0), pair(1), pair(2), pair(3), pair(4), pair(5)};
    return der_ok;
}

void der_null_bit_shift(uint32_t shift, uint8_t* value, uint32_t length) {
    if (shift >= 1 && shift <= 7 && length > 0) value[length - 1] &= static_cast<uint8_t>(0xff << shift);
}

uint32_t der_get_name(DER_S_FULL_NAME& name, const uint8_t* buffer, uint32_t size) {
    uint32_t count = 0;
    if (uint32_t code = der_number_tag(buffer, size, der_universal, 0, der_object_id, count, false)) return code;
    name.parts.clear();
    name.parts.resize(count);
    name.part_count = count;
    if (count == 0) return der_ok;

    DER_S_POINTER cursor;
    der_init_parsing(cursor, buffer, size);
    auto part = name.parts.begin();
    const uint32_t code = der_walk(cursor, [&](DER_S_ENCODING& item) -> uint32_t {
        if (!is_universal(item, der_object_id)) return der_ok;
        if (uint32_t failed = der_get_obj_id(part->type, item)) return failed;
        if (uint32_t failed = der_parsing_need(cursor, item, der_nothing_after_oid)) return failed;
        if (!is_text(item)) return der_no_string;
        part->value = item.value;
        part->value_length = item.length;
        part->value_tag = item.tag;
        ++part;
        return der_ok;
    });
    if (code != der_ok || name.has_text) return code;
    name.text = name_text(name);
    name.has_text = true;
    return der_ok;
}

// body: byte (two arcs in one), then arcs in base 128: 0x80-0xff* 0x00-0x7f.
uint32_t der_get_obj_id(DER_S_OBJ_ID& oid) {
    mem_free_oid(oid);
    oid.known = false;
    if (oid.length == 0) return der_empty_oid;
    if (oid.length > 255) return der_bad_oid;
    oid.arcs = std::make_unique<uint32_t[]>(oid.length + 1);

    const uint8_t first = oid.data[0];
    oid.arcs[0] = first < 40 ? 0 : first < 80 ? 1 : 2;
    oid.arcs[1] = first - oid.arcs[0] * 40;
    oid.arc_count = 2;
    uint32_t arc = 0;
    for (uint32_t i = 1; i < oid.length; i++) {
        arc = arc << 7 | (oid.data[i] & 0x7f);
        if (oid.data[i] & 0x80) continue;
        oid.arcs[oid.arc_count++] = arc;
        arc = 0;
    }
    if (oid.length > 1 && oid.data[oid.length - 1] & 0x80) return der_bad_oid;

    oid.known = get_name_oid(oid.data, oid.length, oid.short_name, oid.long_name);
    oid.oid_text = get_oid_str(oid.arcs.get(), oid.arc_count);
    return der_ok;
}

uint32_t der_get_obj_id(DER_S_OBJ_ID& oid, const DER_S_ENCODING& item) {
    oid.data = item.value;
    oid.length = item.length;
    return der_get_obj_id(oid);
}

uint32_t compare_oid(const DER_S_ENCODING& item, const std::string& text, bool& equal) {
    DER_S_OBJ_ID oid;
    const uint32_t code = der_get_obj_id(oid, item);
    if (code == der_ok) equal = oid.oid_text.starts_with(text);
    return code;
}

std::string get_oid_str(const uint32_t* arcs, uint32_t count) {
    constexpr size_t most = sizeof "-2147483648."; // of one arc
    char usual[20 * most];
    std::string long_text;
    const bool fits = count * most <= sizeof usual;
    if (!fits) long_text.resize(count * most);
    char* const begin = fits ? usual : long_text.data();
    char* end = begin;
    for (uint32_t i = 0; i < count; i++) {
        if (i > 0) *end++ = '.';
        end = std::to_chars(end, end + most, static_cast<int32_t>(arcs[i])).ptr;
    }
    return {begin, end};
}

void mem_free_oid(DER_S_OBJ_ID& oid) {
    mem_free(oid.arcs);
    oid.arc_count = 0;
    oid.oid_text = {};
}
