// One X.509 certificate or certificate request, taken apart from DER bytes. It reads and answers questions: no
// signature and no chain is checked, and PEM text is not recognised. Steps return a DerCode, and throw an MGErr only
// where memory runs out. The editor calls only get_subject_from_parsed_cert; the rest serves whoever needs a
// certificate's fields. One object serves one thread at a time.
#pragma once

#include "der_params.h"

#include <string>
#include <string_view>
#include <vector>

class MGCert {
public:
    // Empty; every getter gives false.
    MGCert() = default;
    // Empty, then Init.
    MGCert(const uint8_t* buffer, uint32_t length);
    // Free.
    ~MGCert() = default;
    MGCert(const MGCert&) = delete;
    MGCert& operator=(const MGCert&) = delete;

    // Copies the input, clears everything else, and makes the copy the request body. A null has no bytes.
    void Init(const uint8_t* buffer, uint32_t length);
    // Releases all that the object owns: back to the state of an empty one.
    void Free();

    // Certificates. ParsCert is ParsSign, ParsCommon, ParsIssuer, ParsSubject and, when there are extensions,
    // ParsExtensions; it ends at the first error. What a step has found once is not looked for again.
    uint32_t ParsCert();
    uint32_t ParsSign();   // the signed part, the signature and its algorithm
    uint32_t ParsCommon(); // the fields of the signed part
    uint32_t ParsIssuer();
    uint32_t ParsSubject();
    uint32_t ParsExtensions(); // the values of the extensions that are known
    static const char* Error2String(uint32_t code);

    // Requests, bare or in a PKCS #7 envelope. ParsReq is ParsReqSign, ParsReqCommon, ParsSubject and, when there are
    // extensions, ParsExtensions.
    bool IsReqPse() const; // whether the input is an envelope
    uint32_t SkipReqR2c(); // makes the envelope's content the request body
    uint32_t SkipReqPse(); // makes the content's context item 2 the request body
    uint32_t ParsReq();
    uint32_t ParsReqSign();   // the signed part
    uint32_t ParsReqCommon(); // its fields

    // Getters: true and the arguments filled when the item is present, else false and the arguments left alone. What
    // they give belongs to the object. An identifier that no table row knows has empty names and its dotted text.
    bool GetVer(uint32_t& ver) const; // 2 stands for X.509 version 3
    bool GetSerial(const uint8_t*& data, uint32_t& length) const;
    bool GetSignHashAlg(std::string_view& short_name, std::string_view& long_name, std::string_view& oid_text) const;
    bool GetIssuerFullName(std::string_view& text) const;
    bool GetSubjectFullName(std::string_view& text) const;
    bool GetBeginCert(const DER_S_UTC_TIME*& time) const;
    bool GetEndCert(const DER_S_UTC_TIME*& time) const;
    bool GetPublSignAlg(std::string_view& short_name, std::string_view& long_name, std::string_view& oid_text) const;
    bool GetPublInitAlg(std::string_view& short_name, std::string_view& long_name, std::string_view& oid_text) const;
    bool GetPublHashAlg(std::string_view& short_name, std::string_view& long_name, std::string_view& oid_text) const;
    bool GetPublKey(const uint8_t*& data, uint32_t& length) const;
    bool GetSignedData(const uint8_t*& data, uint32_t& length) const;
    bool GetSignAlg(std::string_view& short_name, std::string_view& long_name, std::string_view& oid_text) const;
    bool GetSign(const uint8_t*& data, uint32_t& length) const; // the last byte of the encoding first
    bool GetKeyUsage(uint32_t index, std::string_view& name, std::string_view& short_name,
                     std::string_view& russian_name) const; // flag 0 to 8
    bool GetBeginKey(const DER_S_UTC_TIME*& time) const;
    bool GetEndKey(const DER_S_UTC_TIME*& time) const;
    bool GetNumberExtKeyUsage(uint32_t& count) const;
    bool GetExtKeyUsage(uint32_t index, std::string_view& short_name, std::string_view& long_name,
                        std::string_view& oid_text) const;
    bool GetNumberCertPolicies(uint32_t& count) const;
    bool GetCertPolicies(uint32_t index, std::string_view& short_name, std::string_view& long_name,
                         std::string_view& oid_text) const;
    bool GetBasicConstraints(bool& is_ca, int8_t& path_length) const;
    bool GetNumberEmail(uint32_t& count) const;
    bool GetEmail(uint32_t index, std::string_view& text) const;
    bool GetNumberDns(uint32_t& count) const;
    bool GetDns(uint32_t index, std::string_view& text) const;
    bool GetNumberUrl(uint32_t& count) const;
    bool GetUrl(uint32_t index, std::string_view& text) const;
    bool GetNumberIp(uint32_t& count) const;
    bool GetIp(uint32_t index, std::string_view& text, const uint8_t*& data, uint32_t& length) const;
    bool GetNumberOther(uint32_t& count) const;
    bool GetOther(uint32_t index, std::string_view& short_name, std::string_view& long_name, std::string_view& oid_text,
                  std::string_view& text) const;
    // The first other name whose dotted identifier begins with this one.
    bool GetNameOther(std::string_view oid_text, std::string_view& text) const;
    bool GetSubjKeyId(const uint8_t*& data, uint32_t& length) const;
    bool GetPrevCertLink(const DER_S_PREV_CERT_LINK*& link) const;
    bool GetSigningTime(const DER_S_UTC_TIME*& time) const;
    bool GetReqData(const uint8_t*& data, uint32_t& length) const;

