#include "cert/mg_cert.h"

#include "cert/der_bytes.h"
#include "cert/openssl_maker.h"

#include <gtest/gtest.h>

namespace {

// A signed request with both attributes that are read.
Bytes make_request() {
    const RequestOwner request(X509_REQ_new());
    X509_NAME* subject = X509_REQ_get_subject_name(request.get());
    add_part(subject, "C", V_ASN1_PRINTABLESTRING, "RU");
    add_part(subject, "CN", V_ASN1_UTF8STRING, "Иванов");
    X509_REQ_set_pubkey(request.get(), test_key());
    STACK_OF(X509_EXTENSION)* extensions = sk_X509_EXTENSION_new_null();
    sk_X509_EXTENSION_push(extensions, make_extension(NID_key_usage, "keyEncipherment").release());
    sk_X509_EXTENSION_push(extensions, make_extension(NID_ext_key_usage, "clientAuth").release());
    X509_REQ_add_extensions(request.get(), extensions);
    sk_X509_EXTENSION_pop_free(extensions, X509_EXTENSION_free);
    X509_REQ_add1_attr_by_NID(request.get(), NID_pkcs9_signingTime, V_ASN1_UTCTIME,
                              reinterpret_cast<const uint8_t*>("210131235958Z"), 13);
    X509_REQ_sign(request.get(), test_key(), EVP_sha256());
    return der_of(request.get(), i2d_X509_REQ);
}

// PKCS #7 signed data around the content.
Bytes envelope(const Bytes& content) {
    const X509Owner cert =
        make_cert([](X509* c) { add_part(X509_get_subject_name(c), "CN", V_ASN1_UTF8STRING, "Подписант"); });
    const std::unique_ptr<BIO, Release<BIO_free>> data(
        BIO_new_mem_buf(content.data(), static_cast<int>(content.size())));
    const std::unique_ptr<PKCS7, Release<PKCS7_free>> signed_data(
        PKCS7_sign(cert.get(), test_key(), nullptr, data.get(), PKCS7_BINARY));
    return der_of(signed_data.get(), i2d_PKCS7);
}

TEST(MGCertRequest, BareAndInBothEnvelopes) {
    const Bytes request = make_request();
    const Bytes plain = envelope(request);
    const Bytes wrapped = envelope(item(0x30, join({item(0x81, hex("00")), item(0x82, request)})));
    using Skip = uint32_t (MGCert::*)();
    for (const auto& [input, skip] : {std::pair<const Bytes&, Skip>(request, nullptr),
                                      {plain, &MGCert::SkipReqR2c},
                                      {wrapped, &MGCert::SkipReqPse}}) {
        MGCert cert(input.data(), static_cast<uint32_t>(input.size()));
        EXPECT_EQ(cert.IsReqPse(), skip != nullptr);
        EXPECT_EQ(skip ? (cert.*skip)() : der_ok, der_ok);
        const uint8_t* data = nullptr;
        uint32_t length = 0;
        ASSERT_TRUE(cert.GetReqData(data, length));
        ASSERT_EQ(Bytes(data, data + length), request);
        ASSERT_EQ(cert.ParsReq(), der_ok);

        std::string_view name, other;
        EXPECT_TRUE(cert.GetSubjectFullName(name) && name == "CN=Иванов,C=RU");
        const DER_S_UTC_TIME* time = nullptr;
        EXPECT_TRUE(cert.GetSigningTime(time) && time->year == 2021 && time->second == 58);
        EXPECT_TRUE(cert.GetKeyUsage(2, name, other, other) && !cert.GetKeyUsage(0, name, other, other));
        EXPECT_TRUE(cert.GetNumberExtKeyUsage(length) && length == 1);
    }
}

TEST(MGCertRequest, RefusesWithTheCode) {
    const Bytes request = make_request();
    const Bytes plain = envelope(request);
    const Bytes type = hex("06 09 2a864886f70d010702"), data = hex("06 09 2a864886f70d010701");
    using Step = uint32_t (MGCert::*)();
    const struct {
        const char* what;
        Bytes input;
        Step step;
        uint32_t code;
    } rows[] = {
        {"envelope: a byte too much", join({plain, {0}}), &MGCert::SkipReqR2c, 0xeeee0022},
        {"envelope: empty", hex("30 00"), &MGCert::SkipReqR2c, 0xeeee0023},
        {"envelope: other type", item(0x30, data), &MGCert::SkipReqPse, 0xeeee0024},
        {"envelope: no content", item(0x30, join({type, data, hex("05 00")})), &MGCert::SkipReqR2c, 0xeeee0026},
        {"envelope: no item 2 in the content", plain, &MGCert::SkipReqPse, 0xeeee0026},
        {"request: a byte too much", join({request, {0}}), &MGCert::ParsReq, 0xeeee0028},
        {"request: empty", hex("30 00"), &MGCert::ParsReq, 0xeeee0016},
        {"request: the signed part is all", hex("30 04 30 02 05 00"), &MGCert::ParsReq, 0xeeee0013},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        MGCert cert(row.input.data(), static_cast<uint32_t>(row.input.size()));
        EXPECT_EQ((cert.*row.step)(), row.code);
    }
}

} // namespace
