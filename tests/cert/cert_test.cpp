#include "app/mg_err.h"
#include "cert/der_params.h"
#include "cert/der_reader.h"
#include "cert/mg_cert.h"
#include "cert/oid_table.h"
#include "support/bytes.h"
#include "support/error_of.h"
#include "support/faults.h"
#include "support/temp_dir.h"

#include <openssl/objects.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

namespace {

using X509Owner = std::unique_ptr<X509, std::integral_constant<decltype(&X509_free), X509_free>>;

// What OpenSSL made; `openssl asn1parse -inform DER -i -in golden/...` shows it.
Bytes golden(const std::string& name) {
    return bytes(read_file(GOLDEN "/" + name + ".der"));
}

uint32_t size_of(const Bytes& bytes) {
    return static_cast<uint32_t>(bytes.size());
}

TEST(DerReader, ObjectIdentifiers) {
    DER_S_OBJ_ID oid; // the same for all: nothing is left of the one before
    const auto read = [&](const Bytes& body) {
        oid.data = body.data();
        oid.length = size_of(body);
        const uint32_t code = der_get_obj_id(oid);
        return std::tuple(code, std::string(oid.oid_text), oid.known);
    };
    EXPECT_EQ(read(hex("2a 86 48")), std::tuple(der_ok, "1.2.840", true));
    EXPECT_EQ(read(hex("55 04 03 00")), std::tuple(der_ok, "2.5.4.3.0", false)) << "the beginning is known";
    EXPECT_EQ(read(hex("2a 90 80 80 80 00")), std::tuple(der_ok, "1.2.0", false)) << "2^32";
    EXPECT_EQ(read({}), std::tuple(0xeeee0007, "", false));
    EXPECT_EQ(read(hex("55 04 83")), std::tuple(0xeeee0008, "", false));
    EXPECT_EQ(read(Bytes(256, 1)), std::tuple(0xeeee0008, "", false)) << "too long";
}

std::string dotted(const ASN1_OBJECT* object) {
    char oid[256];
    OBJ_obj2txt(oid, sizeof oid, object, 1);
    return oid;
}

TEST(OidTable, AgreesWithOpenssl) {
    int agree = 0;
    for (size_t i = 0; i < oid_row_count; i++) {
        const OidRow& row = oid_table[i];
        EXPECT_EQ(row.nid, row.short_name ? i : 0);
        const ASN1_OBJECT* object = OBJ_nid2obj(row.short_name ? OBJ_sn2nid(row.short_name) : NID_undef);
        if (row.length == 0 || OBJ_obj2nid(object) == NID_undef) continue;
        const uint8_t* const body = OBJ_get0_data(object);
        agree += Bytes(row.data, row.data + row.length) == Bytes(body, body + OBJ_length(object)) &&
                 std::string(row.long_name) == OBJ_nid2ln(OBJ_obj2nid(object));
    }
    EXPECT_EQ(agree, 840); // the others are its own
}

Bytes bytes_of(const ASN1_STRING* string) {
    return {string->data, string->data + string->length};
}

// OpenSSL's view of a name, in our form.
std::string expected_name(const X509_NAME* name) {
    std::string result;
    for (int i = X509_NAME_entry_count(name) - 1; i >= 0; i--) {
        const X509_NAME_ENTRY* entry = X509_NAME_get_entry(name, i);
        const ASN1_OBJECT* type = X509_NAME_ENTRY_get_object(entry);
        const int nid = OBJ_obj2nid(type);
        const bool known = nid != NID_undef && nid != NID_organizationIdentifier;
        result += nid == NID_pkcs9_emailAddress ? "Email" : known ? OBJ_nid2sn(nid) : dotted(type);
        const Bytes value = bytes_of(X509_NAME_ENTRY_get_data(entry));
        result += "=" + std::string(value.begin(), value.end()) + (i > 0 ? "," : "");
    }
    return result;
}

std::string expected_time(const ASN1_TIME* time) { // years all count from 2000
    const Bytes value = bytes_of(time);
    return "20" + std::string(value.begin(), value.end() - 1);
}

std::string time_text(const DER_S_UTC_TIME& t) {
    char text[64];
    std::snprintf(text, sizeof text, "%04u%02u%02u%02u%02u%02u", t.year, t.month, t.day, t.hour, t.minute, t.second);
    return text;
}

template <class Encode>
Bytes der_of(X509* cert, Encode encode) {
    uint8_t* encoded = nullptr;
    const int size = encode(cert, &encoded);
    const Bytes bytes(encoded, encoded + size);
    OPENSSL_free(encoded);
    return bytes;
}

void expect_same(const Bytes& der, X509* cert) {
    MGCert ours(der.data(), size_of(der));
    ASSERT_EQ(ours.ParsCert(), der_ok);
    std::string_view name, skip, oid;
    EXPECT_TRUE(ours.GetIssuerFullName(name) && name == expected_name(X509_get_issuer_name(cert)));
    EXPECT_EQ(get_subject_from_der_cert(der), expected_name(X509_get_subject_name(cert)));
    const DER_S_UTC_TIME* time = nullptr;
    EXPECT_TRUE(ours.GetBeginCert(time) && time_text(*time) == expected_time(X509_get0_notBefore(cert)));
    EXPECT_TRUE(ours.GetEndCert(time) && time_text(*time) == expected_time(X509_get0_notAfter(cert)));

    const ASN1_BIT_STRING* sign;
    const X509_ALGOR* algorithm;
    const ASN1_OBJECT* object;
    X509_get0_signature(&sign, &algorithm, cert);
    X509_ALGOR_get0(&object, nullptr, nullptr, algorithm);
    EXPECT_TRUE(ours.GetSignAlg(skip, skip, oid) && oid == dotted(object));
    EXPECT_EQ(Bytes(ours.publ_bits, ours.publ_bits + ours.publ_bits_length), bytes_of(X509_get0_pubkey_bitstr(cert)));

    const auto expect_bytes = [&](bool (MGCert::*get)(const uint8_t*&, uint32_t&) const, const Bytes& expected) {
        const uint8_t* data = nullptr;
        uint32_t length = 0;
        EXPECT_EQ((ours.*get)(data, length), !expected.empty());
        EXPECT_EQ(Bytes(data, data + length), expected);
    };
    Bytes serial = bytes_of(X509_get0_serialNumber(cert)); // the sign of a positive number is left out there
    if (serial[0] & 0x80) serial.insert(serial.begin(), 0);
    expect_bytes(&MGCert::GetSerial, serial);
    Bytes reversed = bytes_of(sign);
    std::reverse(reversed.begin(), reversed.end());
    expect_bytes(&MGCert::GetSign, reversed);
    expect_bytes(&MGCert::GetSignedData, der_of(cert, i2d_re_X509_tbs));
    const ASN1_OCTET_STRING* key_id = X509_get0_subject_key_id(cert);
    expect_bytes(&MGCert::GetSubjKeyId, key_id ? bytes_of(key_id) : Bytes());

    EXPECT_EQ(ours.extensions.count, static_cast<uint32_t>(X509_get_ext_count(cert)));
    for (int i = 0; i < X509_get_ext_count(cert); i++) {
        const DER_S_EXTENSION& extension = ours.extensions.items[static_cast<size_t>(i)];
        EXPECT_EQ(extension.critical, X509_EXTENSION_get_critical(X509_get_ext(cert, i)) != 0);
        EXPECT_GE(extension.has_critical, extension.critical);
    }
    const uint32_t usage = X509_get_key_usage(cert);
    const auto* names = static_cast<const BIT_STRING_BITNAME*>(X509V3_EXT_get_nid(NID_key_usage)->usr_data);
    for (uint32_t i = 0; usage != UINT32_MAX && i < 9; i++) {
        const bool set = usage & (i < 8 ? KU_DIGITAL_SIGNATURE >> i : KU_DECIPHER_ONLY);
        EXPECT_EQ(ours.GetKeyUsage(i, name, oid, skip), set) << i;
        EXPECT_TRUE(!set || (name == names[i].lname && oid == names[i].sname)) << name;
    }
    bool is_ca = false;
    int8_t path = 0;
    ours.GetBasicConstraints(is_ca, path);
    EXPECT_EQ(is_ca, (X509_get_extension_flags(cert) & EXFLAG_CA) != 0);
    EXPECT_EQ(path, std::max(0L, X509_get_pathlen(cert)));
}

constexpr const char* full_name =
    "CN=Иванов,1.2.3.4.5=x,OGRN=1027700132195,Email=a@example.org,O=ООО \"Омега\", склад,OU=Отдел,C=RU";

TEST(MGCert, ReadsNamesAndExtensions) {
    const Bytes der = golden("certificate");
    const uint8_t* start = der.data();
    expect_same(der, X509Owner(d2i_X509(nullptr, &start, size_of(der))).get());
    MGCert cert(der.data(), size_of(der));
    ASSERT_EQ(cert.ParsCert(), der_ok);
    std::string_view text, skip, oid;
    EXPECT_TRUE(cert.GetSubjectFullName(text) && text == full_name);
    EXPECT_TRUE(cert.GetOther(0, skip, skip, oid, text) && text == "Other" && oid == "1.2.3.4.5");
    EXPECT_TRUE(cert.GetNameOther("1.2.643.3", text) && text == "12");
    EXPECT_TRUE(cert.GetExtKeyUsage(1, skip, skip, oid) && oid == "1.2.3.4");
    EXPECT_TRUE(cert.GetCertPolicies(1, skip, skip, oid) && oid == "2.5.29.32.0");
    const uint8_t* data = nullptr;
    uint32_t length = 0;
    EXPECT_TRUE(cert.GetIp(0, text, data, length) && text == "192.0.2.255" && data[3] == 255 && length == 4);
    EXPECT_FALSE(cert.GetIp(1, text, data, length)) << "IPv6 is left out";
    EXPECT_TRUE(cert.GetEmail(0, text) && text == "b@example.org");
    EXPECT_TRUE(cert.GetDns(1, text) && text == "c.example");
    EXPECT_TRUE(cert.GetUrl(0, text) && text == "http://d.example/");
    std::string counts;
    for (const auto get : {&MGCert::GetVer, &MGCert::GetNumberCertPolicies, &MGCert::GetNumberEmail,
                           &MGCert::GetNumberDns, &MGCert::GetNumberUrl, &MGCert::GetNumberIp, &MGCert::GetNumberOther})
        counts += (cert.*get)(length) ? std::to_string(length) : "-";
    EXPECT_EQ(counts, "2212112");
    const DER_S_UTC_TIME* time = nullptr;
    EXPECT_TRUE(cert.GetBeginKey(time) && time_text(*time) == "20210131235958");
    EXPECT_TRUE(cert.GetEndKey(time) && time_text(*time) == "20310201000102");
    const DER_S_PREV_CERT_LINK* link = nullptr;
    ASSERT_TRUE(cert.GetPrevCertLink(link) && link->has_key_id && link->has_serial && link->has_issuer);
    EXPECT_TRUE(link->key_id_length == 2 && *link->serial == 7 && link->issuer.text == "CN=x");
}

TEST(MGCert, LeavesNothingBehindWhenCallsFail) {
    const Bytes sealed = golden("sealed");
    const std::string file = GOLDEN "/certificate.der";
    const Fallible<MGCert> rows[] = {
        {"get_subject_from_parsed_cert",
         [&](MGCert&) { vorma::at_edge("argument", [&] { get_subject_from_parsed_cert(file); }); }},
        {"Init, SkipReqR2c, ParsReq", [&](MGCert& object) {
             object.Init(sealed.data(), size_of(sealed));
             object.SkipReqR2c();
             object.ParsReq();
         }}};
    for_each_fault(rows);
}

// What is no certificate's file is refused before it is read.
TEST(MGCert, RefusesOtherFilesUnread) {
    const TempDir dir;
    dir.write("large", std::string((1 << 20) + 1, '\0'));
    ASSERT_EQ(mkfifo(dir.path("fifo").c_str(), 0600), 0);
    for (const char* name : {"large", "fifo", ""})
        EXPECT_NE(error_text([&] { get_subject_from_parsed_cert(dir.path(name)); }), "") << name;
}

// All but those with a key that is a point, or with a string type that is not read.
TEST(MGCert, AuthoritiesOfTheSystemAgreeWithOpenssl) {
    int all = 0, read = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/usr/share/ca-certificates/mozilla")) {
        SCOPED_TRACE(entry.path().string());
        const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(entry.path().c_str(), "r"), std::fclose);
        const X509Owner cert(PEM_read_X509(file.get(), nullptr, nullptr, nullptr));
        ASSERT_NE(cert, nullptr);
        all++;
        const Bytes der = der_of(cert.get(), i2d_X509);
        MGCert ours(der.data(), size_of(der));
        std::string_view subject;
        if (ours.ParsCert() != der_ok || !ours.GetSubjectFullName(subject)) continue;
        expect_same(der, cert.get());
        read++;
    }
    EXPECT_GT(read, all / 2);
    EXPECT_GT(all, 50);
}

