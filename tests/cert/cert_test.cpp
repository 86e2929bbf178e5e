#include "app/mg_err.h"
#include "cert/der_params.h"
#include "cert/der_reader.h"
#include "cert/mg_cert.h"
#include "cert/oid_table.h"
#include "cert/openssl_maker.h"
#include "support/error_of.h"
#include "support/faults.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <openssl/objects.h>
#include <openssl/pem.h>
#include <set>
#include <string>
#include <sys/stat.h>

namespace {

uint32_t size_of(const Bytes& bytes) {
    return static_cast<uint32_t>(bytes.size());
}

TEST(DerReader, StepsAndRefusesSteps) {
    const struct {
        const char* bytes;
        uint32_t code; // of the first step
        uint32_t used; // by it
        uint32_t length;
    } rows[] = {
        {"04", der_end, 1, 0}, // a lone identifier byte is the end
        {"04 00", der_ok, 2, 0},
        {"04 84 00 00 00 01 aa", der_ok, 7, 1},
        {"30 05", der_ok, 2, 5}, // a constructed length is not tested
        {"03 02 07 80", der_ok, 4, 1},
        {"04 84 ff ff ff ff 00", 0xeeee0001, 6, 0xffffffff},
        {"30 80 00 00", 0xeeee0002, 2, 0x80},
        {"04 82 01", 0xeeee0004, 2, 0x82},
        {"03 00", 0xeeee0005, 2, 0},
        {"03 02 08 00", 0xeeee0006, 4, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.bytes);
        const Bytes bytes = hex(row.bytes);
        DER_S_POINTER cursor;
        DER_S_ENCODING item;
        der_init_parsing(cursor, bytes.data(), size_of(bytes));
        EXPECT_EQ(der_parsing_next(cursor, item), row.code);
        EXPECT_EQ(cursor.used, row.used);
        EXPECT_EQ(cursor.data + cursor.left, bytes.data() + bytes.size());
        EXPECT_EQ(item.length, row.length);
    }
}

TEST(DerReader, ObjectIdentifiers) {
    const struct {
        Bytes body;
        uint32_t code;
        std::string text;
        const char* known;
    } rows[] = {
        {hex("2a 86 48"), der_ok, "1.2.840", "ISO-US"},
        {hex("50"), der_ok, "2.0", nullptr},
        {hex("55 04 03 00"), der_ok, "2.5.4.3.0", nullptr},   // the beginning is known
        {hex("2a 90 80 80 80 00"), der_ok, "1.2.0", nullptr}, // 2^32
        {hex(""), 0xeeee0007, "", nullptr},
        {hex("55 04 83"), 0xeeee0008, "", nullptr},
        {Bytes(256, 1), 0xeeee0008, "", nullptr},
    };
    DER_S_OBJ_ID oid; // the same for all: nothing is left of the one before
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text + " of " + std::to_string(row.body.size()));
        oid.data = row.body.data();
        oid.length = size_of(row.body);
        EXPECT_EQ(der_get_obj_id(oid), row.code);
        EXPECT_EQ(oid.oid_text, row.text);
        ASSERT_EQ(oid.known, row.known != nullptr);
        EXPECT_STREQ(oid.known ? oid.short_name : nullptr, row.known);
    }
    const Bytes longest(255, 1);
    oid.data = longest.data();
    oid.length = size_of(longest);
    EXPECT_EQ(der_get_obj_id(oid), der_ok);
    EXPECT_EQ(oid.arc_count, 256u);
}

Bytes part(const char* oid, uint8_t tag, const std::string& value) {
    return item(0x31, item(0x30, join({item(0x06, hex(oid)), item(tag, text(value))})));
}

