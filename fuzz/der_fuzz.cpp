// The DER reader on any bytes: the first one chooses what they are read as.
#include "cert/der_params.h"
#include "cert/oid_table.h"

#include <cstdlib>

namespace {

// An item that was given lies within the buffer, and its bytes can be read.
void walk(const uint8_t* data, uint32_t size) {
    DER_S_POINTER cursor;
    der_init_parsing(cursor, data, size);
    uint32_t sum = 0;
    der_walk(cursor, [&](const DER_S_ENCODING& item) -> uint32_t {
        const uint32_t length = item.constructed ? der_inner_size(cursor, item) : item.length;
        if (item.value < data || item.value + length > data + size) std::abort();
        for (uint32_t i = 0; i < length && i < 16; i++) sum += item.value[i];
        if (length > 0) sum += item.value[length - 1];
        bool equal = false;
        if (is_universal(item, der_object_id)) compare_oid(item, "1.2.840", equal);
        return sum == 0xffffffff && equal ? der_end : der_ok;
    });
}

template <class Record>
void read_as(const uint8_t* data, uint32_t size, uint32_t kind) {
    Record record;
    const uint32_t code = parse_der_struct(&record, data, size, kind);
    if (code == der_end) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const uint32_t kind = *data++ % 16;
    const auto length = static_cast<uint32_t>(size - 1);
    walk(data, length);
    switch (kind) {
    case der_kind_key_usage:
        read_as<DER_S_KEY_USAGE>(data, length, kind);
        break;
    case der_kind_key_period:
        read_as<DER_S_KEY_PERIOD>(data, length, kind);
        break;
    case der_kind_ext_key_usage:
    case der_kind_policies:
        read_as<DER_S_OID_LIST>(data, length, kind);
        break;
    case der_kind_basic_constraints:
        read_as<DER_S_BASIC_CONSTRAINTS>(data, length, kind);
        break;
    case der_kind_alt_names:
    case der_kind_other_name:
        read_as<DER_S_ALT_NAMES>(data, length, kind);
        break;
    case der_kind_context_blob:
    case der_kind_octet_string:
        read_as<DER_S_BLOB>(data, length, kind);
        break;
    case der_kind_extensions:
        read_as<DER_S_EXTENSION_LIST>(data, length, kind);
        break;
    case der_kind_prev_cert_link:
        read_as<DER_S_PREV_CERT_LINK>(data, length, kind);
        break;
    case 12: {
        DER_S_OBJ_ID oid;
        oid.data = data;
        oid.length = length;
        der_get_obj_id(oid);
        break;
    }
    case 13: {
        DER_S_UTC_TIME time;
        der_get_utc_time(time, data, length);
        break;
    }
    default: {
        DER_S_FULL_NAME name;
        der_get_name(name, data, length);
    }
    }
    return 0;
}
