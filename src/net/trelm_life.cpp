// The provider's library and its contexts.
#include "app/mg_err.h"
#include "net/mg_trelm.h"
#include "net/provider_owners.h"

#include <utility>

namespace {

// Done at the end of a block, even if that throws.
template <class Last>
class Finally {
public:
    explicit Finally(Last last) : last_(std::move(last)) {}
    ~Finally() { last_(); }
    Finally(const Finally&) = delete;
    Finally& operator=(const Finally&) = delete;

private:
    Last last_;
};

} // namespace

using namespace vorma;

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
        other.library = library;
        other.functions = functions;
        other.context_owner = context_owner;
        other.context = context;
        other.shared = true;
    });
}

void MGTrelm::InitLib() {
    at_edge("MGTrelm::InitLib", [&] {
        Clear();
        const auto loaded = std::make_shared<ProviderLibrary>();
        trelm_functions fetched;
#define TRELM_FETCH(name) loaded->fetch(fetched.name, "TRELM_" #name);
        TRELM_FUNCTIONS(TRELM_FETCH)
#undef TRELM_FETCH
        library = loaded;
        functions = fetched;
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
        IfErrLib(err);
        UnInitialize();
        shared = false;
        void* opened = nullptr;
        if (const uint32_t code = functions.InitMinimal(&opened); code != 0) {
            take_code(code);
            fail(err, "Ошибка получения минимального криптографического контекста", "TRELM_InitMinimal");
        }
        min_context_owner = own_context(library, functions.Uninitialize, opened);
        min_context = std::exchange(opened, nullptr);
        if (const uint32_t code = functions.InitializeEx(1, &connect, &opened); code != 0) {
            FillErrorLineEx(min_context, err);
            take_code(code);
            fail(err, "Ошибка получения криптографического контекста", "TRELM_InitializeEx");
        }
        context_owner = own_context(library, functions.Uninitialize, opened);
        context = opened;
    });
}

void MGTrelm::UnInitialize() {
    at_edge("MGTrelm::UnInitialize", [&] {
        const Finally release([this] {
            context_owner.reset();
            context = nullptr;
            min_context_owner.reset();
            min_context = nullptr;
        });
        TlsDestroy();
    });
}

void MGTrelm::UnInitLib() {
    at_edge("MGTrelm::UnInitLib", [&] {
        const Finally release([this] {
            functions = {};
            library.reset();
        });
        UnInitialize();
    });
}

void MGTrelm::Clear() {
    at_edge("MGTrelm::Clear", [&] {
        const Finally release([this] { shared = false; });
        UnInitLib();
    });
}
