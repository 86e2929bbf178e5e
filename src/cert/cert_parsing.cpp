// Reading a certificate:
//   SEQUENCE { SEQUENCE signed part { [0] version, serial, algorithm, issuer, validity, subject, public key,
//   extensions }, algorithm, BIT STRING signature }
// The signed part is walked flatly against a chain of expectations, each opened by the one before; what meets no open
// expectation is passed over, a constructed item by entering it. Its flag of presence tells whether an item was met.
#include "app/mg_err.h"
#include "cert/cert_items.h"
#include "cert/oid_table.h"

using namespace vorma;

namespace {

// The algorithm and the signature behind the signed part.
uint32_t take_sign_item(MGCert& cert, const DER_S_ENCODING& item) {
    if (is_universal(item, der_object_id) && !cert.has_sign_alg) {
        const uint32_t code = der_get_obj_id(cert.sign_alg, item);
        cert.has_sign_alg = code == der_ok;
        return code;
    }
    if (!is_universal(item, der_bit_string) || cert.has_sign) return der_ok;
    if (item.bit_shift != 0) return der_sign_bit_shift;
    cert.sign = mem_alloc_copy(item.value, item.length);
    cert.sign_length = item.length;
    convert_sign(cert.sign.get(), cert.sign_length);
    cert.has_sign = true;
    return der_ok;
}

uint32_t take_serial(MGCert& cert, const DER_S_ENCODING& item) {
    if (!is_universal(item, der_integer)) return der_ok;
    cert.serial = mem_alloc_copy(item.value, item.length);
    cert.serial_length = item.length;
    cert.has_serial = true;
    return der_ok;
}

uint32_t take_sign_hash_alg(MGCert& cert, const DER_S_ENCODING& item) {
    if (!is_universal(item, der_object_id)) return der_ok;
    const uint32_t code = der_get_obj_id(cert.sign_hash_alg, item);
    cert.has_sign_hash_alg = code == der_ok;
    return code;
}

uint32_t take_issuer(MGCert& cert, DER_S_POINTER& cursor, const DER_S_ENCODING& item) {
    if (!is_sequence(item)) return der_ok;
    cert.has_issuer_der = take_whole_item(cert.issuer_der, cert.issuer_der_length, cursor, item);
    return cert.has_issuer_der ? der_ok : der_issuer_length;
}

uint32_t take_validity(MGCert& cert, DER_S_POINTER& cursor, DER_S_ENCODING& item) {
    if (!is_universal(item, der_utc_time)) return der_ok;
    if (uint32_t code = der_get_utc_time(cert.begin_cert, item.value, item.length)) return code;
    if (uint32_t code = der_parsing_need(cursor, item, der_no_end_time)) return code;
    if (!is_universal(item, der_utc_time)) return der_end_not_utc_time;
    if (uint32_t code = der_get_utc_time(cert.end_cert, item.value, item.length)) return code;
    cert.has_begin_cert = cert.has_end_cert = true;
    return der_ok;
}

// The next item of the signed part, offered to the one expectation that is open. wrapped: the version's wrapper was
// met.
uint32_t take_common_item(MGCert& cert, bool& wrapped, DER_S_POINTER& cursor, DER_S_ENCODING& item) {
    if (!wrapped) {
        wrapped = is_context(item, 1, 0) && item.length == 3;
        return der_ok;
    }
    if (!cert.has_version) return take_version(cert, item);
    if (!cert.has_serial) return take_serial(cert, item);
    if (!cert.has_sign_hash_alg) return take_sign_hash_alg(cert, item);
    if (!cert.has_issuer_der) return take_issuer(cert, cursor, item);
    if (!cert.has_end_cert) return take_validity(cert, cursor, item);
    if (!cert.has_subject_der) return take_subject(cert, cursor, item);
    if (!cert.publ_done) return take_public_key_item(cert, item);
    if (!cert.has_extensions && is_sequence(item) && item.length <= cursor.left)
        return take_extensions(cert, cursor, item);
    return der_ok;
}

struct KnownExtension {
    int32_t row; // in the table of object identifiers
    DerKind kind;
    bool MGCert::*present;
    void* (*target)(MGCert& cert);
};

const KnownExtension known_extensions[] = {
    {oid_key_usage, der_kind_key_usage, &MGCert::has_key_usage, [](MGCert& cert) -> void* { return &cert.key_usage; }},
    {oid_key_period, der_kind_key_period, &MGCert::has_key_period,
     [](MGCert& cert) -> void* { return &cert.key_period; }},
    {oid_ext_key_usage, der_kind_ext_key_usage, &MGCert::has_ext_key_usage,
     [](MGCert& cert) -> void* { return &cert.ext_key_usage; }},
    {oid_policies, der_kind_policies, &MGCert::has_cert_policies,
     [](MGCert& cert) -> void* { return &cert.cert_policies; }},
    {oid_basic_constraints, der_kind_basic_constraints, &MGCert::has_basic_constraints,
     [](MGCert& cert) -> void* { return &cert.basic_constraints; }},
    {oid_alt_name, der_kind_alt_names, &MGCert::has_alt_names, [](MGCert& cert) -> void* { return &cert.alt_names; }},
    {oid_subject_key_id, der_kind_octet_string, &MGCert::has_subj_key_id,
     [](MGCert& cert) -> void* { return &cert.subj_key_id; }},
    {oid_prev_cert_link, der_kind_prev_cert_link, &MGCert::has_prev_cert_link,
     [](MGCert& cert) -> void* { return &cert.prev_cert_link; }},
};

} // namespace