TEST(MGCertRequest, BareAndInBothEnvelopes) {
    const Bytes request = golden("request");
    using Skip = uint32_t (MGCert::*)();
    for (const auto& [name, skip] : {std::pair<const char*, Skip>("request", nullptr),
                                     {"sealed", &MGCert::SkipReqR2c},
                                     {"wrapped", &MGCert::SkipReqPse}}) {
        const Bytes input = golden(name);
        MGCert cert(input.data(), size_of(input));
        EXPECT_EQ(cert.IsReqPse(), skip != nullptr);
        EXPECT_EQ(skip ? (cert.*skip)() : der_ok, der_ok);
        const uint8_t* data = nullptr;
        uint32_t length = 0;
        ASSERT_TRUE(cert.GetReqData(data, length));
        ASSERT_EQ(Bytes(data, data + length), request);
        ASSERT_EQ(cert.ParsReq(), der_ok);

        std::string_view text, other;
        EXPECT_TRUE(cert.GetSubjectFullName(text) && text == full_name);
        const DER_S_UTC_TIME* time = nullptr;
        EXPECT_TRUE(cert.GetSigningTime(time) && time->year == 2021 && time->second == 58);
        EXPECT_TRUE(cert.GetKeyUsage(2, text, other, other) && !cert.GetKeyUsage(0, text, other, other));
        EXPECT_TRUE(cert.GetNumberExtKeyUsage(length) && length == 1);
    }
}

