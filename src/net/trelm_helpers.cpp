// What the bridge's operations share: errors of the provider, its blocks and its texts.
#include "net/mg_trelm.h"
#include "net/provider_owners.h"

#include <limits>
#include <memory>
#include <stdexcept>

using namespace vorma;

void MGTrelm::IfError(uint32_t code, MGErr& err, const char* mess_2, const char* func_2) {
    at_edge("MGTrelm::IfError", [&] {
        if (code == 0) return;
        FillErrorLineEx(context, err);
        err.uint32_param = code;
        if (functions.GetErrorText) err.err_description = GetErrorText(code);
        fail(err, mess_2, func_2);
    });
}

void MGTrelm::IfErrLib(MGErr& err) const {
    at_edge("MGTrelm::IfErrLib", [&] {
        if (!library) fail(err, "Не загружена библиотека криптопровайдера", "(!library)");
    });
}

void MGTrelm::IfErrContext(MGErr& err) const {
    at_edge("MGTrelm::IfErrContext", [&] {
        IfErrLib(err);
        if (!context) fail(err, "Не выполнена инициализация криптографического контекста", "(!context)");
    });
}

void MGTrelm::IfErrSession(MGErr& err) const {
    at_edge("MGTrelm::IfErrSession", [&] {
        IfErrContext(err);
        if (!session) fail(err, "Не создан TLS контекст", "(!session)");
    });
}

void MGTrelm::IfTrelmEVerify(verify_result& result, MGErr& err, const char* mess_2, const char* func_2) {
    at_edge("MGTrelm::IfTrelmEVerify", [&] {
        const auto release = [this](verify_result* r) {
            if (functions.FreeVerifyResult) functions.FreeVerifyResult(context, r);
        };
        const std::unique_ptr<verify_result, decltype(release)> owner(&result, release);
        err.uint32_2_param = result.count;
        err.uint32_param = result.count != 0 ? result.codes[0] : trelm_bad_signature;
        err.err_description = GetErrorText(err.uint32_param);
        fail(err, mess_2, func_2);
    });
}

std::string MGTrelm::GetErrorText(uint32_t code) {
    return at_edge("MGTrelm::GetErrorText", [&] {
        MGErr err = error_of("MGTrelm::GetErrorText", "Ошибка получения текста ошибки криптопровайдера");
        IfErrLib(err);
        constexpr uint32_t size = 4096;
        std::string text(size, '\0');
        functions.GetErrorText(code, text.data(), size);
        return Ansi1251toUtf8(text.c_str());
    });
}

void MGTrelm::FillErrorLineEx(void* of_context, MGErr& err) {
    at_edge("MGTrelm::FillErrorLineEx", [&] {
        if (!functions.GetErrorLineEx || !of_context) return;
        ProviderBlock what(functions.FreeMem, of_context), file(functions.FreeMem, of_context),
            more(functions.FreeMem, of_context);
        uint32_t line = 0;
        if (functions.GetErrorLineEx(of_context, &what.block, &file.block, &line, &more.block) != 0) return;
        err.opt_param = MemBlkToString(what.block);
        err.str_param = "Файл:[" + MemBlkToString(file.block) + "], Строка:[" + std::to_string(line) + "]";
        err.ext_param = MemBlkToString(more.block);
    });
}

std::string MGTrelm::MemBlkToString(const mem_blk& block) {
    return at_edge("MGTrelm::MemBlkToString", [&]() -> std::string {
        if (!block.data || block.size == 0) return "";
        return Ansi1251toUtf8({static_cast<const char*>(block.data), block.size});
    });
}

void MGTrelm::MemBlkFree(void* of_context, mem_blk& block) {
    if (block.data && functions.FreeMem) functions.FreeMem(of_context, block.data);
    block = {};
}

void MGTrelm::fill_mem_blk_from_data(mem_blk& block, const std::vector<uint8_t>& data) {
    at_edge("MGTrelm::fill_mem_blk_from_data", [&] {
        if (data.size() > std::numeric_limits<uint32_t>::max()) throw std::length_error("mem_blk");
        block = {};
        if (data.empty()) return;
        block.size = static_cast<uint32_t>(data.size());
        block.data = const_cast<uint8_t*>(data.data()); // the provider only reads it
    });
}

void MGTrelm::copy_mem_blk_to_data(const mem_blk& block, std::vector<uint8_t>& data) {
    data.clear();
    copy_mem_blk_add_to_data(block, data);
}

void MGTrelm::copy_mem_blk_add_to_data(const mem_blk& block, std::vector<uint8_t>& data) {
    at_edge("MGTrelm::copy_mem_blk_add_to_data", [&] {
        const auto* bytes = static_cast<const uint8_t*>(block.data);
        if (bytes) data.insert(data.end(), bytes, bytes + block.size);
    });
}

void MGTrelm::conv_trelm_ansy1251_to_lower_utf8(const char* text, std::string& out) {
    conv_trelm_ansy1251_to_lower_utf8_len(text, text ? std::char_traits<char>::length(text) : 0, out);
}

void MGTrelm::conv_trelm_ansy1251_to_lower_utf8_len(const char* text, size_t length, std::string& out) {
    at_edge("MGTrelm::conv_trelm_ansy1251_to_lower_utf8_len", [&] {
        out = text ? LowerUtf8(Ansi1251toUtf8({text, length})) : std::string();
    });
}
