#include "cert/mg_cert.h"

#include "cert/der_bytes.h"
#include "cert/openssl_maker.h"

#include <gtest/gtest.h>

namespace {

constexpr const char* signing_time = "210131235958Z";

// A signed request with both attributes that are read.
Bytes make_request(int time_type = V_ASN1_UTCTIME) {
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
    X509_REQ_add1_attr_by_NID(request.get(), NID_pkcs9_signingTime, time_type,
                              reinterpret_cast<const uint8_t*>(signing_time), 13);
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

void expect_request(MGCert& cert, const Bytes& request) {
    const uint8_t* data = nullptr;
    uint32_t length = 0;
    ASSERT_TRUE(cert.GetReqData(data, length));
    ASSERT_EQ(Bytes(data, data + length), request);
    ASSERT_EQ(cert.ParsReq(), der_ok);

    uint32_t version = 9, count = 0;
    EXPECT_TRUE(cert.GetVer(version) && version == 0);
    std::string_view name, second, third;
    EXPECT_TRUE(cert.GetSubjectFullName(name) && name == "CN=Иванов,C=RU");
    EXPECT_TRUE(cert.GetPublSignAlg(name, second, third) && name == "rsaEncryption");
    const DER_S_UTC_TIME* time = nullptr;
    EXPECT_TRUE(cert.GetSigningTime(time) && time->year == 2021 && time->second == 58);
    EXPECT_TRUE(cert.GetKeyUsage(2, name, second, third) && !cert.GetKeyUsage(0, name, second, third));
    EXPECT_TRUE(cert.GetNumberExtKeyUsage(count) && count == 1);
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
        expect_request(cert, request);
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
        {"envelope: nothing", {}, &MGCert::SkipReqR2c, 0xeeee0015},
        {"envelope: no sequence", hex("05 00"), &MGCert::SkipReqPse, 0xeeee0010},
        {"envelope: a byte too much", join({plain, {0}}), &MGCert::SkipReqR2c, 0xeeee0022},
        {"envelope: empty", hex("30 00"), &MGCert::SkipReqR2c, 0xeeee0023},
        {"envelope: no type", request, &MGCert::SkipReqPse, 0xeeee0023},
        {"envelope: other type", item(0x30, data), &MGCert::SkipReqPse, 0xeeee0024},
        {"envelope: no data", item(0x30, join({type, hex("04 00")})), &MGCert::SkipReqR2c, 0xeeee0026},
        {"envelope: no content", item(0x30, join({type, data, hex("05 00")})), &MGCert::SkipReqR2c, 0xeeee0026},
        {"envelope: no item 2 in the content", plain, &MGCert::SkipReqPse, 0xeeee0026},
        {"request: a byte too much", join({request, {0}}), &MGCert::ParsReq, 0xeeee0028},
        {"request: empty", hex("30 00"), &MGCert::ParsReq, 0xeeee0016},
        {"request: the signed part is all", hex("30 04 30 02 05 00"), &MGCert::ParsReq, 0xeeee0013},
        {"request: fields before the signed part", request, &MGCert::ParsReqCommon, 0xeeee0018},
        {"request: signing time of another type", make_request(V_ASN1_UTF8STRING), &MGCert::ParsReq, 0xeeee0029},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        MGCert cert(row.input.data(), static_cast<uint32_t>(row.input.size()));
        EXPECT_EQ((cert.*row.step)(), row.code);
    }

    // Attributes without a value behind a whole public key.
    const Bytes head = join({hex("02 01 00 30 00"), item(0x30, hex("06 01 2a 03 03 00 05 00"))});
    const Bytes tails[] = {hex("06 09 2a864886f70d010905"), hex("06 09 2a864886f70d01090e"),
                           hex("06 09 2a864886f70d01090e 31 02 05 00"), hex("06 09 2a864886f70d01090e 31 02 30 7f")};
    for (const Bytes& tail : tails) {
        const Bytes bytes = item(0x30, join({item(0x30, join({head, tail})), hex("05 00")}));
        MGCert cert(bytes.data(), static_cast<uint32_t>(bytes.size()));
        EXPECT_EQ(cert.ParsReq(), &tail == tails ? 0xeeee0029 : 0xeeee002a);
    }
}

} // namespace
