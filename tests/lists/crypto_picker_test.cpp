// The choice of a crypto profile: what is asked of the provider, and what becomes of its answer in the profile editor.
#include "lists/crypto_picker.h"

#include "lists/lists_fixture.h"
#include "net/provider.h"
#include "support/error_of.h"
#include "support/provider/stand_in.h"

#include <dlfcn.h>

namespace {

using Rows = std::vector<std::vector<std::string>>;

// A full profile, then one that lacks values.
const Rows in_provider = {{"\xCF\xF0\xEE\xF4\xE8\xEB\xFC \xB9"
                           "1",
                           "/psp", "/lsp", "ldap://a"},
                          {"second", "", "/lsp2", ""}};
const Rows shown = {{"Профиль №1", "/psp", "/lsp", "ldap://a"}, {"second", "", "/lsp2", ""}};

Rows listed() {
    std::vector<MGCrypto> list(1);
    get_trelm_context(list);
    Rows rows;
    for (const MGCrypto& crypto : list) rows.push_back({crypto.name, crypto.psp, crypto.lsp, crypto.ldap});
    EXPECT_EQ(rows.front(), Rows::value_type(4)); // what was there before
    rows.erase(rows.begin());
    return rows;
}

class CryptoPickerTest : public ListsTest {
protected:
    CryptoPickerTest() {
        config.crypto_name = "was";
        config.ldap = "ldap://was";
        enter(editor(), "entry_crypto_profile=typed;entry_psp=typed;entry_lsp=typed;entry_ldap=typed");
    }
    static UiWindow editor() { return UiWindow(ConfigDialog->window); }
    std::string chosen() const { return config.crypto_name + "|" + config.psp + "|" + config.lsp + "|" + config.ldap; }

    void pick(const std::function<void(UiWindow)>& use) {
        script.when("dialog_crypto", use);
        open("button_store_fill");
        EXPECT_TRUE(script.finished());
        EXPECT_EQ(CryptoDialog, nullptr);
    }

    ProviderTest provider;
    OpenDialog main_window{ProfileDialog, "window_profile", ""}; // errors are shown over it
};

} // namespace

TEST(CryptoProfiles, AreThoseOfTheProvider) {
    const ProviderTest provider;
    for (const Rows& profiles : {in_provider, Rows()}) {
        provider_stand_in.profiles = profiles;
        EXPECT_EQ(listed(), profiles.empty() ? profiles : shown);
        EXPECT_FALSE(dlopen(provider_library.c_str(), RTLD_LAZY | RTLD_NOLOAD));
    }
}

TEST(CryptoProfiles, AnyFailureIsToldAndLeavesNothing) {
    struct Row {
        const char* what;
        std::function<void(const std::string& copy)> arrange;
        const char* func_1;
        const char* func_2;
        std::string str_param;
        int64_t num_param;
        int32_t err_code;
        const char* mess_2;
    };
    std::vector<Row> rows = {
        {"first call", [](auto) { provider_stand_in.fail_call = 1; }, "get_trelm_context", "TRELM_InitMinimal", "",
         stand_in_failure, 0, "Ошибка получения криптографического контекста"},
        {"first profile", [](auto) { provider_stand_in.fail_call = 2; }, "get_trelm_context",
         "TRELM_QueryRegistryProfileEx", "", stand_in_failure, 0, "Ошибка получения криптографического профиля"},
        {"after the last", [](auto) { provider_stand_in.fail_call = 4; }, "get_trelm_context",
         "TRELM_QueryRegistryProfileEx", "", stand_in_failure, 2, "Ошибка получения криптографического профиля"},
        {"no library", [](auto) { provider_library = "/absent.so"; }, "LoadLibrary", "dlopen", "/absent.so", 0, 0,
         "Ошибка подключения динамической библиотеки"},
    };
    for (const char* function :
         {"TRELM_InitMinimal", "TRELM_Uninitialize", "TRELM_FreeMem", "TRELM_QueryRegistryProfileEx"})
        rows.push_back({function, [=](const auto& copy) { ProviderTest::lack(function, copy); }, "GetLibFunc", "dlsym",
                        function, 0, 0, "Ошибка получения доступа к функции динамической библиотеки"});
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const ProviderTest provider;
        const TempDir dir;
        provider_stand_in.profiles = in_provider;
        row.arrange(dir.path("copy.so"));
        const MGErr err = error_of([] { listed(); });
        EXPECT_EQ(err.func_1, row.func_1);
        EXPECT_EQ(err.func_2, row.func_2);
        EXPECT_EQ(err.mess_2, row.mess_2);
        EXPECT_EQ(err.str_param, row.str_param);
        EXPECT_EQ(err.num_param, row.num_param);
        EXPECT_EQ(err.err_code, row.err_code);
        EXPECT_FALSE(dlopen(provider_library.c_str(), RTLD_LAZY | RTLD_NOLOAD));
    }
}

TEST_F(CryptoPickerTest, AChoiceGoesToTheProfileAndItsValuesToTheEntries) {
    provider_stand_in.profiles = in_provider;
    pick([](UiWindow window) {
        EXPECT_EQ(window.title(), "Окно установки криптографического контекста");
        EXPECT_EQ(window.table("crypto_tree_view"), shown);
        window.select("crypto_tree_view", {0});
        window.click("button_crypto_ok");
    });
    EXPECT_EQ(chosen(), "Профиль №1|/psp|/lsp|ldap://a");
    expect_shown(editor(), "entry_crypto_profile=Профиль №1;entry_psp=/psp;entry_lsp=/lsp;entry_ldap=ldap://a");

    pick([](UiWindow window) {
        window.select("crypto_tree_view", {1});
        window.click("button_crypto_ok");
    });
    EXPECT_EQ(chosen(), "second||/lsp2|"); // the entries of empty values stay
    expect_shown(editor(), "entry_crypto_profile=second;entry_psp=/psp;entry_lsp=/lsp2;entry_ldap=ldap://a");
}

TEST_F(CryptoPickerTest, WithoutAChoiceNothingChanges) {
    provider_stand_in.profiles = in_provider;
    pick([](UiWindow window) {
        window.select("crypto_tree_view", {0});
        window.click("button_crypto_cancel");
    });
    provider_stand_in.profiles.clear();
    script.when("dialog_crypto", [](UiWindow window) { window.click("button_crypto_ok"); });
    script.box("Информационное сообщение", "Для установки криптографического профиля нужно выбрать его в списке",
               GTK_MESSAGE_INFO, GTK_RESPONSE_OK);
    open("button_store_fill");
    // Without the provider there is only a box.
    provider_library = "/absent.so";
    script.refusal(testing::HasSubstr("Ошибка подключения динамической библиотеки"));
    open("button_store_fill");

    EXPECT_TRUE(script.finished());
    EXPECT_EQ(CryptoDialog, nullptr);
    EXPECT_NE(dir.read("editor.log").find("/absent.so"), std::string::npos);
    EXPECT_EQ(chosen(), "was|||ldap://was");
    expect_shown(editor(), "entry_crypto_profile=typed;entry_psp=typed;entry_lsp=typed;entry_ldap=typed");
}
