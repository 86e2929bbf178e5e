// Life of a certificate object, and its getters.
#include "cert/mg_cert.h"

#include "app/mg_err.h"

#include <iterator>

using namespace vorma;

namespace {

struct KeyUsageName {
    uint32_t mask; // within bits, read as a little-endian number
    const char* name;
    const char* short_name;
    const char* russian_name;
};

const KeyUsageName get_key_usage_name[] = {
    {0x80, "Digital Signature", "digitalSignature", "Цифровая подпись"},
    {0x40, "Non Repudiation", "nonRepudiation", "Неотрекаемость"},
    {0x20, "Key Encipherment", "keyEncipherment", "Шифрование ключей"},
    {0x10, "Data Encipherment", "dataEncipherment", "Шифрование данных"},
    {0x08, "Key Agreement", "keyAgreement", "Согласование ключей"},
    {0x04, "Certificate Sign", "keyCertSign", "Подписывание сертификатов"},
    {0x02, "CRL Sign", "cRLSign", "Подписывание списка отзыва"},
    {0x01, "Encipher Only", "encipherOnly", "Только зашифрование"},
    {0x8000, "Decipher Only", "decipherOnly", "Только расшифрование"},
};

// Gives value out when present.
template <class Out, class Value>
bool give(bool present, Out& out, Value&& value) {
    if (present) out = value;
    return present;
}

bool give_bytes(bool present, const uint8_t* value, uint32_t value_length, const uint8_t*& data, uint32_t& length) {
    return give(present, data, value) && give(present, length, value_length);
}

bool give_oid(bool present, const DER_S_OBJ_ID& oid, std::string_view& short_name, std::string_view& long_name,
              std::string_view& oid_text) {
    if (!present) return false;
    short_name = oid.known ? oid.short_name : "";
    long_name = oid.known ? oid.long_name : "";
    oid_text = oid.oid_text;
    return true;
}

bool give_item(bool present, const DER_S_OID_LIST& list, uint32_t index, std::string_view& short_name,
               std::string_view& long_name, std::string_view& oid_text) {
    if (!present || index >= list.count) return false;
    return give_oid(true, list.items[index], short_name, long_name, oid_text);
}

bool give_name(bool present, const DerNameList<DER_S_ALT_NAME>& names, uint32_t index, std::string_view& text) {
    if (!present || index >= names.count) return false;
    text = {names.items[index].text.get(), names.items[index].length};
    return true;
}

std::string_view text_of(const DER_S_OTHER_NAME& name) {
    return name.text ? std::string_view(name.text.get(), name.length) : std::string_view("");
}

} // namespace

MGCert::MGCert(const uint8_t* buffer, uint32_t length) {
    Init(buffer, length);
}

void MGCert::Init(const uint8_t* buffer, uint32_t length) {
    at_edge("MGCert::Init", [&] {
        if (!buffer) length = 0;
        DerBytes copy = mem_alloc_copy(buffer, length);
        Free();
        cert_data = std::move(copy);
        cert_length = length;
        req_data = {cert_data.get(), cert_length, true};
    });
}

void MGCert::Free() {
    *this = MGCert();
}

const char* MGCert::Error2String(uint32_t code) {
    return err2str(code);
}

bool MGCert::GetVer(uint32_t& ver) const {
    return give(has_version, ver, version);
}

bool MGCert::GetSerial(const uint8_t*& data, uint32_t& length) const {
    return give_bytes(has_serial, serial.get(), serial_length, data, length);
}

bool MGCert::GetSignHashAlg(std::string_view& short_name, std::string_view& long_name,
                            std::string_view& oid_text) const {
    return give_oid(has_sign_hash_alg, sign_hash_alg, short_name, long_name, oid_text);
}

bool MGCert::GetIssuerFullName(std::string_view& text) const {
    return give(has_issuer_name && issuer_name.has_text, text, issuer_name.text);
}

bool MGCert::GetSubjectFullName(std::string_view& text) const {
    return give(has_subject_name && subject_name.has_text, text, subject_name.text);
}

bool MGCert::GetBeginCert(const DER_S_UTC_TIME*& time) const {
    return give(has_begin_cert, time, &begin_cert);
}

bool MGCert::GetEndCert(const DER_S_UTC_TIME*& time) const {
    return give(has_end_cert, time, &end_cert);
}

bool MGCert::GetPublSignAlg(std::string_view& short_name, std::string_view& long_name,
                            std::string_view& oid_text) const {
    return give_oid(has_publ_sign_alg, publ_sign_alg, short_name, long_name, oid_text);
}

bool MGCert::GetPublInitAlg(std::string_view& short_name, std::string_view& long_name,
                            std::string_view& oid_text) const {
    return give_oid(has_publ_init_alg, publ_init_alg, short_name, long_name, oid_text);
}

bool MGCert::GetPublHashAlg(std::string_view& short_name, std::string_view& long_name,
                            std::string_view& oid_text) const {
    return give_oid(has_publ_hash_alg, publ_hash_alg, short_name, long_name, oid_text);
}

bool MGCert::GetPublKey(const uint8_t*& data, uint32_t& length) const {
    return give_bytes(has_publ_key, publ_key.get(), publ_key_length, data, length);
}

bool MGCert::GetSignedData(const uint8_t*& data, uint32_t& length) const {
    return give_bytes(has_signed, signed_data, signed_length, data, length);
}

