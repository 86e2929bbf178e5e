// The actions of a profile: the list and the vector stay equal whatever the user does, each level of copies drops what
// it is told to drop, and the five dialogs of an action's parameters show, refuse and give back.
#include "config/records.h"
#include "config/tokens.h"
#include "editor/action_dialogs.h"
#include "editor/action_list.h"
#include "editor_fixture.h"

#include <algorithm>

namespace {

using Selection = std::vector<int>;

MGAction action(const std::string& type, const std::string& name) {
    MGAction made;
    made.active = true;
    made.type = type;
    made.name = made.console.prog = name; // the latter goes where its row goes
    return made;
}

// dialog_config without its loop, on a working copy of the test's own.
class ActionList : public EditorTest {
protected:
    ActionList() {
        dialog->user_data = &working;
        dialog->Show();
    }
    UiWindow window() const { return UiWindow(dialog->window); }
    void show_rows(const std::string& names) {
        for (const char name : names) working.actions.push_back(action("COPYFILE", {name}));
        show_actions(*dialog, working.actions);
    }
    void press(const std::string& button, const Selection& selected) const {
        window().select("active_view", selected);
        window().click("button_active_" + button);
    }

    MGConfig working;
    OpenDialog dialog{ConfigDialog, "dialog_config", ""};
};

// The actions have names of one letter; of a replaced one the parameters stay.
TEST_F(ActionList, StoreAndVectorFollowEachButton) {
    const struct {
        const char* button;
        Selection selected;
        const char* after;
        const char* title = nullptr; // of the dialog that asks for the action
        const char* name = "";
        const char* answer = "button_active_ok";
    } steps[] = {{"down", {0, 2}, "1032456"},
                 {"up", {1, 3}, "0123456"},
                 {"top", {2, 4, 5}, "2045136"},
                 {"bottom", {1, 3}, "2413065"},
                 {"top", {0, 3}, "2413065"},
                 {"up", {0, 3}, "2413065"},
                 {"down", {2, 6}, "2413065"},
                 {"bottom", {2, 6}, "2413065"},
                 {"add", {0}, "2413065a", "Окно добавления нового действия", "a"},
                 {"insert", {1}, "2b413065a", "Окно вставки нового действия", "b"},
                 {"insert", {}, "2b413065ac", "Окно добавления нового действия", "c"},
                 {"replace", {3}, "2b4d3065ac", "Окно изменение существующего действия", "d"},
                 {"add", {}, "2b4d3065ac", "Окно добавления нового действия", "e", "button_active_cancel"},
                 {"replace", {0}, "2b4d3065ac", "Окно изменение существующего действия", "f", "button_active_cancel"}};
    show_rows("0123456");
    const auto expect_rows = [&](const std::string& names) {
        Rows rows;
        for (const MGAction& row : working.actions)
            rows.push_back({row.active ? "1" : "0", get_action_txt_type(row.type), row.name});
        EXPECT_EQ(window().table("active_view"), rows);
        std::string shown;
        for (const auto& row : rows) shown += row[2];
        EXPECT_EQ(shown, names);
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(testing::Message() << &step - steps);
        UiScript script;
        if (step.title)
            script.when("dialog_active", [&](UiWindow active) {
                EXPECT_EQ(active.title(), step.title);
                active.set_combo("combo_active_type", "SENDFILE");
                active.set_entry("entry_active_name", step.name);
                active.click(step.answer);
            });
        press(step.button, step.selected);
        expect_rows(step.after);
    }
    for (const int answer : {GTK_RESPONSE_NO, GTK_RESPONSE_YES}) {
        UiScript script;
        script.question("Вы действительно хотите удалить эти 3 выбранных правила?", answer);
        press("delete", {0, 4, 9});
        expect_rows(answer == GTK_RESPONSE_NO ? "2b4d3065ac" : "b4d065a");
    }
    window().toggle_cell("active_view", 2);
    EXPECT_EQ(window().table("active_view")[2], (Rows::value_type{"0", "Отправка файла", "d"}));
    std::string kept;
    for (const MGAction& row : working.actions) kept += row.console.prog.empty() ? "-" : row.console.prog;
    EXPECT_EQ(kept, "-41065-");
    EXPECT_EQ(std::ranges::count(working.actions, true, &MGAction::active), 6);
    EXPECT_THAT(init_action_name, testing::IsSupersetOf({"a", "b", "c", "d"}));
}

TEST_F(ActionList, AsksAndTellsByTheNumberOfSelectedRows) {
    show_rows("abcdef");
    const Rows rows = window().table("active_view");
    UiScript script;
    for (const auto& [selected, question] :
         {std::pair(Selection{2}, "это 1 выбранное правило?"), {{0, 1, 2, 3, 4}, "эти 5 выбранных правил?"}}) {
        script.question(std::string("Вы действительно хотите удалить ") + question, GTK_RESPONSE_NO);
        press("delete", selected);
    }
    script.remark("Выбраны несколько строк.\nДля вставки нового правила необходимо выбрать только одну строку.");
    script.remark("Выбраны несколько строк.\nДля изменения данных необходимо выбрать только одну строку.");
    for (const char* button : {"insert", "replace"}) press(button, {3, 5});
    for (const char* button : {"replace", "delete", "top", "bottom"}) press(button, {}); // nothing is selected
    EXPECT_EQ(window().table("active_view"), rows);
}

TEST_F(ActionList, AnActionNeedsATypeAndAName) {
    working.actions = {action("none", "")};
    show_actions(*dialog, working.actions);
    const auto stands_at_type = [](UiWindow active) {
        GtkWidget* focus = gtk_window_get_focus(GTK_WINDOW(active.widget()));
        EXPECT_TRUE(focus && gtk_widget_is_ancestor(focus, active.find("combo_active_type")));
    };
    UiScript script;
    script.when("dialog_active", stands_at_type).when("dialog_active", enter("button_active_cancel"));
    press("add", {}); // a new one starts there
    script.when("dialog_active", enter("button_active_customize"));
    script.remark("Для нажатия кнопки \"Настроить\" требуется установить значение поля \"Тип действия :\"");
    script.when("dialog_active", enter("button_active_ok"));
    script.remark("Не выбран тип действия");
    script.when("dialog_active", stands_at_type);
    script.checks("dialog_active", "button_active_ok",
                  {{"combo_active_type=EXIST", "Запещен ввод пустых строк.", "entry_active_name"}});
    script.when("dialog_active", enter("button_active_cancel"));
    window().activate_row("active_view", 0); // a double click is a change
    EXPECT_EQ(working.actions[0].type, "none");
}

// The editor itself, down to the parameters of an action.
using ActionDialogs = EditorTest;

TEST_F(ActionDialogs, AnActionThatIsCancelledDropsTheParametersThatWereConfirmed) {
    show({"own"});
    for (const bool confirmed : {false, true}) {
        config().actions = {action("SENDFILE", "имя")};
        UiScript script;
        script.when("dialog_config", [](UiWindow window) { window.activate_row("active_view", 0); });
        script.when("dialog_active", enter("button_active_customize"));
        script.when("dialog_send",
                    enter("entry_send_domen=host;entry_send_catalog=/;entry_send_file=new;button_send_ok"));
        script.when("dialog_active", enter(confirmed ? "button_active_ok" : "button_active_cancel"));
        script.when("dialog_config", enter("button_config_ok"));
        configure();
        EXPECT_EQ(config().actions[0].send.file, confirmed ? "new" : "");
    }
}

// While the dialog is open its record is emptied, so that the widgets alone know the values.
template <class Record>
Record confirmed(bool (*edit)(Record&), const std::string& dialog, Record record) {
    UiScript script;
    script.when("dialog_" + dialog, [&](UiWindow window) {
        record = {};
        window.click(dialog == "exist" ? "button_copy_ok1" : "button_" + dialog + "_ok");
    });
    EXPECT_TRUE(edit(record)) << dialog;
    return record;
}

TEST_F(ActionDialogs, GiveBackEitherTargetWhatIsShownAsADefaultAndRememberWhatWasTyped) {
    const MGConsole console = {"a %%PASSWORD%%", true, true, "пароль"};
    const MGSend send = {"1.1.1.1", " ", 1, "from", "file", 1048576, 3600, true, "server"};
    const MGSend send_by_name = {"", "a_b!", 0, "from", "file 2", 0, 0, false, "kept though insensitive"};
    EXPECT_EQ(confirmed(set_action_console, "console", console), console);
    EXPECT_EQ(confirmed(set_action_send, "send", send), send);
    EXPECT_EQ(confirmed(set_action_send, "send", send_by_name), send_by_name);
    EXPECT_EQ(confirmed(set_action_copy, "copy", {"a", "file", "b", "", false, false, 0}).mode, "REPLACE");
    EXPECT_EQ(confirmed(set_action_runprog, "runprog", {"prog", "a<|>b"}).param, "a<|>b");
    EXPECT_EQ(confirmed(set_action_exist, "exist", {"from", "file 4", "content", 86400}).timeout, 86400);
    EXPECT_EQ(init_send_domen, (History{" ", "a_b!"}));
    EXPECT_EQ(init_active_file, (History{"file", "file 2", "file 4"}));
}

TEST_F(ActionDialogs, RefuseOneFaultAfterTheOther) {
    const auto refuses = []<class Record>(bool (*edit)(Record&), const std::string& name, const char* ok) {
        Record record; // stays as it is
        UiScript script;
        script.checks("dialog_" + name, ok, checks_of(name));
        script.when("dialog_" + name, [](UiWindow window) { window.close(); });
        EXPECT_TRUE(!edit(record) && record == Record()) << name;
    };
    refuses(set_action_console, "console", "button_console_ok");
    refuses(set_action_send, "send", "button_send_ok");
    refuses(set_action_copy, "copy", "button_copy_ok");
    refuses(set_action_runprog, "runprog", "button_runprog_ok");
    refuses(set_action_exist, "exist", "button_copy_ok1");
}

} // namespace
