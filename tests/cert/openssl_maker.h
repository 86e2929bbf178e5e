// Certificates and requests that OpenSSL makes for a test, and its own view of them.
#pragma once

#include "cert/der_bytes.h"

#include <memory>
#include <openssl/conf.h>
#include <openssl/evp.h>
#include <openssl/pkcs7.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>
#include <stdexcept>

template <auto release>
struct Release {
    template <class T>
    void operator()(T* object) const {
        release(object);
    }
};
using X509Owner = std::unique_ptr<X509, Release<X509_free>>;
using RequestOwner = std::unique_ptr<X509_REQ, Release<X509_REQ_free>>;

// One key for all.
inline EVP_PKEY* test_key() {
    static const std::unique_ptr<EVP_PKEY, Release<EVP_PKEY_free>> key(EVP_RSA_gen(2048));
    return key.get();
}

template <class Object>
Bytes der_of(Object* object, int (*encode)(const Object*, uint8_t**)) {
    uint8_t* encoded = nullptr;
    const int size = encode(object, &encoded);
    const Bytes bytes(encoded, encoded + (size > 0 ? size : 0));
    OPENSSL_free(encoded);
    return bytes;
}

// One attribute of a name, in a part of its own or in that of the attribute before.
inline void add_part(X509_NAME* name, const char* type, int tag, const std::string& value, bool same_part = false) {
    X509_NAME_add_entry_by_txt(name, type, tag, reinterpret_cast<const uint8_t*>(value.data()),
                               static_cast<int>(value.size()), -1, same_part ? -1 : 0);
}

using ExtensionOwner = std::unique_ptr<X509_EXTENSION, Release<X509_EXTENSION_free>>;

// An extension from OpenSSL's text for it; of a certificate, if there is one.
inline ExtensionOwner make_extension(int nid, const char* value, X509* cert = nullptr) {
    const std::unique_ptr<CONF, Release<NCONF_free>> conf(NCONF_new(nullptr));
    X509V3_CTX context;
    X509V3_set_ctx(&context, cert, cert, nullptr, nullptr, 0);
    X509V3_set_nconf(&context, conf.get());
    ExtensionOwner extension(X509V3_EXT_nconf_nid(conf.get(), &context, nid, value));
    if (!extension) throw std::invalid_argument(value);
    return extension;
}

inline void add_extension(X509* cert, int nid, const char* value) {
    X509_add_ext(cert, make_extension(nid, value, cert).get(), -1);
}

inline void add_raw_extension(X509* cert, const char* oid, const Bytes& value) {
    std::unique_ptr<ASN1_OBJECT, Release<ASN1_OBJECT_free>> type(OBJ_txt2obj(oid, 1));
    std::unique_ptr<ASN1_OCTET_STRING, Release<ASN1_OCTET_STRING_free>> data(ASN1_OCTET_STRING_new());
    ASN1_OCTET_STRING_set(data.get(), value.data(), static_cast<int>(value.size()));
    const ExtensionOwner extension(X509_EXTENSION_create_by_OBJ(nullptr, type.get(), 0, data.get()));
    X509_add_ext(cert, extension.get(), -1);
}

// A self-signed certificate of version 3, with what modify makes of it.
template <class Modify>
X509Owner make_cert(Modify&& modify) {
    X509Owner cert(X509_new());
    X509_set_version(cert.get(), 2);
    ASN1_INTEGER_set(X509_get_serialNumber(cert.get()), 1);
    ASN1_TIME_set_string(X509_getm_notBefore(cert.get()), "210131235958Z");
    ASN1_TIME_set_string(X509_getm_notAfter(cert.get()), "310201000102Z");
    X509_set_pubkey(cert.get(), test_key());
    add_part(X509_get_issuer_name(cert.get()), "CN", V_ASN1_UTF8STRING, "Центр");
    modify(cert.get());
    X509_sign(cert.get(), test_key(), EVP_sha256());
    const Bytes der = der_of(cert.get(), i2d_X509); // read back: the encoding orders the attributes of a part
    const uint8_t* start = der.data();
    return X509Owner(d2i_X509(nullptr, &start, static_cast<long>(der.size())));
}

// One with names of all sorts and every extension that is read.
inline void fill_all(X509* cert) {
    std::unique_ptr<BIGNUM, Release<BN_free>> serial(BN_new());
    BN_set_bit(serial.get(), 159);
    BN_to_ASN1_INTEGER(serial.get(), X509_get_serialNumber(cert));
    X509_NAME* subject = X509_get_subject_name(cert);
    add_part(subject, "C", V_ASN1_PRINTABLESTRING, "RU");
    add_part(subject, "O", V_ASN1_UTF8STRING, "ООО \"Омега\", склад");
    add_part(subject, "OU", V_ASN1_UTF8STRING, "Отдел", true);
    add_part(subject, "emailAddress", V_ASN1_IA5STRING, "a@example.org");
    add_part(subject, "1.2.643.100.1", V_ASN1_NUMERICSTRING, "1027700132195");
    add_part(subject, "1.2.3.4.5", V_ASN1_UTF8STRING, "x");
    add_part(subject, "CN", V_ASN1_UTF8STRING, "Иванов");
    add_extension(cert, NID_key_usage, "critical,digitalSignature,keyAgreement,decipherOnly");
    add_extension(cert, NID_ext_key_usage, "serverAuth,1.2.3.4,clientAuth");
    add_extension(cert, NID_basic_constraints, "critical,CA:TRUE,pathlen:3");
    add_extension(cert, NID_subject_key_identifier, "hash");
    add_extension(cert, NID_certificate_policies, "1.2.3.4,2.5.29.32.0");
    add_extension(cert, NID_subject_alt_name,
                  "DNS:a.example,email:b@example.org,IP:192.0.2.255,DNS:c.example,URI:http://d.example/,IP:::1,"
                  "otherName:1.2.3.4.5;UTF8:Other,otherName:1.2.643.3.131.1.1;IA5:12,RID:1.2.3");
    add_raw_extension(cert, "2.5.29.16",
                      item(0x30, join({item(0x80, text("20210131235958Z")), item(0x81, text("20310201000102Z"))})));
    add_raw_extension(cert, "1.3.6.1.4.1.32473.2.3.5", item(0x30, hex("80 02 0102 82 01 07")));
    add_raw_extension(cert, "1.2.3.4.5", hex("05 00"));
}