bool MGCert::GetSignAlg(std::string_view& short_name, std::string_view& long_name, std::string_view& oid_text) const {
    return give_oid(has_sign_alg && has_sign, sign_alg, short_name, long_name, oid_text);
}

bool MGCert::GetSign(const uint8_t*& data, uint32_t& length) const {
    return give_bytes(has_sign, sign.get(), sign_length, data, length);
}

bool MGCert::GetKeyUsage(uint32_t index, std::string_view& name, std::string_view& short_name,
                         std::string_view& russian_name) const {
    if (!has_key_usage || index >= std::size(get_key_usage_name)) return false;
    const uint8_t* bits = key_usage.bits;
    const uint32_t flags = bits[0] | bits[1] << 8 | bits[2] << 16 | static_cast<uint32_t>(bits[3]) << 24;
    const KeyUsageName& row = get_key_usage_name[index];
    if (!(flags & row.mask)) return false;
    name = row.name;
    short_name = row.short_name;
    russian_name = row.russian_name;
    return true;
}

bool MGCert::GetBeginKey(const DER_S_UTC_TIME*& time) const {
    return give(has_key_period && key_period.has_begin, time, &key_period.begin);
}

bool MGCert::GetEndKey(const DER_S_UTC_TIME*& time) const {
    return give(has_key_period && key_period.has_end, time, &key_period.end);
}

bool MGCert::GetNumberExtKeyUsage(uint32_t& count) const {
    return give(has_ext_key_usage, count, ext_key_usage.count);
}

bool MGCert::GetExtKeyUsage(uint32_t index, std::string_view& short_name, std::string_view& long_name,
                            std::string_view& oid_text) const {
    return give_item(has_ext_key_usage, ext_key_usage, index, short_name, long_name, oid_text);
}

bool MGCert::GetNumberCertPolicies(uint32_t& count) const {
    return give(has_cert_policies, count, cert_policies.count);
}

bool MGCert::GetCertPolicies(uint32_t index, std::string_view& short_name, std::string_view& long_name,
                             std::string_view& oid_text) const {
    return give_item(has_cert_policies, cert_policies, index, short_name, long_name, oid_text);
}

bool MGCert::GetBasicConstraints(bool& is_ca, int8_t& path_length) const {
    const bool present = has_basic_constraints && basic_constraints.has_ca;
    return give(present, is_ca, basic_constraints.is_ca) && give(present, path_length, basic_constraints.path_length);
}

bool MGCert::GetNumberEmail(uint32_t& count) const {
    return give(has_alt_names && alt_names.email.present, count, alt_names.email.count);
}

bool MGCert::GetEmail(uint32_t index, std::string_view& text) const {
    return give_name(has_alt_names, alt_names.email, index, text);
}

bool MGCert::GetNumberDns(uint32_t& count) const {
    return give(has_alt_names && alt_names.dns.present, count, alt_names.dns.count);
}

bool MGCert::GetDns(uint32_t index, std::string_view& text) const {
    return give_name(has_alt_names, alt_names.dns, index, text);
}

bool MGCert::GetNumberUrl(uint32_t& count) const {
    return give(has_alt_names && alt_names.url.present, count, alt_names.url.count);
}

bool MGCert::GetUrl(uint32_t index, std::string_view& text) const {
    return give_name(has_alt_names, alt_names.url, index, text);
}

bool MGCert::GetNumberIp(uint32_t& count) const {
    return give(has_alt_names && alt_names.ip.present, count, alt_names.ip.count);
}

bool MGCert::GetIp(uint32_t index, std::string_view& text, const uint8_t*& data, uint32_t& length) const {
    if (!has_alt_names || index >= alt_names.ip.count) return false;
    const DER_S_ALT_NAME& name = alt_names.ip.items[index];
    text = name.text.get();
    return give_bytes(true, name.value, name.length, data, length);
}

bool MGCert::GetNumberOther(uint32_t& count) const {
    return give(has_alt_names && alt_names.other.present, count, alt_names.other.count);
}

bool MGCert::GetOther(uint32_t index, std::string_view& short_name, std::string_view& long_name,
                      std::string_view& oid_text, std::string_view& text) const {
    if (!has_alt_names || index >= alt_names.other.count) return false;
    const DER_S_OTHER_NAME& name = alt_names.other.items[index];
    text = text_of(name);
    return give_oid(true, name.type, short_name, long_name, oid_text);
}

bool MGCert::GetNameOther(std::string_view oid_text, std::string_view& text) const {
    if (!has_alt_names) return false;
    for (uint32_t i = 0; i < alt_names.other.count; i++) {
        const DER_S_OTHER_NAME& name = alt_names.other.items[i];
        if (name.type.oid_text.starts_with(oid_text)) return give(true, text, text_of(name));
    }
    return false;
}

bool MGCert::GetSubjKeyId(const uint8_t*& data, uint32_t& length) const {
    return give_bytes(has_subj_key_id, subj_key_id.data, subj_key_id.length, data, length);
}

bool MGCert::GetPrevCertLink(const DER_S_PREV_CERT_LINK*& link) const {
    return give(has_prev_cert_link, link, &prev_cert_link);
}

bool MGCert::GetSigningTime(const DER_S_UTC_TIME*& time) const {
    return give(has_signing_time, time, &signing_time);
}

bool MGCert::GetReqData(const uint8_t*& data, uint32_t& length) const {
    return give_bytes(req_data.present, req_data.data, req_data.length, data, length);
}
