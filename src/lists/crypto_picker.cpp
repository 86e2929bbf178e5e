// Asking the provider for its crypto profiles, and taking the chosen one into the profile editor.
#include "lists/crypto_picker.h"

#include "app/globals.h"
#include "app/mg_err.h"
#include "dialog/make_dialog.h"
#include "lists/handlers.h"
#include "net/provider.h"
#include "runtime/mg_file.h"

#include <memory>

namespace {

// The columns of the list, the fields that a choice fills and the entries that show them.
const struct {
    std::string MGCrypto::*value;
    std::string MGConfig::*field;
    const char* entry;
} crypto_columns[] = {
    {&MGCrypto::name, &MGConfig::crypto_name, "entry_crypto_profile"},
    {&MGCrypto::psp, &MGConfig::psp, "entry_psp"},
    {&MGCrypto::lsp, &MGConfig::lsp, "entry_lsp"},
    {&MGCrypto::ldap, &MGConfig::ldap, "entry_ldap"},
};

// The provider's library with a minimal context, for as long as the list is being read.
class Provider {
public:
    explicit Provider(MGErr& err) {
        library_.LoadLib(provider_library.c_str());
        fetch(init_minimal_, "TRELM_InitMinimal");
        fetch(uninitialize_, "TRELM_Uninitialize");
        fetch(free_mem_, "TRELM_FreeMem");
        fetch(query_profile_, "TRELM_QueryRegistryProfileEx");
        err.num_param = init_minimal_(&context_);
        if (!context_) fail(err, "Ошибка получения криптографического контекста", "TRELM_InitMinimal");
        err.num_param = 0;
    }
    ~Provider() {
        if (context_) uninitialize_(context_);
    }
    Provider(const Provider&) = delete;
    Provider& operator=(const Provider&) = delete;

    // Fills the record with the profile of this index; false past the last one.
    bool query(MGErr& err, uint32_t index, MGCrypto& crypto) {
        mem_blk blocks[4];
        const uint32_t code = query_profile_(context_, &blocks[0], &blocks[1], &blocks[2], &blocks[3], index);
        if (code == trelm_no_more_profiles) return false;
        if (code != 0) {
            err.num_param = code;
            err.err_code = static_cast<int32_t>(index);
            fail(err, "Ошибка получения криптографического профиля", "TRELM_QueryRegistryProfileEx");
        }
        crypto.name = Ansi1251toUtf8(take(blocks[0]));
        crypto.psp = take(blocks[1]);
        crypto.lsp = take(blocks[2]);
        crypto.ldap = take(blocks[3]);
        return true;
    }

private:
    template <class Function>
    void fetch(Function& function, const char* name) {
        function = reinterpret_cast<Function>(library_.GetLibFunc(name));
    }

    // The block's text; the block goes back to the provider.
    std::string take(mem_blk& block) {
        if (!block.data) return "";
        const auto release = [this](void* data) { free_mem_(context_, data); };
        const std::unique_ptr<void, decltype(release)> owner(block.data, release);
        return static_cast<const char*>(block.data);
    }

    MGFile library_; // unloads the library after the context is gone
    void* context_ = nullptr;
    decltype(&TRELM_InitMinimal) init_minimal_ = nullptr;
    decltype(&TRELM_QueryRegistryProfileEx) query_profile_ = nullptr;
    decltype(&TRELM_FreeMem) free_mem_ = nullptr;
    decltype(&TRELM_Uninitialize) uninitialize_ = nullptr;
};

void choose_crypto_profile() {
    MGConfig& config = *static_cast<MGConfig*>(ConfigDialog->user_data);
    OpenDialog dialog(CryptoDialog, "dialog_crypto", "Окно установки криптографического контекста");
    std::vector<MGCrypto> profiles;
    get_trelm_context(profiles);

    GtkListStore* store = GTK_LIST_STORE(dialog->GetObject("crypto_list_store"));
    for (const MGCrypto& profile : profiles) {
        dialog->ListStoreAppend(store);
        int column = 0;
        for (const auto& row : crypto_columns) {
            const std::string& value = profile.*row.value;
            if (!value.empty()) dialog->ListStoreSetString(store, column, value.c_str());
            ++column;
        }
    }
    dialog->user_data = &config;
    if (!dialog.RunOk()) return;
    for (const auto& row : crypto_columns)
        if (!(config.*row.field).empty()) ConfigDialog->SetEntry(row.entry, (config.*row.field).c_str());
}

} // namespace

void get_trelm_context(std::vector<MGCrypto>& list) {
    at_edge("get_trelm_context", [&] {
        MGErr err = error_of("get_trelm_context", "Ошибка функции получения списка криптографических профилей");
        Provider provider(err);
        for (uint32_t index = 0;; ++index) {
            MGCrypto crypto;
            if (!provider.query(err, index, crypto)) break;
            list.push_back(std::move(crypto));
        }
    });
}

extern "C" {

// dialog_config
void fill_crypt_context(GtkButton*, gpointer) {
    at_handler(ProfileDialog, [] { choose_crypto_profile(); });
}

// dialog_crypto
void crypto_ok(GtkButton*, gpointer dialog) {
    at_handler(CryptoDialog, [&] {
        GtkListStore* store = nullptr;
        GtkTreeView* view = GTK_TREE_VIEW(CryptoDialog->GetObject("crypto_tree_view"));
        if (!CryptoDialog->TreeViewGetSelection(view, &store)) {
            CryptoDialog->MessageBox("Информационное сообщение",
                                     "Для установки криптографического профиля нужно выбрать его в списке",
                                     GTK_MESSAGE_INFO, GTK_BUTTONS_OK);
            gtk_dialog_response(GTK_DIALOG(dialog), GTK_RESPONSE_CANCEL);
            return;
        }
        MGConfig& config = *static_cast<MGConfig*>(CryptoDialog->user_data);
        int column = 0;
        for (const auto& row : crypto_columns) config.*row.field = CryptoDialog->TreeModelGetStringExt(column++);
        respond_ok(dialog);
    });
}
}
