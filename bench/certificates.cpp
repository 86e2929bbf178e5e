// Holds the way from a certificate to its subject beside mbedTLS, which parses it and prints the name.
#include "app/mg_err.h"
#include "cert/mg_cert.h"
#include "cert/openssl_maker.h"
#include "compare.h"

#include <mbedtls/x509_crt.h>

namespace {

// What a person's certificate is like; mbedTLS takes no numeric string in a name.
void fill_person(X509* cert) {
    X509_NAME* name = X509_get_subject_name(cert);
    for (const auto& [field, value] : {std::pair("C", "RU"),
                                       {"ST", "77 г. Москва"},
                                       {"L", "Москва"},
                                       {"O", "ООО Ромашка"},
                                       {"OU", "Отдел резервного копирования"},
                                       {"CN", "Иванов Иван Иванович"},
                                       {"emailAddress", "ivanov@example.org"}})
        X509_NAME_add_entry_by_txt(name, field, MBSTRING_UTF8, reinterpret_cast<const uint8_t*>(value), -1, -1, 0);
    X509_set_issuer_name(cert, name);
    X509V3_CTX context;
    X509V3_set_ctx(&context, cert, cert, nullptr, nullptr, 0);
    for (const auto& [nid, value] : {std::pair(NID_basic_constraints, "CA:FALSE"),
                                     {NID_key_usage, "critical,digitalSignature,keyEncipherment"},
                                     {NID_ext_key_usage, "clientAuth,emailProtection"},
                                     {NID_subject_key_identifier, "hash"},
                                     {NID_subject_alt_name, "email:ivanov@example.org"}}) {
        const std::unique_ptr<X509_EXTENSION, Release<X509_EXTENSION_free>> extension(
            X509V3_EXT_conf_nid(nullptr, &context, nid, value));
        X509_add_ext(cert, extension.get(), -1);
    }
}

void from_mbedtls(const Bytes& der) {
    mbedtls_x509_crt cert;
    mbedtls_x509_crt_init(&cert);
    char subject[1024];
    if (mbedtls_x509_crt_parse_der(&cert, der.data(), der.size()) != 0 ||
        mbedtls_x509_dn_gets(subject, sizeof subject, &cert.subject) <= 0)
        give_up("mbedtls");
    mbedtls_x509_crt_free(&cert);
    keep(subject);
}

} // namespace

int main() {
    constexpr int rounds = 2000;
    const Bytes der = der_of(make_cert(fill_person).get(), i2d_X509);
    try {
        compare(
            "2000 subjects of certificates / mbedTLS", 1.0,
            [&] {
                for (int i = 0; i < rounds; ++i) keep(get_subject_from_der_cert(der));
            },
            [&] {
                for (int i = 0; i < rounds; ++i) from_mbedtls(der);
            });
    } catch (const MGErr& err) {
        std::fprintf(stderr, "%s", err.GetString().c_str());
        return 1;
    }
}
