// A stand-in of the crypto provider: the same functions, with sessions, signatures and hashes by OpenSSL. TLS 1.2 of a
// self-signed certificate; signatures are CMS; the hash is SHA-256 whatever is asked for. Its texts are in CP1251.
#include "net/provider.h"
#include "support/provider/stand_in.h"

#include <openssl/cms.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <cstdlib>
#include <cstring>
#include <memory>

extern ProviderStandIn provider_stand_in __attribute__((weak)); // the program's, if it has one

namespace {

template <auto release>
struct Releaser {
    template <class T>
    void operator()(T* thing) const {
        release(thing);
    }
};
using Key = std::unique_ptr<EVP_PKEY, Releaser<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Releaser<X509_free>>;
using Settings = std::unique_ptr<SSL_CTX, Releaser<SSL_CTX_free>>;
using Connection = std::unique_ptr<SSL, Releaser<SSL_free>>;
using Bio = std::unique_ptr<BIO, Releaser<BIO_free>>;
using Cms = std::unique_ptr<CMS_ContentInfo, Releaser<CMS_ContentInfo_free>>;

enum Kind : char { context_kind = 'c', block_kind = 'b', session_kind = 't', state_kind = 's', result_kind = 'r' };

// What lies behind the opaque pointers.
struct Context {
    Key key;
    Certificate certificate;
};

struct Session {
    Settings settings;
    Connection ssl;
};

struct Signing {
    std::string data;
};

struct Checking {
    std::string data;
    Cms signature;
};

struct Hashing {
    std::string data;
};

ProviderStandIn& record() {
    static ProviderStandIn own;
    return &provider_stand_in ? provider_stand_in : own;
}

// Counts a call that can be made to fail; true if this one is to.
bool fails(const char* function) {
    ProviderStandIn& r = record();
    const std::lock_guard lock(r.mutex);
    ++r.calls;
    if (r.calls != r.fail_call && r.fail_function != function) return false;
    r.fail_function.clear();
    r.failed = function;
    return true;
}

void misuse(const std::string& what) {
    ProviderStandIn& r = record();
    const std::lock_guard lock(r.mutex);
    r.misuses.push_back(what);
}

template <class T>
T* hand_out(Kind kind, T* thing) {
    ProviderStandIn& r = record();
    const std::lock_guard lock(r.mutex);
    r.live.emplace(kind, thing);
    return thing;
}

bool is_live(Kind kind, const void* thing, const char* function) {
    ProviderStandIn& r = record();
    bool live;
    {
        const std::lock_guard lock(r.mutex);
        live = r.live.count({kind, const_cast<void*>(thing)}) != 0;
    }
    if (!live) misuse(std::string(function) + ": no such " + static_cast<char>(kind));
    return live;
}

// True if the thing was ours and hadn't come back before.
bool take_back(Kind kind, const void* thing, const char* function) {
    if (!is_live(kind, thing, function)) return false;
    ProviderStandIn& r = record();
    const std::lock_guard lock(r.mutex);
    r.live.erase({kind, const_cast<void*>(thing)});
    return true;
}

// Owns a state that has come back; null if it never was out.
template <class T>
std::unique_ptr<T> take_state(void* state, const char* function) {
    return std::unique_ptr<T>(take_back(state_kind, state, function) ? static_cast<T*>(state) : nullptr);
}

// A block of the bytes and a zero byte; none for no bytes.
void give(mem_blk* block, const void* bytes, size_t size) {
    *block = {};
    if (size == 0) return;
    char* data = hand_out(block_kind, static_cast<char*>(std::calloc(1, size + 1)));
    std::memcpy(data, bytes, size);
    block->size = static_cast<uint32_t>(size);
    block->data = data;
}

void give(mem_blk* block, const std::string& text) {
    give(block, text.data(), text.size());
}

bool is_sound(const mem_blk* in, const char* function) {
    const bool sound = (in->size == 0) == (in->data == nullptr);
    if (!sound) misuse(std::string(function) + ": a block of size " + std::to_string(in->size));
    return sound;
}

void give_waiting(Session& session, mem_blk* out) {
    char* data = nullptr;
    const long size = BIO_get_mem_data(SSL_get_wbio(session.ssl.get()), &data);
    give(out, data, static_cast<size_t>(size));
    BIO_reset(SSL_get_wbio(session.ssl.get()));
}

Certificate self_signed(EVP_PKEY* key, const std::string& name) {
    Certificate certificate(X509_new());
    X509* const x = certificate.get();
    X509_set_version(x, 2);
    ASN1_INTEGER_set(X509_get_serialNumber(x), 1);
    X509_gmtime_adj(X509_getm_notBefore(x), -3600);
    X509_gmtime_adj(X509_getm_notAfter(x), 3600);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(x), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0);
    X509_set_issuer_name(x, X509_get_subject_name(x));
    X509_set_pubkey(x, key);
    X509_sign(x, key, EVP_sha256());
    return certificate;
}