// What of the values is refused and where a walk ends; values that are right are held against OpenSSL elsewhere.
TEST(DerReader, KindsOfValues) {
    const auto read = [](auto&& record, uint32_t kind, const Bytes& value) {
        return parse_der_struct(&record, value.data(), size_of(value), kind);
    };
    EXPECT_EQ(read(DER_S_KEY_USAGE(), der_kind_key_usage, hex("03 06 00 01 02 03 04 05")), 0xeeee000f);
    EXPECT_EQ(read(DER_S_KEY_PERIOD(), der_kind_key_period, hex("80 02 32 30")), 0xeeee0021);
    EXPECT_EQ(read(DER_S_KEY_PERIOD(), der_kind_key_period, item(0x80, text("202101:1235959Z"))), 0xeeee000a);
    for (const auto& [name, code] : {std::pair(part("550403", 0x1e, "ab"), 0xeeee000c), // BMPString
                                     {hex("30 05 06 03 550403"), 0xeeee001d}}) {
        DER_S_FULL_NAME no_name;
        EXPECT_EQ(der_get_name(no_name, name.data(), size_of(name)), code);
    }
    EXPECT_EQ(read(DER_S_EXTENSION_LIST(), der_kind_extensions, hex("06 01 55 05 00")), 0xeeee001f);
    EXPECT_EQ(read(DER_S_PREV_CERT_LINK(), der_kind_prev_cert_link, hex("a1 02 a4 00")), 0xeeee002c);

    // Names for which no room was made are passed over.
    DER_S_ALT_NAMES names;
    const Bytes loose = hex("82 01 61 30 06 82 01 62 87 01 01 82 01 63 87 04 01 02 03 04 87 04 01 02 03 04");
    EXPECT_EQ(read(names, der_kind_alt_names, loose), der_ok);
    ASSERT_EQ(names.dns.count, 1u);
    EXPECT_STREQ(names.dns.items[0].text.get(), "b");
    EXPECT_EQ(names.ip.count, 1u) << "room was made for the address of a wrong length";

    // [0] key, [1] { [4] { name } }, [2] serial
    DER_S_PREV_CERT_LINK link;
    const Bytes name = item(0x30, part("550403", 0x0c, "x"));
    const Bytes value = item(0x30, join({hex("80 02 0102"), item(0xa1, item(0xa4, name)), hex("82 01 07 82 01 08")}));
    EXPECT_EQ(read(link, der_kind_prev_cert_link, value), der_ok);
    EXPECT_TRUE(link.has_key_id && link.key_id_length == 2 && link.has_issuer && link.has_serial && *link.serial == 7);
    EXPECT_EQ(link.issuer.text, "CN=x");
}

std::string body_of(const OidRow& row) {
    return {row.data, row.data + row.length};
}

TEST(OidTable, AgreesWithOpenssl) {
    const auto body_there = [](int nid) {
        const ASN1_OBJECT* object = OBJ_nid2obj(nid);
        const uint8_t* data = OBJ_get0_data(object);
        return std::string(data, data + OBJ_length(object));
    };
    // Rows where this table goes its own way.
    const std::set<int> own = {48, 102, 118, 124, 350, 393, 404, 511, 772, 774, 775};
    for (size_t i = 0; i < oid_row_count; i++) EXPECT_EQ(oid_table[i].nid, oid_table[i].short_name ? i : 0);
    for (int i = 0; i <= 804; i++) {
        if (own.contains(i)) continue;
        EXPECT_STREQ(oid_table[i].short_name, OBJ_nid2sn(i));
        EXPECT_STREQ(oid_table[i].long_name, OBJ_nid2ln(i));
        EXPECT_EQ(body_of(oid_table[i]), body_there(i)) << i;
    }
    // Its later entries have other numbers here; names and bodies are the same.
    for (size_t i = 805; i <= 1067; i++) {
        if ((i > 862 && i < 1022) || i == 846) continue;
        const int nid = OBJ_sn2nid(oid_table[i].short_name);
        ASSERT_NE(nid, NID_undef) << oid_table[i].short_name;
        EXPECT_EQ(body_of(oid_table[i]), body_there(nid)) << i;
    }
}

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

