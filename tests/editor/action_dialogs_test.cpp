// The five dialogs of an action's parameters: what they show of a record, what they refuse and give back.
#include "editor_fixture.h"

#include "editor/action_dialogs.h"

namespace {

using ActionDialogs = EditorTest;

std::string button(const std::string& dialog, const std::string& kind) {
    return dialog == "exist" ? "copy_" + kind + "1" : dialog + "_" + kind;
}

// While the dialog is open its record is emptied, so that the widgets alone know the values.
template <class Record>
Record confirmed(bool (*edit)(Record&), const std::string& dialog, Record record) {
    UiScript script;
    script.when("dialog_" + dialog, [&](UiWindow window) {
        record = {};
        window.click("button_" + button(dialog, "ok"));
    });
    EXPECT_TRUE(edit(record)) << dialog;
    return record;
}

TEST_F(ActionDialogs, ShowAndReadBackEveryFieldAndRememberWhatWasTyped) {
    const MGConsole console = {"a %%PASSWORD%%", true, true, "пароль"};
    const MGSend send = {"1.1.1.1", " ", 1, "from", "file", 1048576, 3600, true, "server"};
    const MGSend send_by_name = {"", "a_b!", 0, "from", "file 2", 0, 0, false, "kept though insensitive"};
    const MGCopy copy = {"from", "file 3", "to", "ADD_NUM", true, true, 65535};
    const MGRunprog runprog = {"prog", "a<|>b"};
    const MGExist exist = {"from", "file 4", "content", 86400};
    EXPECT_EQ(confirmed(set_action_console, "console", console), console);
    EXPECT_EQ(confirmed(set_action_send, "send", send), send);
    EXPECT_EQ(confirmed(set_action_send, "send", send_by_name), send_by_name);
    EXPECT_EQ(confirmed(set_action_copy, "copy", copy), copy);
    EXPECT_EQ(confirmed(set_action_copy, "copy", {"a", "file", "b", "", false, false, 0}).mode, "REPLACE");
    EXPECT_EQ(confirmed(set_action_runprog, "runprog", runprog), runprog);
    EXPECT_EQ(confirmed(set_action_exist, "exist", exist), exist);
    const std::pair<History, History> histories[] = {
        {init_console_prog, {"a %%PASSWORD%%"}},
        {init_send_ip, {"1.1.1.1"}},
        {init_send_domen, {" ", "a_b!"}},
        {init_active_file, {"file", "file 2", "file 3", "file 4"}},
        {init_run_prog, {"prog"}},
        {init_run_param, {"a<|>b"}},
        {init_exist_content, {"content"}},
    };
    for (const auto& [history, expected] : histories) EXPECT_EQ(history, expected);
}

// Opens a dialog on a new action, which must stay as it is.
void expect_cancelled(const std::string& dialog) {
    MGAction action;
    EXPECT_FALSE(dialog == "console"   ? set_action_console(action.console)
                 : dialog == "send"    ? set_action_send(action.send)
                 : dialog == "copy"    ? set_action_copy(action.copy)
                 : dialog == "runprog" ? set_action_runprog(action.runprog)
                                       : set_action_exist(action.exist));
    EXPECT_EQ(action, MGAction()) << dialog;
}

TEST_F(ActionDialogs, RefuseOneFaultAfterTheOther) {
    const std::string blank = "Запещен ввод пустых строк.";
    struct Click {
        std::string entry, text; // typed before OK is pressed
        std::string message, focus;
    };
    const std::pair<std::string, std::vector<Click>> table[] = {
        {"console", {{"console_prog", " ", blank, "console_prog"}}},
        {"send",
         {{"send_ip", " ", "Необходимо задать IP адрес или домен.", "send_ip"},
          {"send_ip", "1.2.3", "Необходимо задать IP адрес в формате NNN.NNN.NNN.NNN", "send_ip"},
          {"send_domen", "h", "Нельзя задавать IP адрес и домен одновременно. Нужен только один из двух.", "send_ip"},
          {"send_ip", "\t", blank, "send_catalog"},
          {"send_catalog", "from", blank, "send_file"}}},
        {"copy",
         {{"copy_catalog", " ", blank, "copy_catalog"},
          {"copy_catalog", "from", blank, "copy_file"},
          {"copy_file", "file", blank, "copy_catalog_to"}}},
        {"runprog", {{"run_param", "a", blank, "run_prog"}}},
        {"exist",
         {{"exist_content", "  ", blank, "exist_catalog"},
          {"exist_catalog", "from", blank, "exist_file"},
          {"exist_file", "f", "Пустая строка не должна содержать некорректные символы заполнения.", "exist_content"}}},
    };
    for (const auto& [dialog, clicks] : table) {
        UiScript script;
        for (const Click& click : clicks) {
            script.when("dialog_" + dialog, type({{click.entry, click.text}}, button(dialog, "ok")));
            script.remark(click.message);
            script.when("dialog_" + dialog,
                        [&](UiWindow window) { EXPECT_EQ(window.focus(), "entry_" + click.focus) << click.text; });
        }
        script.when("dialog_" + dialog, type({}, button(dialog, "cancel")));
        expect_cancelled(dialog);
    }
}

TEST_F(ActionDialogs, OpenTheServerNameWithTls) {
    UiScript script;
    script.when("dialog_send", [](UiWindow window) {
        EXPECT_FALSE(window.sensitive("entry_tls_server"));
        for (const bool tls : {true, false}) {
            window.set_toggle("check_tls_send", tls);
            EXPECT_EQ(window.sensitive("entry_tls_server"), tls);
        }
        window.close();
    });
    expect_cancelled("send");
}

} // namespace
