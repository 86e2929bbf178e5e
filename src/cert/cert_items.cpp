// What certificates and requests are both made of.
#include "cert/cert_items.h"

using namespace vorma;

uint32_t vorma::find_signed_part(MGCert& cert, DER_S_POINTER& cursor, uint32_t size, uint32_t bad_length) {
    DER_S_ENCODING item;
    if (uint32_t code = der_parsing_need(cursor, item, der_no_first_sequence)) return code;
    if (!is_sequence(item)) return der_bad_first_sequence;
    if (uint64_t{item.length} + cursor.used != size) return bad_length;
    if (uint32_t code = der_parsing_need(cursor, item, der_no_second_sequence)) return code;
    if (!is_sequence(item)) return der_bad_second_sequence;
    if (item.length >= cursor.left) return der_signed_length;
    cert.signed_data = cursor.data - cursor.used;
    cert.signed_length = cursor.used + item.length;
    cert.has_signed = true;
    return der_ok;
}

uint32_t vorma::take_version(MGCert& cert, const DER_S_ENCODING& item) {
    if (!is_universal(item, der_integer) || item.length != 1) return der_ok;
    cert.version = item.value[0];
    cert.has_version = true;
    return der_ok;
}

bool vorma::take_whole_item(DerBytes& copy, uint32_t& length, DER_S_POINTER& cursor, const DER_S_ENCODING& item) {
    if (item.length >= cursor.left) return false;
    length = cursor.used + item.length;
    copy = mem_alloc_copy(cursor.data - cursor.used, length);
    return der_parsing_skip(cursor, item) == der_ok;
}

uint32_t vorma::take_subject(MGCert& cert, DER_S_POINTER& cursor, const DER_S_ENCODING& item) {
    if (!is_sequence(item)) return der_ok;
    cert.has_subject_der = take_whole_item(cert.subject_der, cert.subject_der_length, cursor, item);
    return cert.has_subject_der ? der_ok : der_subject_length;
}

uint32_t vorma::take_public_key_item(MGCert& cert, const DER_S_ENCODING& item) {
    if (is_universal(item, der_object_id)) {
        const auto take = [&](DER_S_OBJ_ID& oid, bool& present) {
            const uint32_t code = der_get_obj_id(oid, item);
            present = code == der_ok;
            return code;
        };
        if (!cert.has_publ_sign_alg) return take(cert.publ_sign_alg, cert.has_publ_sign_alg);
        if (!cert.has_publ_init_alg) return take(cert.publ_init_alg, cert.has_publ_init_alg);
        if (!cert.has_publ_hash_alg) return take(cert.publ_hash_alg, cert.has_publ_hash_alg);
        return der_ok;
    }
    if (!is_universal(item, der_bit_string)) return der_ok;
    cert.publ_bits = item.value;
    cert.publ_bits_length = item.length;
    cert.has_publ_bits = true;

    DER_S_POINTER inner;
    DER_S_ENCODING key;
    der_init_parsing(inner, item.value, item.length);
    if (uint32_t code = der_parsing_need(inner, key, der_no_public_key)) return code;
    if (is_universal(key, der_octet_string)) {
        cert.publ_key = mem_alloc_copy(key.value, key.length);
        cert.publ_key_length = key.length;
        cert.has_publ_key = true;
    }
    cert.publ_done = true;
    return der_ok;
}

uint32_t vorma::take_extensions(MGCert& cert, DER_S_POINTER& cursor, const DER_S_ENCODING& item) {
    uint32_t count = 0;
    if (uint32_t code = der_number_tag(item.value, item.length, der_universal, 0, der_object_id, count, false))
        return code;
    cert.extensions = {};
    cert.extensions.items.resize(count);
    if (uint32_t code = parse_der_struct(&cert.extensions, item.value, item.length, der_kind_extensions)) return code;
    cert.has_extensions = true;
    return der_parsing_skip(cursor, item);
}
