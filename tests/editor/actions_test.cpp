// The actions of a profile: the list and the vector stay equal whatever the user does, each level of copies drops what
// it is told to drop, and the five dialogs of an action's parameters show, refuse and give back.
#include "editor/action_dialogs.h"
#include "editor/action_list.h"
#include "editor_fixture.h"

#include <algorithm>
#include <numeric>
#include <random>

namespace {

using testing::HasSubstr;
using Selection = std::vector<int>;

MGAction action(int type, const std::string& name) {
    MGAction made;
    made.active = true;
    made.type = action_types[type].token;
    made.name = name;
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
    void show_rows(int count) {
        for (int row = 0; row < count; ++row) {
            working.actions.push_back(action(row % 5, "строка " + std::to_string(row)));
            working.actions.back().console.prog = "prog " + std::to_string(row); // goes where its row goes
        }
        show_actions(*dialog, working.actions);
    }
    void press(const std::string& button, const Selection& selected) const {
        window().select("active_view", selected);
        window().click("button_active_" + button);
    }
    // Presses a button that opens dialog_active, and answers that.
    void answer(const std::string& button, const Selection& selected, const char* title, const MGAction& given,
                bool confirm) const {
        UiScript script;
        script.when("dialog_active", [&](UiWindow active) {
            EXPECT_EQ(active.title(), title);
            active.set_combo("combo_active_type", given.type);
            active.set_entry("entry_active_name", given.name);
            active.click(confirm ? "button_active_ok" : "button_active_cancel");
        });
        press(button, selected);
    }

    MGConfig working;
    OpenDialog dialog{ConfigDialog, "dialog_config", ""};
};

// Moves the selected elements one after the other, as the list is told to move its rows.
void move_in_model(std::vector<MGAction>& model, Selection selected, const std::string& button) {
    if (selected.empty()) return;
    const int top = -selected.front(), bottom = static_cast<int>(model.size()) - 1 - selected.back();
    const bool up = button == "top" || button == "up";
    if ((up ? top : bottom) == 0) return;
    const int step = button == "top" ? top : button == "up" ? -1 : button == "down" ? 1 : bottom;
    if (!up) std::ranges::reverse(selected);
    for (const int row : selected) {
        const MGAction moved = model[static_cast<size_t>(row)];
        model.erase(model.begin() + row);
        model.insert(model.begin() + row + step, moved);
    }
}

TEST_F(ActionList, StoreAndVectorFollowAPlainModel) {
    std::mt19937 random(20240607);
    const auto below = [&](size_t limit) { return static_cast<int>(random() % limit); };
    const char* const moves[] = {"top", "up", "down", "bottom"};
    show_rows(9);
    std::vector<MGAction> model = working.actions;
    for (int operation = 0; operation < 240; ++operation) {
        const int kind = below(30);
        Selection selected;
        for (int row = 0, part = below(6); row < static_cast<int>(model.size()); ++row)
            if (below(6) < part) selected.push_back(row);
        if (kind < 4 && !selected.empty()) selected.resize(1);
        const auto first = model.begin() + (selected.empty() ? 0 : selected[0]);
        const bool confirm = below(4) != 0;
        const MGAction given = action(below(std::size(action_types)), "действие " + std::to_string(operation));
        SCOPED_TRACE("operation " + std::to_string(operation) + " of kind " + std::to_string(kind));
        if (kind == 0 || (kind < 3 && selected.empty())) {
            answer(kind == 0 ? "add" : "insert", selected, "Окно добавления нового действия", given, confirm);
            if (confirm) model.push_back(given);
        } else if (kind < 3) {
            answer("insert", selected, "Окно вставки нового действия", given, confirm);
            if (confirm) model.insert(first, given);
        } else if (kind == 3 && !selected.empty()) {
            answer("replace", selected, "Окно изменение существующего действия", given, confirm);
            if (confirm) first->type = given.type, first->name = given.name;
        } else if (kind == 4 && model.size() > 6 && !selected.empty()) {
            UiScript script;
            script.question(HasSubstr("удалить"), confirm ? GTK_RESPONSE_YES : GTK_RESPONSE_NO);
            press("delete", selected);
            for (auto row = selected.rbegin(); confirm && row != selected.rend(); ++row)
                model.erase(model.begin() + *row);
        } else if (kind < 10) {
            const int row = below(model.size());
            window().toggle_cell("active_view", row);
            model[static_cast<size_t>(row)].active ^= true;
        } else {
            press(moves[kind % 4], selected);
            move_in_model(model, selected, moves[kind % 4]);
        }
        Rows rows;
        for (const MGAction& row : model)
            rows.push_back({row.active ? "1" : "0", get_action_txt_type(row.type), row.name});
        ASSERT_EQ(working.actions, model);
        ASSERT_EQ(window().table("active_view"), rows);
        ASSERT_FALSE(rows.empty());
    }
}

TEST_F(ActionList, AsksAndTellsByTheNumberOfSelectedRows) {
    show_rows(21);
    const Rows rows = window().table("active_view");
    Selection selected;
    for (const auto& [count, question] : {std::pair(1, "это 1 выбранное правило?"),
                                          {4, "эти 4 выбранных правила?"},
                                          {21, "эти 21 выбранных правил?"}}) {
        selected.resize(static_cast<size_t>(count));
        std::iota(selected.begin(), selected.end(), 0);
        UiScript script;
        script.question(std::string("Вы действительно хотите удалить ") + question, GTK_RESPONSE_NO);
        press("delete", selected);
    }
    UiScript script;
    script.remark("Выбраны несколько строк.\nДля вставки нового правила необходимо выбрать только одну строку.");
    script.remark("Выбраны несколько строк.\nДля изменения данных необходимо выбрать только одну строку.");
    for (const char* button : {"insert", "replace"}) press(button, {3, 5});
    for (const char* button : {"replace", "delete", "top", "bottom"}) press(button, {}); // nothing is selected
    EXPECT_EQ(window().table("active_view"), rows);
}

TEST_F(ActionList, AnActionNeedsATypeAndAName) {
    working.actions = {action(0, "")};
    working.actions[0].type = "none";
    show_actions(*dialog, working.actions);
    UiScript script;
    script.when("dialog_active", type({}, "active_customize"));
    script.remark("Для нажатия кнопки \"Настроить\" требуется установить значение поля \"Тип действия :\"");
    script.when("dialog_active", type({}, "active_ok"));
    script.remark("Не выбран тип действия");
    script.when("dialog_active", [](UiWindow active) {
        GtkWidget* focus = gtk_window_get_focus(GTK_WINDOW(active.widget()));
        EXPECT_TRUE(focus && gtk_widget_is_ancestor(focus, active.find("combo_active_type")));
        active.set_combo("combo_active_type", "EXIST");
    });
    script.when("dialog_active", type({}, "active_ok"));
    script.remark("Запещен ввод пустых строк.");
    script.when("dialog_active", [](UiWindow active) { EXPECT_EQ(active.focus(), "entry_active_name"); });
    script.when("dialog_active", type({}, "active_cancel"));
    window().activate_row("active_view", 0); // a double click is a change
    EXPECT_EQ(working.actions[0].type, "none");
}

// The editor itself, down to the parameters of an action.
using ActionLevels = EditorTest;

TEST_F(ActionLevels, CancelDropsWhatItsLevelAndThoseBelowConfirmed) {
    const struct {
        bool parameters, action, profile;
        const char *type, *file; // what the profile has in the end
    } table[] = {
        {true, true, true, "SENDFILE", "new 0"},
        {false, true, true, "SENDFILE", "kept"},
        {true, false, true, "COPYFILE", "kept"},
        {true, true, false, "COPYFILE", "kept"},
    };
    show({"own"});
    for (const auto& row : table) {
        const std::string file = "new " + std::to_string(&row - table);
        config().actions = {action(2, "имя")};
        config().actions[0].send.file = "kept";
        UiScript script;
        script.when("dialog_config", [](UiWindow window) { window.activate_row("active_view", 0); });
        script.when("dialog_active", [](UiWindow window) {
            window.set_combo("combo_active_type", "SENDFILE");
            window.click("button_active_customize");
        });
        script.when("dialog_send", type({{"send_domen", "host"}, {"send_catalog", "/"}, {"send_file", file}},
                                        row.parameters ? "send_ok" : "send_cancel"));
        script.when("dialog_active", type({}, row.action ? "active_ok" : "active_cancel"));
        script.when("dialog_config", type({}, row.profile ? "config_ok" : "config_cancel"));
        configure();
        EXPECT_EQ(config().actions[0].type, row.type) << file;
        EXPECT_EQ(config().actions[0].send.file, row.file) << file;
        EXPECT_EQ(std::ranges::count(init_active_file, file), row.parameters) << "a history keeps what was confirmed";
    }
}

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
    EXPECT_EQ(init_send_domen, (History{" ", "a_b!"}));
    EXPECT_EQ(init_active_file, (History{"file", "file 2", "file 3", "file 4"}));
}

