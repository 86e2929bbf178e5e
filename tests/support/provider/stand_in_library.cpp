// A stand-in of the crypto provider: the same functions, with sessions, signatures and hashes by OpenSSL. TLS 1.2 of a
// self-signed certificate; a signature is a digest; the hash is SHA-256. Its texts are in CP1251.
#include "net/provider.h"
#include "support/provider/record.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <string_view>

namespace {

// What lies behind the opaque pointers; a session is an SSL, a state of a signature, check or hash a text.
struct Context {};

// The record, locked for one expression.
struct Record {
    std::lock_guard<std::mutex> lock{provider_stand_in_mutex};
    ProviderStandIn* operator->() const { return &provider_stand_in; }
};

// The functions below know the provider's function that calls them: `function`, by default the caller.

void expect(bool condition, const char* function = __builtin_FUNCTION()) {
    EXPECT_TRUE(condition) << function << " was given what isn't its own, or wrong arguments";
}

template <class T>
T* hand_out(T* thing, const char* function = __builtin_FUNCTION()) {
    Record()->live.emplace(thing, function);
    return thing;
}

void take_back(const void* thing, const char* function = __builtin_FUNCTION()) {
    expect(Record()->live.erase(thing) != 0, function);
}

// Counts a call that can be made to fail; true if this one is to.
bool fails(const char* function = __builtin_FUNCTION()) {
    const Record r;
    if (++r->calls != r->fail_call) return false;
    r->failed = function;
    return true;
}

// The code that a call ends with at once; 0 if it goes on.
uint32_t refusal(const void* context, const void* thing, const char* function = __builtin_FUNCTION()) {
    for (const void* used : {context, thing}) expect(Record()->live.contains(used), function);
    return fails(function) ? stand_in_failure : 0;
}

std::string_view text_of(const mem_blk* in, const char* function = __builtin_FUNCTION()) {
    expect((in->size == 0) == (in->data == nullptr), function);
    return {static_cast<const char*>(in->data), in->size};
}

// A block of the bytes and a zero byte; none for no bytes.
void give(mem_blk* block, std::string_view bytes) {
    *block = {};
    if (bytes.empty()) return;
    char* data = hand_out(static_cast<char*>(std::calloc(1, bytes.size() + 1)));
    bytes.copy(data, bytes.size());
    *block = {static_cast<uint32_t>(bytes.size()), data};
}

// flags: 16 a server, 8 of it that asks for the client's certificate; 64 a client that shows one.
SSL* begin_session(const char* name, uint32_t flags) {
    const bool server = flags & 16;
    const char* const certificate = GOLDEN "/vorma.test.pem";
    expect(flags == 1 || flags == 65 || flags == 20 || flags == 24, "TRELM_TlsSessionCreate");
    SSL_CTX* const settings = SSL_CTX_new(TLS_method());
    SSL_CTX_set_max_proto_version(settings, TLS1_2_VERSION);
    SSL_CTX_set_options(settings, SSL_OP_NO_TICKET);
    SSL_CTX_load_verify_file(settings, certificate);
    if (server || flags & 64) {
        SSL_CTX_use_certificate_file(settings, certificate, SSL_FILETYPE_PEM);
        SSL_CTX_use_PrivateKey_file(settings, certificate, SSL_FILETYPE_PEM);
    }
    if (!server || flags & 8) SSL_CTX_set_verify(settings, SSL_VERIFY_PEER, nullptr);
    SSL* const ssl = SSL_new(settings);
    SSL_CTX_free(settings);
    SSL_set_bio(ssl, BIO_new(BIO_s_mem()), BIO_new(BIO_s_mem()));
    if (server) {
        SSL_set_accept_state(ssl);
    } else {
        SSL_set_connect_state(ssl);
        SSL_set1_host(ssl, name);
    }
    return ssl;
}

// The session, to which the bytes have come.
SSL* fed(void* session, const mem_blk* in, const char* function = __builtin_FUNCTION()) {
    SSL* const ssl = static_cast<SSL*>(session);
    const std::string_view bytes = text_of(in, function);
    if (!bytes.empty()) BIO_write(SSL_get_rbio(ssl), bytes.data(), static_cast<int>(bytes.size()));
    return ssl;
}

// What the session has for the peer.
void give_waiting(SSL* ssl, mem_blk* out) {
    char* data = nullptr;
    const long size = BIO_get_mem_data(SSL_get_wbio(ssl), &data);
    give(out, {data, static_cast<size_t>(size)});
    BIO_reset(SSL_get_wbio(ssl));
}

bool wants_more(SSL* ssl, int result) {
    const bool more = SSL_get_error(ssl, result) == SSL_ERROR_WANT_READ;
    ERR_clear_error();
    return more;
}

uint32_t begin_state(void* context, std::string_view first, void** state, const char* function = __builtin_FUNCTION()) {
    if (const uint32_t code = refusal(context, context, function)) return code;
    *state = hand_out(new std::string(first), function);
    return 0;
}

uint32_t end_state(void* context, void* state, std::string& gathered, const char* function = __builtin_FUNCTION()) {
    take_back(state, function);
    gathered = *std::unique_ptr<std::string>(static_cast<std::string*>(state));
    return refusal(context, context, function);
}

uint32_t feed_state(void* context, void* state, const mem_blk* data, const char* function = __builtin_FUNCTION()) {
    std::string unwanted;
    if (const uint32_t code = refusal(context, state, function)) return end_state(context, state, unwanted), code;
    static_cast<std::string*>(state)->append(text_of(data, function));
    return 0;
}

// The digest of some data, which also serves as its signature.
std::string digest_of(const std::string& data) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned size = 0;
    EVP_Digest(data.data(), data.size(), digest, &size, EVP_sha256(), nullptr);
    return {digest, digest + size};
}

} // namespace

