// One reader a kind of value. An item that does not fit is passed over.
#include "cert/der_params.h"

#include <cstdio>

using namespace vorma;

namespace {

// KeyUsage: BIT STRING
uint32_t get_key_usage(DER_S_KEY_USAGE& usage, const DER_S_ENCODING& item) {
    if (!is_universal(item, der_bit_string)) return der_ok;
    if (item.length > sizeof usage.bits) return der_key_usage_size;
    set_mem_val(usage.bits, 0, sizeof usage.bits);
    copy_byte(usage.bits, item.value, item.length);
    usage.length = item.length;
    usage.bit_shift = static_cast<uint8_t>(item.bit_shift);
    der_null_bit_shift(item.bit_shift, usage.bits, usage.length);
    return der_end;
}

// PrivateKeyUsagePeriod: { [0] GeneralizedTime, [1] GeneralizedTime }, each "20YYMMDDhhmmssZ"
uint32_t get_period_time(DER_S_UTC_TIME& time, bool& present, const DER_S_ENCODING& item) {
    if (item.length != 15) return der_key_period_size;
    const uint32_t code = der_get_utc_time(time, item.value + 2, item.length - 2);
    present = code == der_ok;
    return code;
}

uint32_t get_key_period(DER_S_KEY_PERIOD& period, const DER_S_ENCODING& item) {
    if (is_context(item, 0, 0) && !period.has_begin) return get_period_time(period.begin, period.has_begin, item);
    if (!is_context(item, 0, 1) || period.has_end) return der_ok;
    const uint32_t code = get_period_time(period.end, period.has_end, item);
    return code == der_ok ? der_end : code;
}

// A SEQUENCE with identifiers at any depth.
uint32_t get_oid_list(DER_S_OID_LIST& list, const DER_S_POINTER& cursor, const DER_S_ENCODING& item) {
    if (is_sequence(item) && !list.allocated) {
        uint32_t room = 0;
        const uint32_t code =
            der_number_tag(item.value, der_inner_size(cursor, item), der_universal, 0, der_object_id, room, false);
        if (code != der_ok) return code;
        list.items.resize(room);
        list.allocated = true;
        return der_ok;
    }
    if (!is_universal(item, der_object_id) || list.count == list.items.size()) return der_ok;
    const uint32_t code = der_get_obj_id(list.items[list.count], item);
    if (code == der_ok) list.count++;
    return code;
}

// BasicConstraints: SEQUENCE { BOOLEAN, INTEGER }
uint32_t get_basic_constraints(DER_S_BASIC_CONSTRAINTS& constraints, const DER_S_ENCODING& item) {
    if (is_universal(item, der_boolean)) {
        constraints.has_ca = true;
        constraints.is_ca = item.length > 0 && item.value[0] != 0;
    }
    if (!is_universal(item, der_integer) || item.length != 1 || !constraints.has_ca) return der_ok;
    constraints.path_length = static_cast<int8_t>(item.value[0]);
    return der_end;
}

// Makes room for the names of one sort that stand in a SEQUENCE.
template <class Name>
uint32_t make_room(DerNameList<Name>& names, const DER_S_POINTER& cursor, const DER_S_ENCODING& sequence,
                   uint8_t constructed, uint8_t tag) {
    if (!names.items.empty()) return der_ok;
    uint32_t room = 0;
    const uint32_t code = der_number_tag(sequence.value, der_inner_size(cursor, sequence), der_context, constructed,
                                         tag, room, constructed != 0);
    if (code != der_ok) return code;
    names.items.resize(room);
    names.present = room > 0;
    return der_ok;
}

// What lies within a SEQUENCE that was searched is not searched again: nesting costs no time.
uint32_t make_room_for_names(DER_S_ALT_NAMES& names, const DER_S_POINTER& cursor, const DER_S_ENCODING& item) {
    if (names.counted_to && item.value < names.counted_to) return der_ok;
    names.counted_to = item.value + der_inner_size(cursor, item);
    if (uint32_t code = make_room(names.email, cursor, item, 0, 1)) return code;
    if (uint32_t code = make_room(names.dns, cursor, item, 0, 2)) return code;
    if (uint32_t code = make_room(names.url, cursor, item, 0, 6)) return code;
    if (uint32_t code = make_room(names.ip, cursor, item, 0, 7)) return code;
    return make_room(names.other, cursor, item, 1, 0);
}

// Takes a name if there is room for it.
void add_name(DerNameList<DER_S_ALT_NAME>& names, const DER_S_ENCODING& item) {
    if (names.count == names.items.size()) return;
    DER_S_ALT_NAME& name = names.items[names.count++];
    name.value = item.value;
    name.length = item.length;
    name.text = str_alloc_copy(item.value, item.length);
}

void add_address(DerNameList<DER_S_ALT_NAME>& names, const DER_S_ENCODING& item) {
    if (item.length != 4 || names.count == names.items.size()) return;
    char text[sizeof "255.255.255.255"];
    const uint8_t* ip = item.value;
    const int length = std::snprintf(text, sizeof text, "%d.%d.%d.%d", ip[0], ip[1], ip[2], ip[3]);
    DER_S_ALT_NAME& name = names.items[names.count++];
    name.value = ip;
    name.length = item.length;
    name.text = str_alloc_copy(reinterpret_cast<const uint8_t*>(text), static_cast<size_t>(length));
}

// OtherName: [0] { OBJECT IDENTIFIER, [0] string }
uint32_t add_other_name(DER_S_ALT_NAMES& names, DER_S_POINTER& cursor, const DER_S_ENCODING& item) {
    const uint32_t inner = der_inner_size(cursor, item);
    if (uint32_t code = parse_der_struct(&names, item.value, inner, der_kind_other_name)) return code;
    if (uint32_t code = der_parsing_skip(cursor, item)) return code;
    if (names.other.count < names.other.items.size()) names.other.count++;
    return der_ok;
}

uint32_t get_other_name(DER_S_ALT_NAMES& names, const DER_S_ENCODING& item) {
    if (names.other.count == names.other.items.size()) return der_ok;
    DER_S_OTHER_NAME& name = names.other.items[names.other.count];
    if (is_universal(item, der_object_id)) return der_get_obj_id(name.type, item);
    if (!is_text(item)) return der_ok;
    name.value = item.value;
    name.length = item.length;
    name.text = str_alloc_copy(item.value, item.length);
    return der_end;
}

// GeneralNames: SEQUENCE of [0] OtherName, [1] email, [2] DNS name, [6] URL, [7] address, and others
uint32_t get_alt_names(DER_S_ALT_NAMES& names, DER_S_POINTER& cursor, const DER_S_ENCODING& item) {
    if (is_sequence(item)) return make_room_for_names(names, cursor, item);
    if (is_context(item, 1, 0)) return add_other_name(names, cursor, item);
    if (is_context(item, 0, 1)) add_name(names.email, item);
    if (is_context(item, 0, 2)) add_name(names.dns, item);
    if (is_context(item, 0, 6)) add_name(names.url, item);
    if (is_context(item, 0, 7)) add_address(names.ip, item);
    return der_ok;
}

void take_value(DER_S_BLOB& blob, const DER_S_ENCODING& item) {
    blob.data = item.value;
    blob.length = item.length;
}

uint32_t get_context_blob(DER_S_BLOB& blob, const DER_S_ENCODING& item) {
    if (!is_context(item, 0, 2)) return der_ok;
    take_value(blob, item);
    blob.present = true;
    return der_end;
}

uint32_t get_octet_string(DER_S_BLOB& blob, const DER_S_ENCODING& item) {
    if (!is_universal(item, der_octet_string)) return der_ok;
    take_value(blob, item);
    return der_end;
}

// Extension: OBJECT IDENTIFIER, BOOLEAN if critical, OCTET STRING
uint32_t get_extension(DER_S_EXTENSION_LIST& list, DER_S_POINTER& cursor, DER_S_ENCODING& item) {
    if (!is_universal(item, der_object_id)) return der_ok;
    if (list.count == list.items.size()) list.items.emplace_back();
    DER_S_EXTENSION& extension = list.items[list.count];
    if (uint32_t code = der_get_obj_id(extension.id, item)) return code;
    if (uint32_t code = der_parsing_need(cursor, item, der_nothing_after_oid)) return code;
    if (is_universal(item, der_boolean)) {
        extension.has_critical = true;
        extension.critical = item.length > 0 && item.value[0] != 0;
        if (uint32_t code = der_parsing_need(cursor, item, der_nothing_after_critical)) return code;
    }
    if (!is_universal(item, der_octet_string)) return der_no_extension_value;
    extension.value = item.value;
    extension.value_length = item.length;
    list.count++;
    return der_ok;
}

// The issuer of the link: [1] { [4] { SEQUENCE name } }. Leaves in item what was met instead, if something was.
uint32_t get_link_issuer(DER_S_PREV_CERT_LINK& link, DER_S_POINTER& cursor, DER_S_ENCODING& item) {
    if (uint32_t code = der_parsing_need(cursor, item, der_no_link_section)) return code;
    if (!is_context(item, 1, 4)) return der_ok;
    if (uint32_t code = der_parsing_need(cursor, item, der_no_link_issuer)) return code;
    if (!is_sequence(item) || link.has_issuer) return der_ok;
    const uint32_t code = der_get_name(link.issuer, item.value, der_inner_size(cursor, item));
    link.has_issuer = code == der_ok;
    return code;
}

// Link to the previous certificate: { [0] key, [1] { [4] { SEQUENCE name } }, [2] serial number }
uint32_t get_prev_cert_link(DER_S_PREV_CERT_LINK& link, DER_S_POINTER& cursor, DER_S_ENCODING& item) {
    if (is_context(item, 0, 0)) {
        link.key_id = item.value;
        link.key_id_length = item.length;
        link.has_key_id = true;
        return der_ok;
    }
    if (is_context(item, 1, 1))
        if (uint32_t code = get_link_issuer(link, cursor, item)) return code;
    if (!is_context(item, 0, 2)) return der_ok;
    link.serial = item.value;
    link.serial_length = item.length;
    link.has_serial = true;
    return der_end;
}

template <class Record>
Record& as(void* target) {
    return *static_cast<Record*>(target);
}

} // namespace

