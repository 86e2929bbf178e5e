// Reading a certificate request, bare or in a PKCS #7 envelope:
//   request:  SEQUENCE { SEQUENCE signed part { version, subject, public key, attributes }, algorithm, signature }
//   envelope: SEQUENCE { signedData, … data … OCTET STRING … }
#include "app/mg_err.h"
#include "cert/cert_items.h"
#include "cert/oid_table.h"

using namespace vorma;

namespace {

// The head of an envelope; the cursor stands behind its type then.
uint32_t check_envelope(const MGCert& cert, DER_S_POINTER& cursor) {
    der_init_parsing(cursor, cert.cert_data.get(), cert.cert_length);
    DER_S_ENCODING item;
    if (uint32_t code = der_parsing_need(cursor, item, der_no_first_sequence)) return code;
    if (!is_sequence(item)) return der_bad_first_sequence;
    if (uint64_t{item.length} + cursor.used != cert.cert_length) return der_envelope_length;
    if (uint32_t code = der_parsing_need(cursor, item, der_no_envelope_type)) return code;
    if (!is_universal(item, der_object_id)) return der_no_envelope_type;
    bool signed_data = false;
    if (uint32_t code = compare_oid(item, "1.2.840.113549.1.7.2", signed_data)) return code;
    return signed_data ? der_ok : der_other_envelope_type;
}

// Whether the item is the identifier of the table's row.
bool is_row(const DER_S_ENCODING& item, int32_t row) {
    DER_S_OBJ_ID oid;
    oid.data = item.value;
    oid.length = item.length;
    return is_universal(item, der_object_id) && compare_nid_oid(row, oid);
}

// The first OCTET STRING behind the envelope's identifier of data.
uint32_t find_envelope_content(const MGCert& cert, DER_S_ENCODING& content) {
    DER_S_POINTER cursor;
    if (uint32_t code = check_envelope(cert, cursor)) return code;
    bool data = false;
    bool found = false;
    const uint32_t code = der_walk(cursor, [&](const DER_S_ENCODING& item) -> uint32_t {
        if (is_row(item, oid_pkcs7_data)) data = true;
        if (!data || !is_universal(item, der_octet_string)) return der_ok;
        content = item;
        found = true;
        return der_end;
    });
    return code == der_ok && !found ? der_no_request_in_envelope : code;
}

// A SET, then the item of an attribute's value; `missing` if there are none.
uint32_t enter_attribute(DER_S_POINTER& cursor, DER_S_ENCODING& item, uint32_t missing) {
    if (uint32_t code = der_parsing_need(cursor, item, missing)) return code;
    if (item.tag_class != der_universal || !item.constructed || item.tag != der_set) return missing;
    return der_parsing_need(cursor, item, missing);
}

uint32_t take_signing_time(MGCert& cert, DER_S_POINTER& cursor, DER_S_ENCODING& item) {
    if (uint32_t code = enter_attribute(cursor, item, der_no_signing_time)) return code;
    if (!is_universal(item, der_utc_time)) return der_no_signing_time;
    const uint32_t code = der_get_utc_time(cert.signing_time, item.value, item.length);
    cert.has_signing_time = code == der_ok;
    return code;
}

uint32_t take_requested_extensions(MGCert& cert, DER_S_POINTER& cursor, DER_S_ENCODING& item) {
    if (uint32_t code = enter_attribute(cursor, item, der_no_request_extensions)) return code;
    if (!is_sequence(item) || item.length > cursor.left) return der_no_request_extensions;
    return take_extensions(cert, cursor, item);
}

uint32_t take_attribute(MGCert& cert, DER_S_POINTER& cursor, DER_S_ENCODING& item) {
    if (!cert.has_signing_time && is_row(item, oid_signing_time)) return take_signing_time(cert, cursor, item);
    if (!cert.has_extensions && is_row(item, oid_extension_request))
        return take_requested_extensions(cert, cursor, item);
    return der_ok;
}

// The next item of the signed part, offered to the one expectation that is open.
uint32_t take_request_item(MGCert& cert, DER_S_POINTER& cursor, DER_S_ENCODING& item) {
    if (!cert.has_version) return take_version(cert, item);
    if (!cert.has_subject_der) return take_subject(cert, cursor, item);
    if (!cert.publ_done) return take_public_key_item(cert, item);
    return take_attribute(cert, cursor, item);
}

} // namespace

bool MGCert::IsReqPse() const {
    return at_edge("MGCert::IsReqPse", [&]() {
        DER_S_POINTER cursor;
        return check_envelope(*this, cursor) == der_ok;
    });
}

uint32_t MGCert::SkipReqR2c() {
    return at_edge("MGCert::SkipReqR2c", [&]() -> uint32_t {
        DER_S_ENCODING content;
        if (uint32_t code = find_envelope_content(*this, content)) return code;
        req_data = {content.value, content.length, true};
        return der_ok;
    });
}

uint32_t MGCert::SkipReqPse() {
    return at_edge("MGCert::SkipReqPse", [&]() -> uint32_t {
        DER_S_ENCODING content;
        if (uint32_t code = find_envelope_content(*this, content)) return code;
        DER_S_BLOB request;
        if (uint32_t code = parse_der_struct(&request, content.value, content.length, der_kind_context_blob))
            return code;
        if (!request.present) return der_no_request_in_envelope;
        req_data = request;
        return der_ok;
    });
}

uint32_t MGCert::ParsReq() {
    return at_edge("MGCert::ParsReq", [&]() -> uint32_t {
        if (uint32_t code = ParsReqSign()) return code;
        if (uint32_t code = ParsReqCommon()) return code;
        if (uint32_t code = ParsSubject()) return code;
        return has_extensions ? ParsExtensions() : der_ok;
    });
}

uint32_t MGCert::ParsReqSign() {
    return at_edge("MGCert::ParsReqSign", [&]() -> uint32_t {
        if (!req_data.present) return der_no_request;
        DER_S_POINTER cursor;
        der_init_parsing(cursor, req_data.data, req_data.length);
        return find_signed_part(*this, cursor, req_data.length, der_request_length);
    });
}

uint32_t MGCert::ParsReqCommon() {
    return at_edge("MGCert::ParsReqCommon", [&]() -> uint32_t {
        if (!has_signed) return der_no_signed_data;
        DER_S_POINTER cursor;
        der_init_parsing(cursor, signed_data, signed_length);
        return der_walk(cursor, [&](DER_S_ENCODING& item) { return take_request_item(*this, cursor, item); });
    });
}
