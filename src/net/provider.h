// The closed crypto provider, as its callers see it: a shared library that is loaded at run time and may be absent.
// Nothing links it: the functions are declared for their types, and fetched by name from provider_library. They give a
// code, 0 for success. Texts that come from it are in CP1251 where told. Any thread may
// convert texts; provider_library is set before threads start, and what its functions bear is the provider's to say.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vorma {

// Where the library lies; a test points it to a stand-in.
extern std::string provider_library;

} // namespace vorma

// Codes with a meaning of their own.
inline constexpr uint32_t trelm_bad_signature = 0xe0700019;     // CmsStrDetVerifyFinalMem: verify_result tells why
inline constexpr uint32_t trelm_handshake_goes_on = 0xe0700184; // TlsSessionComplete
inline constexpr uint32_t trelm_more_input = 0xe0700190;        // TlsSessionRead
inline constexpr uint32_t trelm_no_more_profiles = 0xe0d5001a;  // QueryRegistryProfileEx: past the last one

// A block of memory. One that the provider hands out is released by TRELM_FreeMem with its data.
struct mem_blk {
    uint32_t size = 0;
    void* data = nullptr; // zero-terminated where it is a text; null when there is nothing
};

// Why a signature failed; filled by the provider, released by TRELM_FreeVerifyResult.
struct verify_result {
    uint32_t count = 0;
    uint32_t* codes = nullptr;
};

// Parameters of TRELM_InitializeEx.
struct trelm_connect {
    size_t size = 0; // of this record
    uint32_t flags = 0;
    const char* texts[4] = {}; // the last is null where it would be empty
};
static_assert(sizeof(trelm_connect) == 48);

// Parameters of the functions for detached signatures. Only the first word is known; there is room for what the
// provider may expect behind it.
struct trelm_cms_parameters {
    uint32_t words[64] = {};
};

// Contexts, sessions and the states of signatures, checks and hashes are opaque. A function that ends one ends it even
// if it fails, and after a failed update the state is gone.
extern "C" {
uint32_t TRELM_InitMinimal(void** context);
uint32_t TRELM_InitializeEx(uint32_t, const trelm_connect* connect, void** context);
uint32_t TRELM_Uninitialize(void* context);
uint32_t TRELM_FreeMem(void* context, void* data);
uint32_t TRELM_GetErrorText(uint32_t code, char* buffer, uint32_t size); // CP1251
// The place of the last error: two texts in CP1251, a line number, a third text.
uint32_t TRELM_GetErrorLineEx(void* context, mem_blk*, mem_blk*, uint32_t* line, mem_blk*);
// Fetched but never called, so that their arguments don't matter here.
void TRELM_VerifyCert();
void TRELM_FreeCert();
void TRELM_VerifyCertificatePolicy();
void TRELM_ParseCert();
void TRELM_ImportMem();
void TRELM_ParseBasicConstraintsEx();
void TRELM_ParseCrl();
void TRELM_FreeCrl();
void TRELM_VerifyCrlPolicy();

uint32_t TRELM_TlsSessionCreate(void* context, const char* name, void** session, uint32_t flags);
uint32_t TRELM_TlsSessionDestroy(void* context, void* session);
uint32_t TRELM_TlsSessionHandshake(void* context, void* session, const mem_blk* in, mem_blk* out);
uint32_t TRELM_TlsSessionComplete(void* context, void* session);
uint32_t TRELM_TlsSessionQuery(void* context, void* session, uint32_t what, mem_blk* out);
uint32_t TRELM_TlsSessionWrite(void* context, void* session, const mem_blk* in, mem_blk* out);
uint32_t TRELM_TlsSessionRead(void* context, void* session, const mem_blk* in, mem_blk* out);

uint32_t TRELM_CmsStrDetSignInitMem(void* context, const trelm_cms_parameters*, const mem_blk* in, void** state);
uint32_t TRELM_CmsStrDetSignUpdateMem(void* context, const trelm_cms_parameters*, void* state, const mem_blk* data);
uint32_t TRELM_CmsStrDetSignFinalMem(void* context, const trelm_cms_parameters*, void* state, mem_blk* signature);
uint32_t TRELM_CmsStrDetVerifyInitMem(void* context, const trelm_cms_parameters*, const mem_blk* signature,
                                      void** state);
uint32_t TRELM_CmsStrDetVerifyUpdateMem(void* context, const trelm_cms_parameters*, void* state, const mem_blk* data);
uint32_t TRELM_CmsStrDetVerifyFinalMem(void* context, const trelm_cms_parameters*, void* state, void*, verify_result*);
uint32_t TRELM_FreeVerifyResult(void* context, verify_result*);
uint32_t TRELM_StrHashInitMem(void* context, const char* algorithm, void** state);
uint32_t TRELM_StrHashUpdateMem(void* context, void* state, const mem_blk* data);
uint32_t TRELM_StrHashFinalMem(void* context, void* state, mem_blk* hash);

// The crypto profile of an index, from 0: the name in CP1251, the other three as plain bytes.
uint32_t TRELM_QueryRegistryProfileEx(void* context, mem_blk* name, mem_blk* psp, mem_blk* lsp, mem_blk* ldap,
                                      uint32_t index);
}

// The text converted from CP1251 to UTF-8, or from UTF-8 to CP1251, as far as it could be; up to its first zero byte.
std::string Ansi1251toUtf8(std::string text);
std::string Utf8toAnsi1251(std::string text);
