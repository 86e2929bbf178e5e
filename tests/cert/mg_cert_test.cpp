#include "cert/mg_cert.h"

#include "cert/der_bytes.h"
#include "cert/openssl_maker.h"
#include "support/error_of.h"
#include "support/temp_dir.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <openssl/pem.h>

namespace {

constexpr const char* no_name = "В сертификате отсутствует имя владельца";

std::string dotted(const ASN1_OBJECT* object) {
    char oid[256];
    OBJ_obj2txt(oid, sizeof oid, object, 1);
    return oid;
}

Bytes bytes_of(const ASN1_STRING* string) {
    return {string->data, string->data + string->length};
}

// OpenSSL's view of a name, in our form.
std::string expected_name(const X509_NAME* name) {
    std::string result;
    for (int i = X509_NAME_entry_count(name) - 1; i >= 0; i--) {
        const X509_NAME_ENTRY* entry = X509_NAME_get_entry(name, i);
        const int nid = OBJ_obj2nid(X509_NAME_ENTRY_get_object(entry));
        if (nid == NID_pkcs9_emailAddress)
            result += "Email";
        else if (nid == NID_undef || nid == NID_organizationIdentifier)
            result += dotted(X509_NAME_ENTRY_get_object(entry));
        else
            result += OBJ_nid2sn(nid);
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

int i2d_tbs(const X509* cert, uint8_t** encoded) {
    return i2d_re_X509_tbs(const_cast<X509*>(cert), encoded);
}

struct Oid {
    std::string_view short_name, long_name, text;
};

template <class T>
auto extension_of(X509* cert, int nid, void (*release)(T*)) {
    return std::unique_ptr<T, void (*)(T*)>(static_cast<T*>(X509_get_ext_d2i(cert, nid, nullptr, nullptr)), release);
}

void expect_same_body(MGCert& ours, X509* cert) {
    std::string_view name;
    EXPECT_TRUE(ours.GetSubjectFullName(name) && name == expected_name(X509_get_subject_name(cert)));
    EXPECT_TRUE(ours.GetIssuerFullName(name) && name == expected_name(X509_get_issuer_name(cert)));
    uint32_t version = 0;
    EXPECT_TRUE(ours.GetVer(version) && version == static_cast<uint32_t>(X509_get_version(cert)));
    const uint8_t* data = nullptr;
    uint32_t length = 0;
    ASSERT_TRUE(ours.GetSerial(data, length));
    const uint8_t* first = data + (length > 1 && data[0] == 0); // the sign of a positive number is left out there
    EXPECT_EQ(Bytes(first, data + length), bytes_of(X509_get0_serialNumber(cert)));
    const DER_S_UTC_TIME* time = nullptr;
    EXPECT_TRUE(ours.GetBeginCert(time) && time_text(*time) == expected_time(X509_get0_notBefore(cert)));
    EXPECT_TRUE(ours.GetEndCert(time) && time_text(*time) == expected_time(X509_get0_notAfter(cert)));

    const ASN1_BIT_STRING* sign;
    const X509_ALGOR* algorithm;
    const ASN1_OBJECT* object;
    X509_get0_signature(&sign, &algorithm, cert);
    X509_ALGOR_get0(&object, nullptr, nullptr, algorithm);
    Oid oid;
    EXPECT_TRUE(ours.GetSignAlg(oid.short_name, oid.long_name, oid.text) && oid.text == dotted(object));
    EXPECT_TRUE(ours.GetSignHashAlg(oid.short_name, oid.long_name, oid.text) && oid.text == dotted(object));
    ASSERT_TRUE(ours.GetSign(data, length));
    Bytes reversed = bytes_of(sign);
    std::reverse(reversed.begin(), reversed.end());
    EXPECT_EQ(Bytes(data, data + length), reversed);
    X509_PUBKEY_get0_param(const_cast<ASN1_OBJECT**>(&object), nullptr, nullptr, nullptr, X509_get_X509_PUBKEY(cert));
    EXPECT_TRUE(ours.GetPublSignAlg(oid.short_name, oid.long_name, oid.text) && oid.text == dotted(object));
    EXPECT_EQ(Bytes(ours.publ_bits, ours.publ_bits + ours.publ_bits_length), bytes_of(X509_get0_pubkey_bitstr(cert)));
    ASSERT_TRUE(ours.GetSignedData(data, length));
    EXPECT_EQ(Bytes(data, data + length), der_of(cert, i2d_tbs));
}

void expect_same_extensions(MGCert& ours, X509* cert) {
    EXPECT_EQ(ours.extensions.count, static_cast<uint32_t>(X509_get_ext_count(cert)));
    std::string_view name, short_name, russian;
    const auto usage = extension_of<ASN1_BIT_STRING>(cert, NID_key_usage, ASN1_BIT_STRING_free);
    for (int i = 0; usage && i < 10; i++)
        EXPECT_EQ(ours.GetKeyUsage(static_cast<uint32_t>(i), name, short_name, russian),
                  ASN1_BIT_STRING_get_bit(usage.get(), i) == 1)
            << i;

    const auto purposes = extension_of<EXTENDED_KEY_USAGE>(cert, NID_ext_key_usage, EXTENDED_KEY_USAGE_free);
    Oid oid;
    int count = 0;
    for (; ours.GetExtKeyUsage(static_cast<uint32_t>(count), oid.short_name, oid.long_name, oid.text); count++)
        EXPECT_EQ(oid.text, dotted(sk_ASN1_OBJECT_value(purposes.get(), count)));
    EXPECT_EQ(count, purposes ? sk_ASN1_OBJECT_num(purposes.get()) : 0);

    const auto constraints = extension_of<BASIC_CONSTRAINTS>(cert, NID_basic_constraints, BASIC_CONSTRAINTS_free);
    bool is_ca = false;
    int8_t path = 0;
    ours.GetBasicConstraints(is_ca, path);
    EXPECT_EQ(is_ca, constraints && constraints->ca);
    EXPECT_EQ(path, constraints && constraints->pathlen ? ASN1_INTEGER_get(constraints->pathlen) : 0);
    const auto key_id = extension_of<ASN1_OCTET_STRING>(cert, NID_subject_key_identifier, ASN1_OCTET_STRING_free);
    const uint8_t* data = nullptr;
    uint32_t length = 0;
    EXPECT_EQ(ours.GetSubjKeyId(data, length), key_id != nullptr);
    EXPECT_EQ(Bytes(data, data + length), key_id ? bytes_of(key_id.get()) : Bytes());
}

void expect_same(const Bytes& der, X509* cert) {
    MGCert ours(der.data(), static_cast<uint32_t>(der.size()));
    ASSERT_EQ(ours.ParsCert(), der_ok);
    expect_same_body(ours, cert);
    expect_same_extensions(ours, cert);
    EXPECT_EQ(get_subject_from_der_cert(der), expected_name(X509_get_subject_name(cert)));
}

TEST(MGCert, FieldsAgreeWithOpenssl) {
    const struct {
        const char* what;
        void (*modify)(X509*);
    } rows[] = {
        {"names of all sorts and every extension", fill_all},
        {"no extension, an old date",
         [](X509* cert) {
             set_time(cert, X509_set1_notBefore, V_ASN1_UTCTIME, "980101000000Z");
             add_part(X509_get_subject_name(cert), "C", V_ASN1_PRINTABLESTRING, "RU");
         }},
        {"no authority, one flag of usage",
         [](X509* cert) {
             add_part(X509_get_subject_name(cert), "CN", V_ASN1_UTF8STRING, std::string(300, 'x'));
             add_extension(cert, NID_basic_constraints, "CA:FALSE");
             add_extension(cert, NID_key_usage, "encipherOnly");
         }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const X509Owner cert = make_cert(row.modify);
        expect_same(der_of(cert.get(), i2d_X509), cert.get());
    }
}

TEST(MGCert, ReadsNamesAndExtensions) {
    const Bytes der = der_of(make_cert(fill_all).get(), i2d_X509);
    MGCert cert(der.data(), static_cast<uint32_t>(der.size()));
    ASSERT_EQ(cert.ParsCert(), der_ok);
    std::string_view text;
    EXPECT_TRUE(cert.GetSubjectFullName(text));
    EXPECT_EQ(text,
              "CN=Иванов,1.2.3.4.5=x,OGRN=1027700132195,Email=a@example.org,O=ООО \"Омега\", склад,OU=Отдел,C=RU");
    Oid oid;
    EXPECT_TRUE(cert.GetOther(0, oid.short_name, oid.long_name, oid.text, text) && text == "Other");
    EXPECT_TRUE(oid.text == "1.2.3.4.5" && oid.short_name.empty());
    EXPECT_TRUE(cert.GetNameOther("1.2.643.3", text) && text == "12");
    EXPECT_FALSE(cert.GetNameOther("1.2.644", text));
    EXPECT_TRUE(cert.GetCertPolicies(1, oid.short_name, oid.long_name, oid.text) && oid.short_name == "anyPolicy");
    const uint8_t* data = nullptr;
    uint32_t length = 0;
    EXPECT_TRUE(cert.GetIp(0, text, data, length) && text == "192.0.2.255" && data[3] == 255 && length == 4);
    EXPECT_FALSE(cert.GetIp(1, text, data, length)) << "IPv6 is left out";
    EXPECT_TRUE(cert.GetEmail(0, text) && text == "b@example.org");
    EXPECT_TRUE(cert.GetDns(1, text) && text == "c.example");
    EXPECT_TRUE(cert.GetUrl(0, text) && text == "http://d.example/");
    EXPECT_TRUE(cert.GetNumberDns(length) && length == 2 && cert.GetNumberOther(length) && length == 2);
    const DER_S_UTC_TIME* time = nullptr;
    EXPECT_TRUE(cert.GetBeginKey(time) && time_text(*time) == "20210131235958");
    EXPECT_TRUE(cert.GetEndKey(time) && time_text(*time) == "20310201000102");
    const DER_S_PREV_CERT_LINK* link = nullptr;
    EXPECT_TRUE(cert.GetPrevCertLink(link) && link->has_key_id && link->has_serial && !link->has_issuer);
    std::string_view name, short_name, russian;
    EXPECT_TRUE(cert.GetKeyUsage(8, name, short_name, russian) && russian == "Только расшифрование");
    EXPECT_FALSE(cert.GetKeyUsage(6, name, short_name, russian)) << "only of the second keyUsage";
    EXPECT_TRUE(cert.extensions.items[0].critical && !cert.extensions.items[1].has_critical);

    cert.Free(); // nothing is left, and a getter that gives nothing changes nothing
    text = "text";
    length = 77;
    EXPECT_FALSE(cert.GetVer(length) || cert.GetSerial(data, length) || cert.GetNumberDns(length) ||
                 cert.GetReqData(data, length) || cert.GetIp(0, text, data, length) || cert.GetSubjectFullName(text) ||
                 cert.GetNameOther("", text) || cert.GetSignAlg(text, text, text) || cert.GetBeginCert(time) ||
                 cert.GetEndKey(time) || cert.GetPrevCertLink(link) || cert.IsReqPse());
    EXPECT_TRUE(text == "text" && length == 77);
    EXPECT_EQ(cert.ParsCommon(), 0xeeee0018);
    EXPECT_EQ(cert.ParsReqSign(), 0xeeee0027);
    EXPECT_EQ(cert.ParsCert(), 0xeeee0015);
}

// The refusal of get_subject_from_der_cert: its code, or 0 for a name that is missing; 1 if there is none.
uint32_t refusal(const Bytes& der) {
    try {
        get_subject_from_der_cert(der);
        return 1;
    } catch (const MGErr& err) {
        EXPECT_EQ(err.mess_1, "Ошибка получения имени владельца сертификата из сертификата в der кодировке");
        EXPECT_EQ(err.func_1, "get_subject_from_der_cert");
        EXPECT_EQ(err.mess_2, err.uint32_param ? "Не получилось разобрать формат сертификата" : no_name);
        EXPECT_EQ(err.func_2, err.uint32_param ? "cert->ParsCert()" : "cert->GetSubjectFullName()");
        if (err.uint32_param) {
            EXPECT_EQ(err.err_description, err2str(err.uint32_param));
        }
        return err.uint32_param;
    }
}

// Replaces the one occurrence of a run of bytes.
Bytes patched(Bytes der, const char* from, const char* to) {
    const Bytes old_bytes = hex(from), new_bytes = hex(to);
    const auto place = std::search(der.begin(), der.end(), old_bytes.begin(), old_bytes.end());
    EXPECT_NE(place, der.end());
    std::copy(new_bytes.begin(), new_bytes.end(), place);
    return der;
}

TEST(MGCert, RefusesWithTheCode) {
    const auto made = [](void (*modify)(X509*)) { return der_of(make_cert(modify).get(), i2d_X509); };
    const Bytes good = made(fill_all);
    const auto common = [](X509* cert) { add_part(X509_get_subject_name(cert), "CN", V_ASN1_UTF8STRING, "a"); };
    const X509Owner pss = make_cert(common);
    EVP_MD_CTX* context = EVP_MD_CTX_new();
    EVP_PKEY_CTX* key = nullptr;
    EVP_DigestSignInit(context, &key, EVP_sha256(), nullptr, test_key());
    EVP_PKEY_CTX_set_rsa_padding(key, RSA_PKCS1_PSS_PADDING);
    X509_sign_ctx(pss.get(), context);
    EVP_MD_CTX_free(context);

    const struct {
        const char* what;
        Bytes der;
        uint32_t code;
    } rows[] = {
        {"good", good, 1},
        {"nothing", {}, 0xeeee0015},
        {"PEM", text("-----BEGIN CERTIFICATE-----\n"), 0xeeee0010},
        {"a byte too much", join({good, {0}}), 0xeeee0012},
        {"a byte missing", Bytes(good.begin(), good.end() - 1), 0xeeee0012},
        {"nothing inside", hex("30 00"), 0xeeee0016},
        {"no signed part", hex("30 02 05 00"), 0xeeee0011},
        {"the signed part is all", hex("30 04 30 02 05 00"), 0xeeee0013},
        {"signature with unused bits", hex("30 0a 30 02 05 00 30 00 03 02 01 80"), 0xeeee0014},
        {"no subject", made([](X509*) {}), 0},
        {"version 1", made([](X509* cert) {
             fill_all(cert);
             X509_set_version(cert, 0);
         }),
         0},
        {"begins and ends in GeneralizedTime", made([](X509* cert) {
             fill_all(cert);
             set_time(cert, X509_set1_notBefore, V_ASN1_GENERALIZEDTIME, "20500131235958Z");
             set_time(cert, X509_set1_notAfter, V_ASN1_GENERALIZEDTIME, "20510131235958Z");
         }),
         0},
        {"ends in GeneralizedTime", made([](X509* cert) {
             fill_all(cert);
             set_time(cert, X509_set1_notAfter, V_ASN1_GENERALIZEDTIME, "20510131235958Z");
         }),
         0xeeee000d},
        {"BMPString", made([](X509* cert) { add_part(X509_get_subject_name(cert), "CN", V_ASN1_BMPSTRING, "ab"); }),
         0xeeee000c},
        {"TeletexString of the issuer",
         made([](X509* cert) { add_part(X509_get_issuer_name(cert), "CN", V_ASN1_T61STRING, "ab"); }), 0xeeee000c},
        {"parameters of the algorithm are taken for the issuer", der_of(pss.get(), i2d_X509), 0xeeee000c},
        {"extension without a value", patched(good, "06 03 55 1d 0e 04", "06 03 55 1d 0e 05"), 0xeeee001f},
        {"critical extension without a value", patched(good, "55 1d 0f 01 01 ff 04", "55 1d 0f 01 01 ff 05"),
         0xeeee001f},
        {"seconds that are no digits",
         patched(good, "32 31 30 31 33 31 32 33 35 39 35 38", "32 31 30 31 33 31 32 33 35 39 35 3a"), 0xeeee000a},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(refusal(row.der), row.code);
    }
}

TEST(MGCert, SubjectOfAFile) {
    const TempDir dir;
    const Bytes der = der_of(make_cert(fill_all).get(), i2d_X509);
    dir.write("a.cer", {der.begin(), der.end()});
    EXPECT_EQ(get_subject_from_parsed_cert(dir.path("a.cer")), get_subject_from_der_cert(der));
    const MGErr err = error_of([&] { get_subject_from_parsed_cert(dir.path("missing.cer")); });
    EXPECT_EQ(err.func_1 + " " + err.str_param, "ReadFile " + dir.path("missing.cer"));
}

// Every byte cut off or changed: whatever the result, nothing outside of the input is touched (sanitizers watch).
TEST(MGCert, DamagedInputDoesNoHarm) {
    const Bytes good = der_of(make_cert(fill_all).get(), i2d_X509);
    const auto try_all = [](const Bytes& der) {
        MGCert cert(der.data(), static_cast<uint32_t>(der.size()));
        cert.ParsCert();
        cert.ParsCert();
        cert.SkipReqPse();
        cert.ParsReq();
    };
    for (size_t i = 0; i < good.size(); i++) {
        try_all(Bytes(good.begin(), good.begin() + static_cast<ptrdiff_t>(i)));
        for (uint8_t value : {0x00, 0x06, 0x30, 0x7f, 0x80, 0x84, 0xff}) {
            Bytes damaged = good;
            damaged[i] = value;
            try_all(damaged);
        }
    }
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
        if (refusal(der) != 1) continue;
        expect_same(der, cert.get());
        read++;
    }
    EXPECT_GT(read, all / 2);
    EXPECT_GT(all, 50);
}

} // namespace