extern "C" {

uint32_t TRELM_InitMinimal(void** context) {
    if (fails()) return stand_in_failure;
    *context = hand_out(new Context);
    return 0;
}

uint32_t TRELM_InitializeEx(uint32_t one, const trelm_connect* connect, void** context) {
    expect(one == 1 && connect->size == 48 && !(connect->texts[3] && !*connect->texts[3]));
    if (fails()) return stand_in_failure;
    *context = hand_out(new Context);
    return 0;
}

uint32_t TRELM_Uninitialize(void* context) {
    take_back(context);
    delete static_cast<Context*>(context);
    return 0;
}

uint32_t TRELM_FreeMem(void* context, void* data) {
    expect(Record()->live.contains(context));
    take_back(data);
    std::free(data);
    return 0;
}

uint32_t TRELM_GetErrorText(uint32_t code, char* buffer, uint32_t size) {
    std::snprintf(buffer, size, "\xD1\xE1\xEE\xE9 %08X", code); // "Сбой"
    return 0;
}

uint32_t TRELM_GetErrorLineEx(void* context, mem_blk* what, mem_blk* file, uint32_t* line, mem_blk* more) {
    expect(Record()->live.contains(context));
    give(what, "\xCA\xEB\xFE\xF7");   // "Ключ"
    give(file, "\xFF\xE4\xF0\xEE.c"); // "ядро.c"
    *line = 4711;
    give(more, "\xB9 7"); // "№ 7"
    return 0;
}

void TRELM_VerifyCert() {}
void TRELM_FreeCert() {}
void TRELM_VerifyCertificatePolicy() {}
void TRELM_ParseCert() {}
void TRELM_ImportMem() {}
void TRELM_ParseBasicConstraintsEx() {}
void TRELM_ParseCrl() {}
void TRELM_FreeCrl() {}
void TRELM_VerifyCrlPolicy() {}

uint32_t TRELM_TlsSessionCreate(void* context, const char* name, void** session, uint32_t flags) {
    if (const uint32_t code = refusal(context, context)) return code;
    *session = hand_out(begin_session(name, flags));
    return 0;
}

uint32_t TRELM_TlsSessionDestroy(void* context, void* session) {
    const uint32_t code = refusal(context, session);
    take_back(session);
    SSL_free(static_cast<SSL*>(session));
    return code;
}

uint32_t TRELM_TlsSessionHandshake(void* context, void* session, const mem_blk* in, mem_blk* out) {
    if (const uint32_t code = refusal(context, session)) return code;
    SSL* const ssl = fed(session, in);
    const int result = SSL_do_handshake(ssl);
    if (result != 1 && !wants_more(ssl, result)) return stand_in_trouble;
    give_waiting(ssl, out);
    return 0;
}

uint32_t TRELM_TlsSessionComplete(void* context, void* session) {
    if (const uint32_t code = refusal(context, session)) return code;
    return SSL_is_init_finished(static_cast<SSL*>(session)) ? 0 : trelm_handshake_goes_on;
}

uint32_t TRELM_TlsSessionQuery(void* context, void* session, uint32_t what, mem_blk* out) {
    expect(what == 1);
    if (const uint32_t code = refusal(context, session)) return code;
    unsigned char* der = nullptr;
    const int size = i2d_X509(SSL_get0_peer_certificate(static_cast<SSL*>(session)), &der);
    give(out, {reinterpret_cast<char*>(der), static_cast<size_t>(std::max(size, 0))});
    OPENSSL_free(der);
    return 0;
}

// Writing nothing gives what a new handshake has to say.
uint32_t TRELM_TlsSessionWrite(void* context, void* session, const mem_blk* in, mem_blk* out) {
    if (const uint32_t code = refusal(context, session)) return code;
    SSL* const ssl = static_cast<SSL*>(session);
    if (SSL_is_server(ssl) && provider_stand_in.renegotiate) {
        provider_stand_in.renegotiate = false;
        SSL_renegotiate(ssl);
        SSL_do_handshake(ssl);
    }
    const std::string_view plain = text_of(in);
    if (!plain.empty() && SSL_write(ssl, plain.data(), static_cast<int>(plain.size())) <= 0) return stand_in_trouble;
    give_waiting(ssl, out);
    return 0;
}

// Decrypts all whole records that have come.
uint32_t TRELM_TlsSessionRead(void* context, void* session, const mem_blk* in, mem_blk* out) {
    if (const uint32_t code = refusal(context, session)) return code;
    SSL* const ssl = fed(session, in);
    std::string plain;
    char buffer[16384];
    int got;
    while ((got = SSL_read(ssl, buffer, sizeof buffer)) > 0) plain.append(buffer, static_cast<size_t>(got));
    if (!wants_more(ssl, got)) return stand_in_trouble;
    if (plain.empty()) return trelm_more_input;
    give(out, plain);
    return 0;
}

uint32_t TRELM_CmsStrDetSignInitMem(void* context, const trelm_cms_parameters* parameters, const mem_blk* in,
                                    void** state) {
    expect(parameters->words[0] == 8 && in->size == 0 && !in->data);
    return begin_state(context, {}, state);
}

uint32_t TRELM_CmsStrDetSignUpdateMem(void* context, const trelm_cms_parameters*, void* state, const mem_blk* data) {
    return feed_state(context, state, data);
}

uint32_t TRELM_CmsStrDetSignFinalMem(void* context, const trelm_cms_parameters*, void* state, mem_blk* signature) {
    std::string data;
    if (const uint32_t code = end_state(context, state, data)) return code;
    give(signature, digest_of(data));
    return 0;
}

uint32_t TRELM_CmsStrDetVerifyInitMem(void* context, const trelm_cms_parameters*, const mem_blk* signature,
                                      void** state) {
    return begin_state(context, text_of(signature), state);
}

uint32_t TRELM_CmsStrDetVerifyUpdateMem(void* context, const trelm_cms_parameters*, void* state, const mem_blk* data) {
    return feed_state(context, state, data);
}

uint32_t TRELM_CmsStrDetVerifyFinalMem(void* context, const trelm_cms_parameters*, void* state, void*,
                                       verify_result* result) {
    std::string checked; // behind its signature
    if (const uint32_t code = end_state(context, state, checked)) return code;
    const bool good = checked.starts_with(digest_of(checked.substr(std::min<size_t>(32, checked.size()))));
    *result = {};
    if (!good) *result = {2, new uint32_t[2]{stand_in_bad_digest, stand_in_trouble}};
    hand_out(result);
    return good ? 0 : trelm_bad_signature;
}

uint32_t TRELM_FreeVerifyResult(void*, verify_result* result) {
    take_back(result);
    delete[] result->codes;
    return 0;
}

uint32_t TRELM_StrHashInitMem(void* context, const char* algorithm, void** state) {
    expect(algorithm == std::string("1.2.643.7.1.1.2.2"));
    return begin_state(context, {}, state);
}

uint32_t TRELM_StrHashUpdateMem(void* context, void* state, const mem_blk* data) {
    return feed_state(context, state, data);
}

uint32_t TRELM_StrHashFinalMem(void* context, void* state, mem_blk* hash) {
    std::string data;
    if (const uint32_t code = end_state(context, state, data)) return code;
    give(hash, digest_of(data));
    return 0;
}

uint32_t TRELM_QueryRegistryProfileEx(void* context, mem_blk* name, mem_blk* psp, mem_blk* lsp, mem_blk* ldap,
                                      uint32_t index) {
    if (const uint32_t code = refusal(context, context)) return code;
    if (index >= provider_stand_in.profiles.size()) return trelm_no_more_profiles;
    size_t value = 0;
    for (mem_blk* block : {name, psp, lsp, ldap}) give(block, provider_stand_in.profiles[index][value++]);
    return 0;
}
}