uint32_t MGCert::ParsCert() {
    return at_edge("MGCert::ParsCert", [&]() -> uint32_t {
        if (uint32_t code = ParsSign()) return code;
        if (uint32_t code = ParsCommon()) return code;
        if (uint32_t code = ParsIssuer()) return code;
        if (uint32_t code = ParsSubject()) return code;
        return has_extensions ? ParsExtensions() : der_ok;
    });
}

uint32_t MGCert::ParsSign() {
    return at_edge("MGCert::ParsSign", [&]() -> uint32_t {
        DER_S_POINTER cursor;
        der_init_parsing(cursor, cert_data.get(), cert_length);
        if (uint32_t code = find_signed_part(*this, cursor, cert_length, der_input_length)) return code;

        const uint8_t* rest = signed_data + signed_length;
        der_init_parsing(cursor, rest, static_cast<uint32_t>(cert_data.get() + cert_length - rest));
        DER_S_ENCODING item;
        if (uint32_t code = der_parsing_need(cursor, item, der_no_sign)) return code;
        return der_walk(cursor, [&](const DER_S_ENCODING& next) { return take_sign_item(*this, next); });
    });
}

uint32_t MGCert::ParsCommon() {
    return at_edge("MGCert::ParsCommon", [&]() -> uint32_t {
        if (!has_signed) return der_no_signed_data;
        DER_S_POINTER cursor;
        der_init_parsing(cursor, signed_data, signed_length);
        bool wrapped = false;
        return der_walk(cursor, [&](DER_S_ENCODING& item) { return take_common_item(*this, wrapped, cursor, item); });
    });
}

uint32_t MGCert::ParsIssuer() {
    return at_edge("MGCert::ParsIssuer", [&]() -> uint32_t {
        const uint32_t code = der_get_name(issuer_name, issuer_der.get(), issuer_der_length);
        has_issuer_name = code == der_ok;
        return code;
    });
}

uint32_t MGCert::ParsSubject() {
    return at_edge("MGCert::ParsSubject", [&]() -> uint32_t {
        const uint32_t code = der_get_name(subject_name, subject_der.get(), subject_der_length);
        has_subject_name = code == der_ok;
        return code;
    });
}

uint32_t MGCert::ParsExtensions() {
    return at_edge("MGCert::ParsExtensions", [&]() -> uint32_t {
        for (uint32_t i = 0; i < extensions.count; i++) {
            const DER_S_EXTENSION& extension = extensions.items[i];
            for (const KnownExtension& known : known_extensions) {
                if (this->*known.present || !compare_nid_oid(known.row, extension.id)) continue;
                const uint32_t code =
                    parse_der_struct(known.target(*this), extension.value, extension.value_length, known.kind);
                if (code != der_ok) return code;
                this->*known.present = true;
            }
        }
        return der_ok;
    });
}
