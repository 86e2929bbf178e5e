// Any bytes as a certificate, as a request and as an envelope of a request; every getter on what came of them.
#include "cert/mg_cert.h"

namespace {

uint32_t seen; // keeps what was read from being optimised away

void touch(const uint8_t* data, uint32_t length) {
    for (uint32_t i = 0; i < length; i++) seen += data[i];
}

void touch(std::string_view text) {
    for (char c : text) seen += static_cast<uint8_t>(c);
}

void touch_fields(const MGCert& cert) {
    const uint8_t* data = nullptr;
    uint32_t length = 0;
    using GetBytes = bool (MGCert::*)(const uint8_t*&, uint32_t&) const;
    for (GetBytes get : {&MGCert::GetSerial, &MGCert::GetPublKey, &MGCert::GetSignedData, &MGCert::GetSign,
                         &MGCert::GetSubjKeyId, &MGCert::GetReqData})
        if ((cert.*get)(data, length)) touch(data, length);
    if (cert.has_publ_bits) touch(cert.publ_bits, cert.publ_bits_length);
    for (uint32_t i = 0; i < cert.extensions.count; i++)
        touch(cert.extensions.items[i].value, cert.extensions.items[i].value_length);

    std::string_view a, b, c;
    using GetOid = bool (MGCert::*)(std::string_view&, std::string_view&, std::string_view&) const;
    for (GetOid get : {&MGCert::GetSignHashAlg, &MGCert::GetPublSignAlg, &MGCert::GetPublInitAlg,
                       &MGCert::GetPublHashAlg, &MGCert::GetSignAlg})
        if ((cert.*get)(a, b, c)) touch(a), touch(b), touch(c);
    if (cert.GetIssuerFullName(a)) touch(a);
    if (cert.GetSubjectFullName(a)) touch(a);
    const DER_S_PREV_CERT_LINK* link = nullptr;
    if (!cert.GetPrevCertLink(link)) return;
    touch(link->key_id, link->key_id_length);
    touch(link->serial, link->serial_length);
    touch(link->issuer.text);
}

void touch_lists(const MGCert& cert) {
    std::string_view a, b, c, d;
    const uint8_t* data = nullptr;
    uint32_t length = 0;
    for (uint32_t i = 0; i < 10; i++) cert.GetKeyUsage(i, a, b, c);
    for (uint32_t i = 0; cert.GetExtKeyUsage(i, a, b, c); i++) touch(c);
    for (uint32_t i = 0; cert.GetCertPolicies(i, a, b, c); i++) touch(c);
    for (uint32_t i = 0; cert.GetEmail(i, a); i++) touch(a);
    for (uint32_t i = 0; cert.GetDns(i, a); i++) touch(a);
    for (uint32_t i = 0; cert.GetUrl(i, a); i++) touch(a);
    for (uint32_t i = 0; cert.GetIp(i, a, data, length); i++) touch(a), touch(data, length);
    for (uint32_t i = 0; cert.GetOther(i, a, b, c, d); i++) touch(a), touch(c), touch(d);
    if (cert.GetNameOther("1", a)) touch(a);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const auto length = static_cast<uint32_t>(size);
    MGCert cert(data, length);
    cert.ParsCert();
    cert.ParsCommon(); // again: nothing that was found is looked for twice
    cert.ParsExtensions();
    touch_fields(cert);
    touch_lists(cert);

    for (uint32_t (MGCert::*skip)() : {&MGCert::SkipReqR2c, &MGCert::SkipReqPse}) {
        cert.Init(data, length);
        if ((cert.*skip)() != der_ok && cert.IsReqPse()) continue;
        cert.ParsReq();
        touch_fields(cert);
        touch_lists(cert);
    }
    return 0;
}