// A self-signed certificate will do, if the name is right.
int judge_peer(int ok, X509_STORE_CTX* store) {
    return ok || X509_STORE_CTX_get_error(store) == X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT;
}

// flags: 16 a server, 8 of it that asks for the client's certificate; 64 a client that shows one.
void begin(Session& session, Context& context, const char* name, uint32_t flags) {
    const bool server = flags & 16;
    session.settings.reset(SSL_CTX_new(TLS_method()));
    SSL_CTX* const settings = session.settings.get();
    SSL_CTX_set_max_proto_version(settings, TLS1_2_VERSION);
    SSL_CTX_set_session_cache_mode(settings, SSL_SESS_CACHE_OFF);
    SSL_CTX_set_options(settings, SSL_OP_NO_TICKET);
    static const unsigned char context_id[] = "stand-in";
    SSL_CTX_set_session_id_context(settings, context_id, sizeof context_id);
    if (server || flags & 64) {
        SSL_CTX_use_certificate(settings, context.certificate.get());
        SSL_CTX_use_PrivateKey(settings, context.key.get());
    }
    if (!server || flags & 8) SSL_CTX_set_verify(settings, SSL_VERIFY_PEER, judge_peer);
    session.ssl.reset(SSL_new(settings));
    SSL* const ssl = session.ssl.get();
    SSL_set_bio(ssl, BIO_new(BIO_s_mem()), BIO_new(BIO_s_mem()));
    if (server) {
        SSL_set_accept_state(ssl);
    } else {
        SSL_set_connect_state(ssl);
        SSL_set_tlsext_host_name(ssl, name);
        SSL_set1_host(ssl, name);
    }
}

bool wants_more(Session& session, int result) {
    const bool more = SSL_get_error(session.ssl.get(), result) == SSL_ERROR_WANT_READ;
    ERR_clear_error();
    return more;
}

// The session of a call, or null where the call fails, with its code.
Session* session_of(void* context, void* session, const mem_blk* in, const char* function, uint32_t& code) {
    code = stand_in_trouble;
    if (!is_live(context_kind, context, function) || !is_live(session_kind, session, function)) return nullptr;
    if (in && !is_sound(in, function)) return nullptr;
    code = fails(function) ? stand_in_failure : 0;
    Session* const s = static_cast<Session*>(session);
    if (in && in->size != 0 && code == 0) BIO_write(SSL_get_rbio(s->ssl.get()), in->data, static_cast<int>(in->size));
    return code == 0 ? s : nullptr;
}

template <class T>
uint32_t begin_state(void* context, T made, void** state, const char* function) {
    if (!is_live(context_kind, context, function)) return stand_in_trouble;
    if (fails(function)) return stand_in_failure;
    *state = hand_out(state_kind, new T(std::move(made)));
    return 0;
}

