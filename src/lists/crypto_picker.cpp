// Asking the provider for its crypto profiles, and taking the chosen one into the profile editor.
#include "lists/crypto_picker.h"

#include "app/mg_err.h"
#include "config/records.h"
#include "dialog/make_dialog.h"
#include "dialog/open_dialogs.h"
#include "editor/validation.h"
#include "lists/handlers.h"
#include "net/provider_owners.h"

using namespace vorma;

namespace {

// The columns of the list, what they hold, the fields that a choice fills and the entries that show them.
const struct {
    const char* name;
    std::string MGCrypto::*value;
    std::string MGConfig::*field;
    const char* entry;
} crypto_columns[] = {
    {"Имя криптографического профиля", &MGCrypto::name, &MGConfig::crypto_name, "entry_crypto_profile"},
    {"Имя персонального справочника", &MGCrypto::psp, &MGConfig::psp, "entry_psp"},
    {"Имя локального справочника", &MGCrypto::lsp, &MGConfig::lsp, "entry_lsp"},
    {"Имя сетевого справочника", &MGCrypto::ldap, &MGConfig::ldap, "entry_ldap"},
};

// The provider's library with a minimal context, for as long as the list is being read.
class Provider {
public:
    explicit Provider(MGErr& err) {
        const auto library = std::make_shared<ProviderLibrary>();
        decltype(&TRELM_InitMinimal) init_minimal = nullptr;
        decltype(&TRELM_Uninitialize) uninitialize = nullptr;
        library->fetch(init_minimal, "TRELM_InitMinimal");
        library->fetch(uninitialize, "TRELM_Uninitialize");
        library->fetch(free_mem_, "TRELM_FreeMem");
        library->fetch(query_profile_, "TRELM_QueryRegistryProfileEx");
        void* opened = nullptr;
        err.num_param = init_minimal(&opened);
        context_ = own_context(library, uninitialize, opened);
        if (!context_) fail(err, "Ошибка получения криптографического контекста", "TRELM_InitMinimal");
        err.num_param = 0;
    }

    // Fills the record with the profile of this index; false past the last one.
    bool query(MGErr& err, uint32_t index, MGCrypto& crypto) {
        ProviderBlock name(free_mem_, context_.get()), psp(free_mem_, context_.get()), lsp(free_mem_, context_.get()),
            ldap(free_mem_, context_.get());
        const uint32_t code = query_profile_(context_.get(), &name.block, &psp.block, &lsp.block, &ldap.block, index);
        if (code == trelm_no_more_profiles) return false;
        if (code != 0) {
            err.num_param = code;
            err.err_code = static_cast<int32_t>(index);
            fail(err, "Ошибка получения криптографического профиля", "TRELM_QueryRegistryProfileEx");
        }
        crypto.name = Ansi1251toUtf8(text(name));
        crypto.psp = text(psp);
        crypto.lsp = text(lsp);
        crypto.ldap = text(ldap);
        return true;
    }

private:
    static std::string text(const ProviderBlock& of) {
        return of.block.data ? static_cast<const char*>(of.block.data) : "";
    }

    std::shared_ptr<void> context_; // with the library
    decltype(&TRELM_FreeMem) free_mem_ = nullptr;
    decltype(&TRELM_QueryRegistryProfileEx) query_profile_ = nullptr;
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
    dialog->user_data2 = &profiles;
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
    // Over the main window, although the profile editor stands above it: so it is agreed, and the failure may come
    // before there is a dialog of the list's own.
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
        // The columns show what is no UTF-8 as something else.
        const auto& profiles = *static_cast<std::vector<MGCrypto>*>(CryptoDialog->user_data2);
        const MGCrypto& chosen = profiles.at(static_cast<size_t>(CryptoDialog->TreeModelGetIndex()));
        for (const auto& row : crypto_columns)
            if (is_error_stored(CryptoDialog, row.name, chosen.*row.value,
                                "Выберите другой криптографический профиль."))
                return;
        MGConfig& config = *static_cast<MGConfig*>(CryptoDialog->user_data);
        for (const auto& row : crypto_columns) config.*row.field = chosen.*row.value;
        respond_ok(dialog);
    });
}
}
