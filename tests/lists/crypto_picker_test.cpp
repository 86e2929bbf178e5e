// Asking the provider for its crypto profiles, and the choice of one.
#include "lists/crypto_picker.h"
#include "lists/lists_fixture.h"
#include "support/error_of.h"
#include "support/provider/stand_in.h"

namespace {

// A full profile, one that lacks values, and one that no file can hold.
const Rows in_provider = {{"\xCF\xF0\xEE\xF4\xE8\xEB\xFC", "/псп", "/lsp", "ldap://a"},
                          {"second", "", "/lsp2", ""},
                          {"third", "", "/\xEF", ""}};
const Rows shown = {{"Профиль", "/псп", "/lsp", "ldap://a"}, {"second", "", "/lsp2", ""}, {"third", "", "/\uFFFD", ""}};

class CryptoPickerTest : public ListsTest {
protected:
    CryptoPickerTest() {
        provider_stand_in.profiles = in_provider;
        config.crypto_name = "was";
        editor().enter("entry_crypto_profile=typed;entry_psp=typed;entry_lsp=typed;entry_ldap=typed");
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

// Each call fails once; when none is left to fail, the list is there.
TEST(CryptoProfiles, AreListedOrTheFailureIsToldAndNothingIsLeft) {
    for (int call = 1;; ++call) {
        SCOPED_TRACE(call);
        const ProviderTest provider;
        provider_stand_in.profiles = in_provider;
        provider_stand_in.fail_call = call;
        std::vector<MGCrypto> list;
        const MGErr err = error_if_any([&] { get_trelm_context(list); });
        EXPECT_EQ(err.func_2, provider_stand_in.failed);
        if (err.func_2.empty()) {
            EXPECT_EQ(list.size(), in_provider.size());
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
    EXPECT_EQ(chosen(), "Профиль|/псп|/lsp|ldap://a");
    EXPECT_EQ(entries(), chosen());

    pick({2}, "button_crypto_ok");
    script.refusal(testing::HasSubstr("Имя локального справочника не в кодировке UTF-8"));
    script.when("dialog_crypto", [](UiWindow window) {
        gtk_widget_grab_focus(window.find("crypto_tree_view"));
        for (guint key : {GDK_KEY_Down, GDK_KEY_Return}) press_key(window.widget(), key);
    });
    open("button_store_fill");
    EXPECT_EQ(chosen(), "second||/lsp2|");
    EXPECT_EQ(entries(), "second|/псп|/lsp2|ldap://a") << "the entries of empty values stay";
}

TEST_F(CryptoPickerTest, WithoutAChoiceNothingChanges) {
    pick({0}, "button_crypto_cancel");
    open("button_store_fill");
    provider_stand_in.profiles.clear();
    pick({}, "button_crypto_ok");
    script.box("Информационное сообщение", "Для установки криптографического профиля нужно выбрать его в списке",
               GTK_MESSAGE_INFO, GTK_RESPONSE_OK);
    open("button_store_fill");
    EXPECT_EQ(chosen(), "was|||");
    EXPECT_EQ(entries(), "typed|typed|typed|typed");
}

} // namespace