uint32_t parse_der_struct(void* target, const uint8_t* buffer, uint32_t size, uint32_t kind) {
    DER_S_POINTER cursor;
    der_init_parsing(cursor, buffer, size);
    return der_walk(cursor, [&](DER_S_ENCODING& item) { return get_der_param(target, cursor, item, kind); });
}

uint32_t get_der_param(void* target, DER_S_POINTER& cursor, DER_S_ENCODING& item, uint32_t kind) {
    switch (kind) {
    case der_kind_key_usage:
        return get_key_usage(as<DER_S_KEY_USAGE>(target), item);
    case der_kind_key_period:
        return get_key_period(as<DER_S_KEY_PERIOD>(target), item);
    case der_kind_ext_key_usage:
    case der_kind_policies:
        return get_oid_list(as<DER_S_OID_LIST>(target), cursor, item);
    case der_kind_basic_constraints:
        return get_basic_constraints(as<DER_S_BASIC_CONSTRAINTS>(target), item);
    case der_kind_alt_names:
        return get_alt_names(as<DER_S_ALT_NAMES>(target), cursor, item);
    case der_kind_other_name:
        return get_other_name(as<DER_S_ALT_NAMES>(target), item);
    case der_kind_context_blob:
        return get_context_blob(as<DER_S_BLOB>(target), item);
    case der_kind_extensions:
        return get_extension(as<DER_S_EXTENSION_LIST>(target), cursor, item);
    case der_kind_octet_string:
        return get_octet_string(as<DER_S_BLOB>(target), item);
    case der_kind_prev_cert_link:
        return get_prev_cert_link(as<DER_S_PREV_CERT_LINK>(target), cursor, item);
    default:
        return der_unknown_kind;
    }
}
