// The bridge from the service to the closed crypto provider: loads its library, holds its functions, its contexts and
// one TLS session, and turns its calls into ours: byte vectors in and out, MGErr on failure, error texts in UTF-8. It
// moves no byte over a network: that is done by MGSocket. The editor doesn't use it.
//
// Life: InitLib, InitConnect, Initialize, then work, then Clear, which the destructor does too. What lacks the library,
// the context or the session that it needs is refused with an MGErr. One object serves one thread at a time. An MGErr
// from a call of the provider holds its code in uint32_param and the code's text in err_description, and where the
// error arose in opt_param, str_param and ext_param.
#pragma once

#include "../app/mg_err.h"
#include "../runtime/mg_file.h"
#include "provider.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vorma {
class ProviderLibrary;
}

// The functions of the provider that the bridge fetches, in this order; their names there begin with "TRELM_".
// clang-format off
#define TRELM_FUNCTIONS(function) \
    function(InitMinimal) function(InitializeEx) function(Uninitialize) function(FreeMem) function(GetErrorText) \
    function(VerifyCert) function(FreeCert) function(VerifyCertificatePolicy) function(ParseCert) function(ImportMem) \
    function(ParseBasicConstraintsEx) function(ParseCrl) function(FreeCrl) function(VerifyCrlPolicy) \
    function(GetErrorLineEx) \
    function(TlsSessionCreate) function(TlsSessionDestroy) function(TlsSessionHandshake) \
    function(TlsSessionComplete) function(TlsSessionQuery) function(TlsSessionWrite) function(TlsSessionRead) \
    function(CmsStrDetSignInitMem) function(CmsStrDetSignUpdateMem) function(CmsStrDetSignFinalMem) \
    function(CmsStrDetVerifyInitMem) function(CmsStrDetVerifyUpdateMem) function(CmsStrDetVerifyFinalMem) \
    function(FreeVerifyResult) \
    function(StrHashInitMem) function(StrHashUpdateMem) function(StrHashFinalMem)
// clang-format on

// All null, or all fetched.
struct trelm_functions {
#define TRELM_MEMBER(name) decltype(&TRELM_##name) name = nullptr; // NOLINT(bugprone-macro-parentheses)
    TRELM_FUNCTIONS(TRELM_MEMBER)
#undef TRELM_MEMBER
};

// How far the bytes from the peer are taken from the socket, counted in TLS records: see MGSocket::RecvAuth.
struct TlsRecordPosition {
    uint8_t header[5] = {}; // of the present record: type, version, length
    size_t known = 0;       // bytes of it
    size_t left = 0;        // bytes known to belong to the record and not yet taken
};

class MGTrelm : public MGFile {
public:
    trelm_functions functions;
    trelm_connect connect;
    void* context = nullptr;     // the full context; null when not initialised
    void* min_context = nullptr; // tells the place of an error while there is no full context
    void* session = nullptr;     // the TLS session; null when none
    bool shared = false;         // library and context were taken over from another object
    TlsRecordPosition position;  // of the session
    // Several objects may hold the library and the full context: what ends last gives them back.
    std::shared_ptr<vorma::ProviderLibrary> library;
    std::shared_ptr<void> min_context_owner, context_owner;

    MGTrelm() = default;
    // Clear; a failure goes to this object's log.
    ~MGTrelm();

    // --- trelm_life: library and contexts. ---

    // Makes `other`, cleared first, work on this object's library and context, with a session of its own. Either may
    // end first.
    void CopyTrelm(MGTrelm& other);
    // Loads provider_library, after Clear. On failure the object stays unloaded.
    void InitLib();
    // The texts are not copied: they must live until Initialize is done.
    void InitConnect(uint32_t flags, const std::string& text_1, const std::string& text_2, const std::string& text_3,
                     const std::string& text_4);
    // Opens both contexts, after UnInitialize; an object that shared another's has its own then.
    void Initialize();
    bool IsInitialize() const { return context != nullptr; }
    // Ends the session and gives up both contexts. UnInitLib gives up the library too, Clear also forgets that they
    // were shared. All of it even if the session's end fails, which is then thrown.
    void UnInitialize();
    void UnInitLib();
    void Clear();

    // --- trelm_tls: the session. The bytes that go out are for the peer. ---

    // A session as client, with the peer's name, or as server, with an empty one. What the two options choose is the
    // provider's. An earlier session is ended first.
    void TlsCreate(const std::string& name, bool client_option, bool server_option);
    // Without a session nothing. Afterwards there is none, even after a failure: it is never used again.
    void TlsDestroy();
    // One step of the handshake; a client begins with no input. output is replaced.
    void TlsHandshake(const std::vector<uint8_t>& input, std::vector<uint8_t>& output);
    // Whether the handshake has ended.
    bool TlsComplete();
    // Data of the session; 1 asks for the peer's certificate.
    void TlsQuery(uint32_t what, std::vector<uint8_t>& output);
    // Encrypts into output.
    void TlsWrite(const std::vector<uint8_t>& input, std::vector<uint8_t>& output);
    // Decrypts into output, or with append to its end. False, output unchanged, when more input is needed.
    bool TlsRead(const std::vector<uint8_t>& input, std::vector<uint8_t>& output, bool append);

    // --- trelm_files: detached signatures. The file is read in pieces of buffer_size bytes, which may not be 0. ---

    void SignFileDetached(const std::string& file, const std::string& signature_file, uint32_t buffer_size);
    // Throws if the signature isn't one of the file. hash becomes the file's GOST R 34.11-2012 hash of 256 bits, taken
    // in the same reading; empty after a failure.
    void VerifyFileDetached(const std::string& file, const std::string& signature_file, uint32_t buffer_size,
                            std::vector<uint8_t>& hash);

    // --- trelm_helpers: errors, blocks and texts. ---

    // Throw err unless the library is loaded, and there is a full context, and a session.
    void IfErrLib(MGErr& err) const;
    void IfErrContext(MGErr& err) const;
    void IfErrSession(MGErr& err) const;
    // Throws err, completed, unless the code is 0. The place is that of the full context.
    void IfError(uint32_t code, MGErr& err, const char* mess_2, const char* func_2);
    // Always throws err, with the first code of the result, or that of a bad signature where it names none; releases
    // the result.
    void IfTrelmEVerify(verify_result& result, MGErr& err, const char* mess_2, const char* func_2);
    std::string GetErrorText(uint32_t code);
    // Where the last error of the context arose; leaves err as it is if the provider doesn't tell.
    void FillErrorLineEx(void* of_context, MGErr& err);
    static std::string MemBlkToString(const mem_blk& block);
    // Gives the block's data back, if it has any, and clears it.
    void MemBlkFree(void* of_context, mem_blk& block);
    // Points the block at the vector's bytes, which must outlive it.
    static void fill_mem_blk_from_data(mem_blk& block, const std::vector<uint8_t>& data);
    // data becomes a copy of the block, or gets it at its end.
    static void copy_mem_blk_to_data(const mem_blk& block, std::vector<uint8_t>& data);
    static void copy_mem_blk_add_to_data(const mem_blk& block, std::vector<uint8_t>& data);
    // CP1251 to UTF-8 in lower case; null gives an empty text.
    static void conv_trelm_ansy1251_to_lower_utf8(const char* text, std::string& out);
    static void conv_trelm_ansy1251_to_lower_utf8_len(const char* text, size_t length, std::string& out);
};