TEST_F(ActionDialogs, RefuseOneFaultAfterTheOther) {
    const std::string blank = "Запещен ввод пустых строк.";
    struct Click {
        std::string entry, text; // typed before OK is pressed
        std::string message, focus;
    };
    MGAction action; // stays as it is
    const struct {
        std::string dialog;
        std::function<bool()> open;
        std::vector<Click> clicks;
    } table[] = {
        {"console", [&] { return set_action_console(action.console); }, {{"console_prog", " ", blank, "console_prog"}}},
        {"send",
         [&] { return set_action_send(action.send); },
         {{"send_ip", " ", "Необходимо задать IP адрес или домен.", "send_ip"},
          {"send_ip", "1.2.3", "Необходимо задать IP адрес в формате NNN.NNN.NNN.NNN", "send_ip"},
          {"send_domen", "h", "Нельзя задавать IP адрес и домен одновременно. Нужен только один из двух.", "send_ip"},
          {"send_ip", "\t", blank, "send_catalog"},
          {"send_catalog", "from", blank, "send_file"}}},
        {"copy",
         [&] { return set_action_copy(action.copy); },
         {{"copy_catalog", " ", blank, "copy_catalog"},
          {"copy_catalog", "from", blank, "copy_file"},
          {"copy_file", "file", blank, "copy_catalog_to"}}},
        {"runprog", [&] { return set_action_runprog(action.runprog); }, {{"run_param", "a", blank, "run_prog"}}},
        {"exist",
         [&] { return set_action_exist(action.exist); },
         {{"exist_content", "  ", blank, "exist_catalog"},
          {"exist_catalog", "from", blank, "exist_file"},
          {"exist_file", "f", "Пустая строка не должна содержать некорректные символы заполнения.", "exist_content"}}},
    };
    for (const auto& [dialog, open, clicks] : table) {
        UiScript script;
        for (const Click& click : clicks) {
            script.when("dialog_" + dialog, type({{click.entry, click.text}}, button(dialog, "ok")));
            script.remark(click.message);
            script.when("dialog_" + dialog,
                        [&](UiWindow window) { EXPECT_EQ(window.focus(), "entry_" + click.focus) << click.text; });
        }
        script.when("dialog_" + dialog, type({}, button(dialog, "cancel")));
        EXPECT_FALSE(open()) << dialog;
    }
    EXPECT_EQ(action, MGAction());
}

} // namespace