    // The fields, each valid when its flag is set. Pointers without an owner go into cert_data, those of the names'
    // parts into issuer_der and subject_der.
    DerBytes cert_data; // copy of the input, one spare byte behind it
    uint32_t cert_length = 0;

    const uint8_t* signed_data = nullptr; // TBSCertificate or the body of a request, with its header
    uint32_t signed_length = 0;
    bool has_signed = false;
    DER_S_OBJ_ID sign_alg; // of the outer signature
    DerBytes sign;         // reversed
    uint32_t sign_length = 0;
    bool has_sign_alg = false;
    bool has_sign = false;

    uint32_t version = 0;
    bool has_version = false;
    DerBytes serial;
    uint32_t serial_length = 0;
    bool has_serial = false;
    DER_S_OBJ_ID sign_hash_alg; // the algorithm inside of the signed part
    bool has_sign_hash_alg = false;
    DerBytes issuer_der; // the whole item with its header
    uint32_t issuer_der_length = 0;
    bool has_issuer_der = false;
    DER_S_UTC_TIME begin_cert;
    DER_S_UTC_TIME end_cert;
    bool has_begin_cert = false;
    bool has_end_cert = false;
    DerBytes subject_der; // the whole item with its header
    uint32_t subject_der_length = 0;
    bool has_subject_der = false;

    DER_S_OBJ_ID publ_sign_alg; // the first three identifiers of the public key: algorithm,
    DER_S_OBJ_ID publ_init_alg; // parameter set,
    DER_S_OBJ_ID publ_hash_alg; // hash parameter set
    DerBytes publ_key;          // the OCTET STRING inside of the key's BIT STRING
    uint32_t publ_key_length = 0;
    const uint8_t* publ_bits = nullptr; // the key's BIT STRING
    uint32_t publ_bits_length = 0;
    bool has_publ_sign_alg = false;
    bool has_publ_init_alg = false;
    bool has_publ_hash_alg = false;
    bool has_publ_key = false;
    bool has_publ_bits = false;
    bool publ_done = false;

    DER_S_EXTENSION_LIST extensions;
    bool has_extensions = false;
    DER_S_FULL_NAME issuer_name;
    bool has_issuer_name = false;
    DER_S_FULL_NAME subject_name;
    bool has_subject_name = false;
    DER_S_KEY_USAGE key_usage;
    bool has_key_usage = false;
    DER_S_KEY_PERIOD key_period;
    bool has_key_period = false;
    DER_S_OID_LIST ext_key_usage;
    bool has_ext_key_usage = false;
    DER_S_OID_LIST cert_policies;
    bool has_cert_policies = false;
    DER_S_BASIC_CONSTRAINTS basic_constraints;
    bool has_basic_constraints = false;
    DER_S_ALT_NAMES alt_names;
    bool has_alt_names = false;
    DER_S_BLOB subj_key_id;
    bool has_subj_key_id = false;
    DER_S_PREV_CERT_LINK prev_cert_link;
    bool has_prev_cert_link = false;

    DER_S_BLOB req_data; // the request body
    DER_S_UTC_TIME signing_time;
    bool has_signing_time = false;

private:
    MGCert& operator=(MGCert&&) = default;
};

// The subject of a certificate in DER form: its attributes from the last to the first, each as short name, "=" and
// value, joined by ",". Throws MGErr if the bytes are not such a certificate or it names no subject.
std::string get_subject_from_der_cert(const std::vector<uint8_t>& bytes);
// The same for a certificate file, which is read whole.
std::string get_subject_from_parsed_cert(std::string file_name);