TEST(MGCert, RefusesWithTheCode) {
    const auto longer = [](const char* name) {
        return bytes(read_file(GOLDEN "/" + std::string(name) + ".der") + "x");
    };
    const struct {
        const char* what;
        Bytes input;
        uint32_t (MGCert::*step)();
        uint32_t code;
    } rows[] = {
        {"nothing", {}, &MGCert::ParsCert, 0xeeee0015},
        {"PEM", bytes("-----BEGIN CERTIFICATE-----\n"), &MGCert::ParsCert, 0xeeee0010},
        {"a byte too much", longer("certificate"), &MGCert::ParsCert, 0xeeee0012},
        {"nothing inside", hex("30 00"), &MGCert::ParsCert, 0xeeee0016},
        {"signature with unused bits", hex("30 0a 30 02 05 00 30 00 03 02 01 80"), &MGCert::ParsCert, 0xeeee0014},
        {"signature with eight", hex("30 0a 30 02 05 00 30 00 03 02 08 80"), &MGCert::ParsCert, 0xeeee0006},
        {"ends in GeneralizedTime", golden("late"), &MGCert::ParsCert, 0xeeee000d},
        {"envelope: a byte too much", longer("sealed"), &MGCert::SkipReqR2c, 0xeeee0022},
        {"envelope: other type", hex("30 0b 06092a864886f70d010701"), &MGCert::SkipReqPse, 0xeeee0024},
        {"envelope: no item 2 in the content", golden("sealed"), &MGCert::SkipReqPse, 0xeeee0026},
        {"envelope: an OCTET STRING only before the data",
         hex("30 1a 06092a864886f70d010702 0402 3000 06092a864886f70d010701"), &MGCert::SkipReqR2c, 0xeeee0026},
        {"request: a byte too much", longer("request"), &MGCert::ParsReq, 0xeeee0028},
        {"request: the subject is all", hex("30 09 30 05 02 01 00 30 00 30 00"), &MGCert::ParsReq, 0xeeee000e},
        {"request: the signed part is all", hex("30 04 30 02 05 00"), &MGCert::ParsReq, 0xeeee0013},
    };
    for (const auto& row : rows) {
        MGCert object(row.input.data(), size_of(row.input));
        EXPECT_EQ((object.*row.step)(), row.code) << row.what;
    }
    for (const Bytes& der : {golden("nameless"), Bytes()})
        EXPECT_NE(error_text([&] { get_subject_from_der_cert(der); }), "");
}

} // namespace