void expect_same(const Bytes& der, X509* cert) {
    MGCert ours(der.data(), static_cast<uint32_t>(der.size()));
    ASSERT_EQ(ours.ParsCert(), der_ok);
    std::string_view name;
    EXPECT_TRUE(ours.GetSubjectFullName(name) && name == expected_name(X509_get_subject_name(cert)));
    EXPECT_TRUE(ours.GetIssuerFullName(name) && name == expected_name(X509_get_issuer_name(cert)));
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
    std::string_view skip, oid;
    EXPECT_TRUE(ours.GetSignAlg(skip, skip, oid) && oid == dotted(object));
    ASSERT_TRUE(ours.GetSign(data, length));
    Bytes reversed = bytes_of(sign);
    std::reverse(reversed.begin(), reversed.end());
    EXPECT_EQ(Bytes(data, data + length), reversed);
    X509_PUBKEY_get0_param(const_cast<ASN1_OBJECT**>(&object), nullptr, nullptr, nullptr, X509_get_X509_PUBKEY(cert));
    EXPECT_TRUE(ours.GetPublSignAlg(skip, skip, oid) && oid == dotted(object));
    EXPECT_EQ(Bytes(ours.publ_bits, ours.publ_bits + ours.publ_bits_length), bytes_of(X509_get0_pubkey_bitstr(cert)));
    ASSERT_TRUE(ours.GetSignedData(data, length));
    EXPECT_EQ(Bytes(data, data + length), der_of(cert, i2d_tbs));

    EXPECT_EQ(ours.extensions.count, static_cast<uint32_t>(X509_get_ext_count(cert)));
    const uint32_t usage = X509_get_key_usage(cert);
    for (uint32_t i = 0; usage != UINT32_MAX && i < 9; i++)
        EXPECT_EQ(ours.GetKeyUsage(i, skip, skip, name),
                  (usage & (i < 8 ? KU_DIGITAL_SIGNATURE >> i : KU_DECIPHER_ONLY)) != 0)
            << i;
    bool is_ca = false;
    int8_t path = 0;
    ours.GetBasicConstraints(is_ca, path);
    EXPECT_EQ(is_ca, (X509_get_extension_flags(cert) & EXFLAG_CA) != 0);
    EXPECT_EQ(path, std::max(0L, X509_get_pathlen(cert)));
    const ASN1_OCTET_STRING* key_id = X509_get0_subject_key_id(cert);
    data = nullptr;
    length = 0;
    EXPECT_EQ(ours.GetSubjKeyId(data, length), key_id != nullptr);
    EXPECT_EQ(Bytes(data, data + length), key_id ? bytes_of(key_id) : Bytes());
    EXPECT_EQ(get_subject_from_der_cert(der), expected_name(X509_get_subject_name(cert)));
}

constexpr const char* full_name =
    "CN=Иванов,1.2.3.4.5=x,OGRN=1027700132195,Email=a@example.org,O=ООО \"Омега\", склад,OU=Отдел,C=RU";

TEST(MGCert, ReadsNamesAndExtensions) {
    const X509Owner made = make_cert(fill_all);
    const Bytes der = der_of(made.get(), i2d_X509);
    expect_same(der, made.get());
    MGCert cert(der.data(), static_cast<uint32_t>(der.size()));
    ASSERT_EQ(cert.ParsCert(), der_ok);
    std::string_view text;
    EXPECT_TRUE(cert.GetSubjectFullName(text));
    EXPECT_EQ(text, full_name);
    std::string_view skip, oid;
    EXPECT_TRUE(cert.GetOther(0, skip, skip, oid, text) && text == "Other");
    EXPECT_EQ(oid, "1.2.3.4.5");
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
    const DER_S_UTC_TIME* time = nullptr;
    EXPECT_TRUE(cert.GetBeginKey(time) && time_text(*time) == "20210131235958");
    EXPECT_TRUE(cert.GetEndKey(time) && time_text(*time) == "20310201000102");
    const DER_S_PREV_CERT_LINK* link = nullptr;
    EXPECT_TRUE(cert.GetPrevCertLink(link) && link->has_key_id && link->has_serial && !link->has_issuer);
    EXPECT_TRUE(cert.GetKeyUsage(8, skip, skip, text) && text == "Только расшифрование");

    cert.Free(); // nothing is left, and a getter that gives nothing changes nothing
    text = "text";
    EXPECT_FALSE(cert.GetSerial(data, length) || cert.GetNumberDns(length) || cert.GetReqData(data, length) ||
                 cert.GetSubjectFullName(text) || cert.GetSignAlg(text, text, text) || cert.GetPrevCertLink(link));
    EXPECT_EQ(text, "text");
    EXPECT_EQ(cert.ParsCert(), 0xeeee0015);
}

