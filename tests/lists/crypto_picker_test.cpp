// The choice of a crypto profile: what is asked of the provider, and what becomes of its answer in the profile editor.
#include "lists/crypto_picker.h"

#include "lists/lists_fixture.h"
#include "net/provider.h"
#include "support/error_of.h"
#include "support/provider/stand_in.h"

namespace {

using Rows = std::vector<std::vector<std::string>>;

// A full profile, then one that lacks values.
const Rows in_provider = {{"\xCF\xF0\xEE\xF4\xE8\xEB\xFC", "/psp", "/lsp", "ldap://a"}, {"second", "", "/lsp2", ""}};
const Rows shown = {{"Профиль", "/psp", "/lsp", "ldap://a"}, {"second", "", "/lsp2", ""}};

class CryptoPickerTest : public ListsTest {
protected:
    CryptoPickerTest() {
        provider_stand_in.profiles = in_provider;
        config.crypto_name = "was";
        enter(editor(), "entry_crypto_profile=typed;entry_psp=typed;entry_lsp=typed;entry_ldap=typed");
    }
    static UiWindow editor() { return UiWindow(ConfigDialog->window); }
    std::string chosen() const { return config.crypto_name + "|" + config.psp + "|" + config.lsp + "|" + config.ldap; }
    static std::string entries() {
        return editor().entry("entry_crypto_profile") + "|" + editor().entry("entry_psp") + "|" +
               editor().entry("entry_lsp") + "|" + editor().entry("entry_ldap");
    }

    // Opens the list, selects the rows and presses the button.
    void pick(const std::vector<int>& rows, const char* button) {
        script.when("dialog_crypto", [=](UiWindow window) {
            window.select("crypto_tree_view", rows);
            window.click(button);
        });
    }

    ProviderTest provider;
    OpenDialog main_window{ProfileDialog, "window_profile", ""}; // errors are shown over it
};

} // namespace

// Each call fails once; when none is left to fail, the list is there.
TEST(CryptoProfiles, AreListedOrTheFailureIsToldAndNothingIsLeft) {
    for (int call = 1;; ++call) {
        SCOPED_TRACE(call);
        const ProviderTest provider;
        provider_stand_in.profiles = in_provider;
        provider_stand_in.fail_call = call;
        std::vector<MGCrypto> list;
        MGErr err;
        try {
            get_trelm_context(list);
        } catch (const MGErr& thrown) {
            err = thrown;
        }
        EXPECT_EQ(err.func_2, provider_stand_in.failed);
        if (err.func_2.empty()) {
            Rows rows;
            for (const MGCrypto& crypto : list) rows.push_back({crypto.name, crypto.psp, crypto.lsp, crypto.ldap});
            EXPECT_EQ(rows, shown);
            break;
        }
        EXPECT_EQ(err.num_param, stand_in_failure);
        EXPECT_EQ(err.err_code, call == 1 ? 0 : call - 2) << "the index of the profile";
    }
}

TEST_F(CryptoPickerTest, AChoiceGoesToTheProfileAndItsValuesToTheEntries) {
    script.when("dialog_crypto", [](UiWindow window) { EXPECT_EQ(window.table("crypto_tree_view"), shown); });
    pick({0}, "button_crypto_ok");
    open("button_store_fill");
    EXPECT_EQ(chosen(), "Профиль|/psp|/lsp|ldap://a");
    EXPECT_EQ(entries(), chosen());

    pick({1}, "button_crypto_ok");
    open("button_store_fill");
    EXPECT_EQ(chosen(), "second||/lsp2|");
    EXPECT_EQ(entries(), "second|/psp|/lsp2|ldap://a") << "the entries of empty values stay";
}

TEST_F(CryptoPickerTest, WithoutAChoiceNothingChanges) {
    pick({0}, "button_crypto_cancel");
    open("button_store_fill");
    provider_stand_in.profiles.clear();
    pick({}, "button_crypto_ok");
    script.box("Информационное сообщение", "Для установки криптографического профиля нужно выбрать его в списке",
               GTK_MESSAGE_INFO, GTK_RESPONSE_OK);
    open("button_store_fill");
    provider_library = "/absent.so"; // there is only a box then
    script.refusal(testing::HasSubstr("Ошибка подключения динамической библиотеки"));
    open("button_store_fill");

    EXPECT_TRUE(script.finished());
    EXPECT_EQ(CryptoDialog, nullptr);
    EXPECT_EQ(chosen(), "was|||");
    EXPECT_EQ(entries(), "typed|typed|typed|typed");
}
