// The provider's library and its contexts.
#include "app/mg_err.h"
#include "net/mg_trelm.h"

MGTrelm::~MGTrelm() {
    try {
        Clear();
    } catch (MGErr& err) {
        PrintErrInLogFile(err);
    }
}

void MGTrelm::CopyTrelm(MGTrelm& other) {
    at_edge("MGTrelm::CopyTrelm", [&] {
        if (&other == this) return;
        other.Clear();
        other.functions = functions;
        other.context = context;
        other.shared = true;
    });
}

void MGTrelm::InitLib() {
    at_edge("MGTrelm::InitLib", [&] {
        Clear();
        try {
            LoadLib(provider_library.c_str());
#define TRELM_FETCH(name) functions.name = reinterpret_cast<decltype(functions.name)>(GetLibFunc("TRELM_" #name));
            TRELM_FUNCTIONS(TRELM_FETCH)
#undef TRELM_FETCH
        } catch (...) {
            UnInitLib();
            throw;
        }
    });
}

void MGTrelm::InitConnect(uint32_t flags, const std::string& text_1, const std::string& text_2,
                          const std::string& text_3, const std::string& text_4) {
    connect = {sizeof connect,
               flags,
               {text_1.c_str(), text_2.c_str(), text_3.c_str(), text_4.empty() ? nullptr : text_4.c_str()}};
}

void MGTrelm::Initialize() {
    at_edge("MGTrelm::Initialize", [&] {
        MGErr err = error_of("MGTrelm::Initialize", "Ошибка функции инициализации криптографического контекста");
        const auto take_code = [&](uint32_t code) {
            err.uint32_param = code;
            err.err_description = GetErrorText(code);
        };
        UnInitialize();
        if (const uint32_t code = functions.InitMinimal(&min_context); code != 0) {
            take_code(code);
            fail(err, "Ошибка получения минимального криптографического контекста", "TRELM_InitMinimal");
        }
        if (const uint32_t code = functions.InitializeEx(1, &connect, &context); code != 0) {
            FillErrorLineEx(min_context, err);
            take_code(code);
            fail(err, "Ошибка получения криптографического контекста", "TRELM_InitializeEx");
        }
    });
}

void MGTrelm::UnInitialize() {
    if (context && !shared) functions.Uninitialize(context);
    context = nullptr;
    if (min_context) functions.Uninitialize(min_context);
    min_context = nullptr;
}

void MGTrelm::UnInitLib() {
    if (!shared) UnloadLib();
    functions = {};
}

void MGTrelm::Clear() {
    at_edge("MGTrelm::Clear", [&] {
        const auto release = [this] {
            UnInitialize();
            UnInitLib();
            shared = false;
        };
        try {
            TlsDestroy();
        } catch (...) {
            release();
            throw;
        }
        release();
    });
}