// The refusal of get_subject_from_der_cert: its code, or 0 for a name that is missing; 1 if there is none.
uint32_t refusal(const Bytes& der) {
    try {
        get_subject_from_der_cert(der);
        return 1;
    } catch (const MGErr& err) {
        EXPECT_EQ(err.func_2, err.uint32_param ? "cert->ParsCert()" : "cert->GetSubjectFullName()");
        return err.uint32_param;
    }
}

TEST(MGCert, RefusesWithTheCode) {
    const auto made = [](void (*modify)(X509*)) { return der_of(make_cert(modify).get(), i2d_X509); };
    const Bytes good = made(fill_all);
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
        {"signature with unused bits", hex("30 0a 30 02 05 00 30 00 03 02 01 80"), 0xeeee0014},
        {"no subject", made([](X509*) {}), 0},
        {"ends in GeneralizedTime", made([](X509* cert) {
             fill_all(cert);
             ASN1_TIME_set_string(X509_getm_notAfter(cert), "20510131235958Z");
         }),
         0xeeee000d},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(refusal(row.der), row.code);
    }
}

// Every byte cut off or changed: whatever the result, nothing outside of the input is touched (sanitizers watch).
TEST(MGCert, DamagedInputDoesNoHarm) {
    const Bytes good = der_of(make_cert(fill_all).get(), i2d_X509);
    const auto try_all = [](const Bytes& der) {
        MGCert cert(der.data(), static_cast<uint32_t>(der.size()));
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

// A signed request with both attributes that are read.
Bytes make_request() {
    const RequestOwner request(X509_REQ_new());
    fill_name(X509_REQ_get_subject_name(request.get()));
    X509_REQ_set_pubkey(request.get(), test_key());
    X509V3_CTX context;
    X509V3_set_ctx(&context, nullptr, nullptr, request.get(), nullptr, 0);
    X509V3_EXT_REQ_add_nconf(notation(), &context, "request_extensions", request.get());
    X509_REQ_add1_attr_by_NID(request.get(), NID_pkcs9_signingTime, V_ASN1_UTCTIME,
                              reinterpret_cast<const uint8_t*>("210131235958Z"), 13);
    X509_REQ_sign(request.get(), test_key(), EVP_sha256());
    return der_of(request.get(), i2d_X509_REQ);
}

// PKCS #7 signed data around the content.
Bytes envelope(const Bytes& content) {
    const X509Owner cert = make_cert([](X509*) {});
    const std::unique_ptr<BIO, Release<BIO_free>> data(
        BIO_new_mem_buf(content.data(), static_cast<int>(content.size())));
    const std::unique_ptr<PKCS7, Release<PKCS7_free>> signed_data(
        PKCS7_sign(cert.get(), test_key(), nullptr, data.get(), PKCS7_BINARY));
    return der_of(signed_data.get(), i2d_PKCS7);
}

TEST(MGCert, LeavesNothingBehindWhenCallsFail) {
    static const Bytes cert = der_of(make_cert(fill_all).get(), i2d_X509), sealed = envelope(make_request());
    struct World {
        TempDir dir;
        std::string file = dir.path("cert");
        MGCert object;
    };
    const struct {
        const char* name;
        void (*run)(World&);
    } rows[] = {
        {"get_subject_from_parsed_cert",
         [](World& w) { vorma::at_edge("argument", [&] { get_subject_from_parsed_cert(w.file); }); }},
        {"Init, ParsCert",
         [](World& w) {
             w.object.Init(cert.data(), size_of(cert));
             w.object.ParsCert();
         }},
        {"IsReqPse, SkipReqR2c, SkipReqPse, ParsReq",
         [](World& w) {
             w.object.Init(sealed.data(), size_of(sealed));
             if (w.object.IsReqPse() && w.object.SkipReqPse() == der_ok) return;
             w.object.SkipReqR2c();
             w.object.ParsReq();
         }},
    };
    for (const auto& row : rows)
        for_each_fault(
            row.name,
            [] {
                auto world = std::make_unique<World>();
                world->dir.write("cert", std::string(cert.begin(), cert.end()));
                return world;
            },
            [&](auto& world) { row.run(*world); });
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
        if (refusal(der) != 1) continue;
        expect_same(der, cert.get());
        read++;
    }
    EXPECT_GT(read, all / 2);
    EXPECT_GT(all, 50);
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
        EXPECT_TRUE(cert.GetSubjectFullName(name) && name == full_name);
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
