// Holds the way from a certificate to its subject beside mbedTLS, which parses it and prints the name.
#include "app/mg_err.h"
#include "cert/mg_cert.h"
#include "compare.h"

#include <fstream>
#include <iterator>
#include <mbedtls/x509_crt.h>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

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
    std::ifstream file(PERSON, std::ios::binary);
    const Bytes der(std::istreambuf_iterator<char>(file), {});
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