template <class T>
uint32_t feed_state(void* context, void* state, const mem_blk* data, const char* function) {
    if (!is_live(context_kind, context, function) || !is_live(state_kind, state, function)) return stand_in_trouble;
    if (!is_sound(data, function) || fails(function)) {
        take_state<T>(state, function);
        return stand_in_failure;
    }
    static_cast<T*>(state)->data.append(static_cast<const char*>(data->data), data->size);
    return 0;
}

Bio memory_of(const std::string& data) {
    return Bio(BIO_new_mem_buf(data.data(), static_cast<int>(data.size())));
}

} // namespace

extern "C" {

uint32_t TRELM_InitMinimal(void** context) {
    if (fails("TRELM_InitMinimal")) return stand_in_failure;
    *context = hand_out(context_kind, new Context);
    return 0;
}

uint32_t TRELM_InitializeEx(uint32_t one, const trelm_connect* connect, void** context) {
    if (one != 1 || connect->size != 48) misuse("TRELM_InitializeEx: arguments");
    if (fails("TRELM_InitializeEx")) return stand_in_failure;
    std::string asked = std::to_string(connect->flags);
    for (const char* text : connect->texts) asked += std::string(" ") + (text ? text : "(null)");
    record().connect_asked = asked;
    auto made = std::make_unique<Context>();
    made->key.reset(EVP_EC_gen("P-256"));
    made->certificate = self_signed(made->key.get(), record().peer_name);
    *context = hand_out(context_kind, made.release());
    return 0;
}

uint32_t TRELM_Uninitialize(void* context) {
    if (take_back(context_kind, context, "TRELM_Uninitialize")) delete static_cast<Context*>(context);
    return 0;
}

uint32_t TRELM_FreeMem(void* context, void* data) {
    is_live(context_kind, context, "TRELM_FreeMem");
    if (take_back(block_kind, data, "TRELM_FreeMem")) std::free(data);
    return 0;
}

uint32_t TRELM_GetErrorText(uint32_t code, char* buffer, uint32_t size) {
    std::snprintf(buffer, size, "\xD1\xE1\xEE\xE9 %08X", code); // "Сбой"
    return 0;
}

uint32_t TRELM_GetErrorLineEx(void* context, mem_blk* what, mem_blk* file, uint32_t* line, mem_blk* more) {
    if (!is_live(context_kind, context, "TRELM_GetErrorLineEx")) return stand_in_trouble;
    record().place_asked = context;
    give(what, "\xCA\xEB\xFE\xF7"); // "Ключ"
    if (record().place_fails) return stand_in_trouble;
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
    if (!is_live(context_kind, context, "TRELM_TlsSessionCreate")) return stand_in_trouble;
    {
        const std::lock_guard lock(record().mutex);
        record().sessions_asked.push_back(std::string(name ? name : "(null)") + " " + std::to_string(flags));
    }
    if (fails("TRELM_TlsSessionCreate")) return stand_in_failure;
    auto made = std::make_unique<Session>();
    begin(*made, *static_cast<Context*>(context), name, flags);
    *session = hand_out(session_kind, made.release());
    return 0;
}

uint32_t TRELM_TlsSessionDestroy(void* context, void* session) {
    is_live(context_kind, context, "TRELM_TlsSessionDestroy");
    if (!take_back(session_kind, session, "TRELM_TlsSessionDestroy")) return stand_in_trouble;
    delete static_cast<Session*>(session);
    return fails("TRELM_TlsSessionDestroy") ? stand_in_failure : 0;
}

uint32_t TRELM_TlsSessionHandshake(void* context, void* session, const mem_blk* in, mem_blk* out) {
    uint32_t code;
    Session* const s = session_of(context, session, in, "TRELM_TlsSessionHandshake", code);
    if (!s) return code;
    const int result = SSL_do_handshake(s->ssl.get());
    if (result != 1 && !wants_more(*s, result)) return stand_in_trouble;
    give_waiting(*s, out);
    return 0;
}

uint32_t TRELM_TlsSessionComplete(void* context, void* session) {
    uint32_t code;
    Session* const s = session_of(context, session, nullptr, "TRELM_TlsSessionComplete", code);
    if (!s) return code;
    return SSL_is_init_finished(s->ssl.get()) ? 0 : trelm_handshake_goes_on;
}

uint32_t TRELM_TlsSessionQuery(void* context, void* session, uint32_t what, mem_blk* out) {
    uint32_t code;
    Session* const s = session_of(context, session, nullptr, "TRELM_TlsSessionQuery", code);
    if (!s) return code;
    if (what != 1) return stand_in_trouble;
    unsigned char* der = nullptr;
    const int size = i2d_X509(SSL_get0_peer_certificate(s->ssl.get()), &der);
    give(out, der, size > 0 ? static_cast<size_t>(size) : 0);
    OPENSSL_free(der);
    return 0;
}

// Writing nothing gives what a new handshake has to say.
uint32_t TRELM_TlsSessionWrite(void* context, void* session, const mem_blk* in, mem_blk* out) {
    uint32_t code;
    Session* const s = session_of(context, session, nullptr, "TRELM_TlsSessionWrite", code);
    if (!s || !is_sound(in, "TRELM_TlsSessionWrite")) return code;
    SSL* const ssl = s->ssl.get();
    if (SSL_is_server(ssl) && record().renegotiate) {
        record().renegotiate = false;
        SSL_renegotiate(ssl);
        SSL_do_handshake(ssl);
    }
    if (in->size != 0 && SSL_write(ssl, in->data, static_cast<int>(in->size)) <= 0) return stand_in_trouble;
    give_waiting(*s, out);
    return 0;
}

// Decrypts all whole records that have come.
uint32_t TRELM_TlsSessionRead(void* context, void* session, const mem_blk* in, mem_blk* out) {
    uint32_t code;
    Session* const s = session_of(context, session, in, "TRELM_TlsSessionRead", code);
    if (!s) return code;
    std::string plain;
    char buffer[16384];
    int got;
    while ((got = SSL_read(s->ssl.get(), buffer, sizeof buffer)) > 0) plain.append(buffer, static_cast<size_t>(got));
    if (!wants_more(*s, got)) return stand_in_trouble;
    if (plain.empty()) return trelm_more_input;
    give(out, plain);
    return 0;
}

uint32_t TRELM_CmsStrDetSignInitMem(void* context, const trelm_cms_parameters* parameters, const mem_blk* in,
                                    void** state) {
    if (parameters->words[0] != 8 || in->size != 0 || in->data) misuse("TRELM_CmsStrDetSignInitMem: arguments");
    return begin_state(context, Signing{}, state, "TRELM_CmsStrDetSignInitMem");
}

uint32_t TRELM_CmsStrDetSignUpdateMem(void* context, const trelm_cms_parameters*, void* state, const mem_blk* data) {
    return feed_state<Signing>(context, state, data, "TRELM_CmsStrDetSignUpdateMem");
}

uint32_t TRELM_CmsStrDetSignFinalMem(void* context, const trelm_cms_parameters*, void* state, mem_blk* signature) {
    const auto signing = take_state<Signing>(state, "TRELM_CmsStrDetSignFinalMem");
    if (!signing || !is_live(context_kind, context, "TRELM_CmsStrDetSignFinalMem")) return stand_in_trouble;
    if (fails("TRELM_CmsStrDetSignFinalMem")) return stand_in_failure;
    Context& signer = *static_cast<Context*>(context);
    const Bio data = memory_of(signing->data);
    const Cms cms(CMS_sign(signer.certificate.get(), signer.key.get(), nullptr, data.get(), CMS_DETACHED | CMS_BINARY));
    unsigned char* der = nullptr;
    const int size = i2d_CMS_ContentInfo(cms.get(), &der);
    give(signature, der, static_cast<size_t>(size));
    OPENSSL_free(der);
    return 0;
}

uint32_t TRELM_CmsStrDetVerifyInitMem(void* context, const trelm_cms_parameters*, const mem_blk* signature,
                                      void** state) {
    if (!is_sound(signature, "TRELM_CmsStrDetVerifyInitMem")) return stand_in_trouble;
    const auto* der = static_cast<const unsigned char*>(signature->data);
    Cms cms(der ? d2i_CMS_ContentInfo(nullptr, &der, signature->size) : nullptr);
    ERR_clear_error();
    if (!cms) return stand_in_trouble;
    return begin_state(context, Checking{{}, std::move(cms)}, state, "TRELM_CmsStrDetVerifyInitMem");
}

uint32_t TRELM_CmsStrDetVerifyUpdateMem(void* context, const trelm_cms_parameters*, void* state, const mem_blk* data) {
    return feed_state<Checking>(context, state, data, "TRELM_CmsStrDetVerifyUpdateMem");
}

uint32_t TRELM_CmsStrDetVerifyFinalMem(void* context, const trelm_cms_parameters*, void* state, void*,
                                       verify_result* result) {
    const auto checking = take_state<Checking>(state, "TRELM_CmsStrDetVerifyFinalMem");
    if (!checking || !is_live(context_kind, context, "TRELM_CmsStrDetVerifyFinalMem")) return stand_in_trouble;
    if (fails("TRELM_CmsStrDetVerifyFinalMem")) return stand_in_failure;
    const Bio data = memory_of(checking->data);
    const bool good = CMS_verify(checking->signature.get(), nullptr, nullptr, data.get(), nullptr,
                                 CMS_BINARY | CMS_NO_SIGNER_CERT_VERIFY) == 1;
    ERR_clear_error();
    *result = {};
    if (!good && !record().no_cause) {
        result->count = 2;
        result->codes = new uint32_t[2]{stand_in_bad_digest, stand_in_trouble};
    }
    hand_out(result_kind, result);
    return good ? 0 : trelm_bad_signature;
}

uint32_t TRELM_FreeVerifyResult(void* context, verify_result* result) {
    is_live(context_kind, context, "TRELM_FreeVerifyResult");
    if (take_back(result_kind, result, "TRELM_FreeVerifyResult")) delete[] result->codes;
    return 0;
}

uint32_t TRELM_StrHashInitMem(void* context, const char* algorithm, void** state) {
    record().hash_asked = algorithm;
    return begin_state(context, Hashing{}, state, "TRELM_StrHashInitMem");
}

uint32_t TRELM_StrHashUpdateMem(void* context, void* state, const mem_blk* data) {
    return feed_state<Hashing>(context, state, data, "TRELM_StrHashUpdateMem");
}

uint32_t TRELM_StrHashFinalMem(void* context, void* state, mem_blk* hash) {
    const auto hashing = take_state<Hashing>(state, "TRELM_StrHashFinalMem");
    if (!hashing || !is_live(context_kind, context, "TRELM_StrHashFinalMem")) return stand_in_trouble;
    if (fails("TRELM_StrHashFinalMem")) return stand_in_failure;
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned size = 0;
    EVP_Digest(hashing->data.data(), hashing->data.size(), digest, &size, EVP_sha256(), nullptr);
    give(hash, digest, size);
    return 0;
}

uint32_t TRELM_QueryRegistryProfileEx(void* context, mem_blk* name, mem_blk* psp, mem_blk* lsp, mem_blk* ldap,
                                      uint32_t index) {
    if (!is_live(context_kind, context, "TRELM_QueryRegistryProfileEx")) return stand_in_trouble;
    if (fails("TRELM_QueryRegistryProfileEx")) return stand_in_failure;
    if (index >= record().profiles.size()) return trelm_no_more_profiles;
    const std::vector<std::string>& profile = record().profiles[index];
    size_t value = 0;
    for (mem_blk* block : {name, psp, lsp, ldap}) give(block, profile[value++]);
    return 0;
}
}
