// Detached signatures of files. The provider is fed piece by piece; it keeps a state between the calls.
#include "app/mg_err.h"
#include "net/mg_trelm.h"
#include "net/provider_owners.h"

#include <stdexcept>
#include <utility>

using namespace vorma;

namespace {

constexpr uint32_t sign_parameter = 8;                // first word of the parameters of a signature
constexpr char gost_hash_256[] = "1.2.643.7.1.1.2.2"; // GOST R 34.11-2012
constexpr char verify_final[] = "TRELM_CmsStrDetVerifyFinalMem";

// A signature, check or hash that the provider has begun: `end`, the call that would have given the result, releases it
// unless it is over.
template <class End>
class State {
public:
    explicit State(End end) : end_(std::move(end)) {}
    ~State() {
        if (state_) end_(state_);
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    void** begin() { return &state_; }
    void* get() const { return state_; }
    // For the last call, after which the provider has no state any more.
    void* release() { return std::exchange(state_, nullptr); }
    // Gives the code of a call back; the state is gone if it failed.
    uint32_t after(uint32_t code) {
        if (code != 0) state_ = nullptr;
        return code;
    }

private:
    End end_;
    void* state_ = nullptr;
};

// The file that an MGFile reads in pieces, closed on every path.
class Pieces {
public:
    Pieces(MGFile& reader, const std::string& file, uint32_t size) : reader_(reader), buffer_(size) {
        // Without room nothing would be read, and every file would pass for an empty one.
        if (size == 0) throw std::invalid_argument("buffer_size");
        reader_.OpenFileBuf(file);
    }
    ~Pieces() { close(); }
    Pieces(const Pieces&) = delete;
    Pieces& operator=(const Pieces&) = delete;

    void close() { reader_.CloseFileBuf(); }
    // False at the end of the file. The piece is good until the next call.
    bool next(mem_blk& piece) {
        piece.size = static_cast<uint32_t>(reader_.ReadFileBufEx(buffer_.data(), buffer_.size()));
        piece.data = buffer_.data();
        return piece.size != 0;
    }

private:
    MGFile& reader_;
    std::vector<uint8_t> buffer_;
};

MGErr file_error(const char* func_1, const char* mess_1, const std::string& file, const std::string& signature_file) {
    MGErr err = error_of(func_1, mess_1);
    err.ext_2_param = file;
    err.ext_3_param = signature_file;
    return err;
}

} // namespace

void MGTrelm::SignFileDetached(const std::string& file, const std::string& signature_file, uint32_t buffer_size) {
    at_edge("MGTrelm::SignFileDetached", [&] {
        MGErr err =
            file_error("SignFileDetached", "Ошибка выполнения отсоединенной подписи файла", file, signature_file);
        IfErrContext(err);
        Pieces pieces(*this, file, buffer_size);

        trelm_cms_parameters parameters;
        parameters.words[0] = sign_parameter;
        State sign([&](void* state) {
            ProviderBlock unwanted(functions.FreeMem, context);
            functions.CmsStrDetSignFinalMem(context, &parameters, state, &unwanted.block);
        });
        const mem_blk nothing;
        IfError(sign.after(functions.CmsStrDetSignInitMem(context, &parameters, &nothing, sign.begin())), err,
                "Ошибка функции инициализации отсоединенной подпси", "TRELM_CmsStrDetSignInitMem");
        for (mem_blk piece; pieces.next(piece);)
            IfError(sign.after(functions.CmsStrDetSignUpdateMem(context, &parameters, sign.get(), &piece)), err,
                    "Ошибка функции вычисления подписи", "TRELM_CmsStrDetSignUpdateMem");
        pieces.close();
        ProviderBlock signature(functions.FreeMem, context);
        IfError(functions.CmsStrDetSignFinalMem(context, &parameters, sign.release(), &signature.block), err,
                "Ошибка функции получения подписи", "TRELM_CmsStrDetSignFinalMem");
        WriteFile(signature_file.c_str(), static_cast<const uint8_t*>(signature.block.data), signature.block.size);
    });
}

void MGTrelm::VerifyFileDetached(const std::string& file, const std::string& signature_file, uint32_t buffer_size,
                                 std::vector<uint8_t>& hash) {
    at_edge("MGTrelm::VerifyFileDetached", [&] {
        MGErr err =
            file_error("VerifyFileDetached", "Ошибка проверки отсоединенной подписи файла", file, signature_file);
        hash.clear();
        IfErrContext(err);
        std::vector<uint8_t> signature;
        ReadFileVector(signature_file, signature);
        Pieces pieces(*this, file, buffer_size);

        const trelm_cms_parameters parameters;
        State check([&](void* state) {
            verify_result unwanted;
            const uint32_t code = functions.CmsStrDetVerifyFinalMem(context, &parameters, state, nullptr, &unwanted);
            if (code == 0 || code == trelm_bad_signature) functions.FreeVerifyResult(context, &unwanted);
        });
        mem_blk signature_block;
        fill_mem_blk_from_data(signature_block, signature);
        IfError(check.after(functions.CmsStrDetVerifyInitMem(context, &parameters, &signature_block, check.begin())),
                err, "Ошибка функции инициализации проверки отсоединенной подпси", "TRELM_CmsStrDetVerifyInitMem");

        State hashing([&](void* state) {
            ProviderBlock unwanted(functions.FreeMem, context);
            functions.StrHashFinalMem(context, state, &unwanted.block);
        });
        IfError(hashing.after(functions.StrHashInitMem(context, gost_hash_256, hashing.begin())), err,
                "Ошибка функции инициализации хэширования", "TRELM_StrHashInitMem");
        for (mem_blk piece; pieces.next(piece);) {
            IfError(check.after(functions.CmsStrDetVerifyUpdateMem(context, &parameters, check.get(), &piece)), err,
                    "Ошибка функции вычисления проверки подписи", "TRELM_CmsStrDetVerifyUpdateMem");
            IfError(hashing.after(functions.StrHashUpdateMem(context, hashing.get(), &piece)), err,
                    "Ошибка функции вычисления хэширования", "TRELM_StrHashUpdateMem");
        }
        pieces.close();

        verify_result result;
        const uint32_t code =
            functions.CmsStrDetVerifyFinalMem(context, &parameters, check.release(), nullptr, &result);
        if (code == trelm_bad_signature) IfTrelmEVerify(result, err, "Ошибка проверки подписи", verify_final);
        IfError(code, err, "Ошибка функции получения результата проверки подписи", verify_final);
        functions.FreeVerifyResult(context, &result);

        ProviderBlock hash_block(functions.FreeMem, context);
        IfError(functions.StrHashFinalMem(context, hashing.release(), &hash_block.block), err,
                "Ошибка функции вычисления хэширования", "TRELM_StrHashFinalMem");
        copy_mem_blk_to_data(hash_block.block, hash);
    });
}
