// DER written by hand for tests, and certificates and requests that OpenSSL makes for them.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <openssl/conf.h>
#include <openssl/evp.h>
#include <openssl/pkcs7.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

using Bytes = std::vector<uint8_t>;

// "30 05 ab" or "3005ab".
inline Bytes hex(const std::string& digits) {
    Bytes bytes(digits.size());
    size_t size = 0;
    OPENSSL_hexstr2buf_ex(bytes.data(), bytes.size(), &size, digits.c_str(), ' ');
    bytes.resize(size);
    return bytes;
}

inline Bytes join(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

inline Bytes text(const std::string& value) {
    return {value.begin(), value.end()};
}

// One item: identifier byte, length in one or three bytes, content.
inline Bytes item(uint8_t identifier, const Bytes& content) {
    const size_t size = content.size();
    Bytes head = {identifier};
    if (size > 0x7f) head.insert(head.end(), {0x82, static_cast<uint8_t>(size >> 8)});
    head.push_back(static_cast<uint8_t>(size));
    return join({head, content});
}

template <class T, auto release>
using Owner = std::unique_ptr<T, std::integral_constant<decltype(release), release>>;
using X509Owner = Owner<X509, X509_free>;

// One key for all.
inline EVP_PKEY* test_key() {
    static const Owner<EVP_PKEY, EVP_PKEY_free> key(EVP_RSA_gen(2048));
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

// What certificates and requests are made of, in OpenSSL's own notation.
inline CONF* notation() {
    static const char text[] = R"(
[ subject ]
C = RU
O = ООО \"Омега\", склад
+OU = Отдел
emailAddress = a@example.org
OGRN = 1027700132195
0.1.2.3.4.5 = x
CN = Иванов
[ extensions ]
keyUsage = critical,digitalSignature,keyAgreement,decipherOnly
extendedKeyUsage = serverAuth,1.2.3.4,clientAuth
basicConstraints = critical,CA:TRUE,pathlen:3
subjectKeyIdentifier = hash
certificatePolicies = 1.2.3.4,2.5.29.32.0
subjectAltName = DNS:a.example,email:b@example.org,IP:192.0.2.255,DNS:c.example,URI:http://d.example/,IP:::1,\
                 otherName:1.2.3.4.5;UTF8:Other,otherName:1.2.643.3.131.1.1;IA5:12,RID:1.2.3
2.5.29.16 = ASN1:SEQUENCE:period
1.3.6.1.4.1.32473.2.3.5 = DER:301980020102A110A40E300C310A300806035504030C0178820107
1.2.3.4.5 = DER:05:00
[ period ]
from = IMPLICIT:0,GENERALIZEDTIME:20210131235958Z
to = IMPLICIT:1,GENERALIZEDTIME:20310201000102Z
[ request_extensions ]
keyUsage = keyEncipherment
extendedKeyUsage = clientAuth
)";
    static const Owner<CONF, NCONF_free> conf(NCONF_new(nullptr));
    static const Owner<BIO, BIO_free> bio(BIO_new_mem_buf(text, -1));
    static const bool loaded = NCONF_load_bio(conf.get(), bio.get(), nullptr) == 1;
    if (!loaded) throw std::invalid_argument(text);
    return conf.get();
}

inline void fill_name(X509_NAME* name) {
    X509V3_NAME_from_section(name, NCONF_get_section(notation(), "subject"), MBSTRING_UTF8);
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
    fill_name(X509_get_issuer_name(cert.get()));
    modify(cert.get());
    X509_sign(cert.get(), test_key(), EVP_sha256());
    const Bytes der = der_of(cert.get(), i2d_X509); // read back: the encoding orders the attributes of a part
    const uint8_t* start = der.data();
    return X509Owner(d2i_X509(nullptr, &start, static_cast<long>(der.size())));
}

// One with names of all sorts and every extension that is read.
inline void fill_all(X509* cert) {
    ASN1_INTEGER_set_uint64(X509_get_serialNumber(cert), UINT64_MAX);
    fill_name(X509_get_subject_name(cert));
    X509V3_CTX context;
    X509V3_set_ctx(&context, cert, cert, nullptr, nullptr, 0);
    X509V3_set_nconf(&context, notation());
    if (X509V3_EXT_add_nconf(notation(), &context, "extensions", cert) != 1) throw std::invalid_argument("extensions");
}
