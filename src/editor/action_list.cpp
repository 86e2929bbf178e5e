// Adding, changing, deleting and moving the actions of a profile, and the dialog of one action.
#include "editor/action_list.h"

#include "config/records.h"
#include "config/tokens.h"
#include "dialog/detached_rows.h"
#include "dialog/make_dialog.h"
#include "dialog/open_dialogs.h"
#include "dialog/rows.h"
#include "editor/action_dialogs.h"
#include "editor/handlers.h"
#include "editor/histories.h"
#include "editor/validation.h"

#include <algorithm>

namespace {

enum ActionColumn { COLUMN_ACTIVE, COLUMN_TYPE, COLUMN_NAME };

using Actions = std::vector<MGAction>;

Actions& working_actions() {
    return static_cast<MGConfig*>(ConfigDialog->user_data)->actions;
}

// Writes the action into the current row.
void show_action(MGDialog& dialog, GtkListStore* store, const MGAction& action) {
    dialog.ListStoreSetBoolean(store, COLUMN_ACTIVE, action.active);
    dialog.ListStoreSetString(store, COLUMN_TYPE, get_action_txt_type(action.type).c_str());
    dialog.ListStoreSetString(store, COLUMN_NAME, action.name.c_str());
}

void insert_action(GtkTreeView* view) {
    GtkListStore* store = nullptr;
    if (!ConfigDialog->TreeViewGetSelection(view, &store)) {
        if (ConfigDialog->GetListStoreFromTreeView(view, &store)) active_add_and_insert(store, false, 0);
    } else if (ConfigDialog->TreeViewGetCountSelection() < 2) {
        active_add_and_insert(store, true, ConfigDialog->TreeModelGetIndex());
    } else {
        show_message(ConfigDialog, "Выбраны несколько строк.\n"
                                   "Для вставки нового правила необходимо выбрать только одну строку.");
    }
}

// Runs dialog_active on an action that its caller owns; whether the user confirmed it.
bool edit_action(OpenDialog& dialog, MGAction& action) {
    init_combo_box(ActiveDialog, "combo_active_name", init_action_name);
    dialog->user_data = &action;
    dialog->user_data2 = ConfigDialog->user_data;
    return dialog.RunOk();
}

std::string deletion_question(int count) {
    const std::string number = std::to_string(count);
    if (count == 1) return "Вы действительно хотите удалить это " + number + " выбранное правило?";
    if (count < 5) return "Вы действительно хотите удалить эти " + number + " выбранных правила?";
    return "Вы действительно хотите удалить эти " + number + " выбранных правил?";
}

void delete_actions(GtkTreeView* view) {
    GtkListStore* store = nullptr;
    if (!ConfigDialog->TreeViewGetSelection(view, &store)) return;
    const int count = ConfigDialog->TreeViewGetCountSelection();
    if (!ask_yes_no(ConfigDialog, deletion_question(count).c_str())) return;

    const std::vector<int32_t> rows = ConfigDialog->TreeModelGetSelectedIndex();
    Actions& actions = working_actions();
    if (rows.size() == static_cast<size_t>(count)) {
        int32_t row = 0;
        std::erase_if(actions, [&](const MGAction&) { return std::ranges::binary_search(rows, row++); });
    }
    ConfigDialog->ListStoreDeleteSelection(store);
}

void invert_active(GtkListStore* store, const char* path) {
    if (!ConfigDialog->ListStoreGetRow(store, path)) return;
    int active = 0;
    ConfigDialog->TreeModelGetBoolean(COLUMN_ACTIVE, &active);
    working_actions().at(static_cast<size_t>(ConfigDialog->TreeModelGetIndex())).active = !active;
    ConfigDialog->ListStoreSetBoolean(store, COLUMN_ACTIVE, !active);
}

enum class Move { top, up, down, bottom };

// Moves the selected actions with the gaps between them, in the store and in the vector.
void move_actions(GtkTreeView* view, Move move) {
    GtkListStore* store = nullptr;
    if (!ConfigDialog->TreeViewGetSelection(view, &store)) return;
    const int count = ConfigDialog->TreeViewGetCountSelection();
    const std::vector<int32_t> rows = ConfigDialog->TreeModelGetSelectedIndex();
    if (count < 1 || rows.size() != static_cast<size_t>(count)) return;

    const int to_top = rows.front();
    const int to_bottom = ConfigDialog->ListStoreGetNumRows(store) - 1 - rows.back();
    const bool towards_head = move == Move::top || move == Move::up;
    if ((towards_head ? to_top : to_bottom) == 0) return;

    bool moved = false;
    int distance = 0;
    switch (move) {
    case Move::top:
        moved = ConfigDialog->ListStoreMoveTop(store);
        distance = -to_top;
        break;
    case Move::up:
        moved = ConfigDialog->ListStoreMoveUp(store);
        distance = -1;
        break;
    case Move::down:
        moved = ConfigDialog->ListStoreMoveDown(store);
        distance = 1;
        break;
    case Move::bottom:
        moved = ConfigDialog->ListStoreMoveBottom(store);
        distance = to_bottom;
        break;
    }
    if (!moved) return;
    Actions& actions = working_actions();
    Actions ordered;
    for (const int row : order_after_move(static_cast<int>(actions.size()), rows, distance))
        ordered.push_back(std::move(actions[static_cast<size_t>(row)]));
    actions = std::move(ordered);
}

bool type_is_missing(MGDialog* dialog) {
    if (dialog->ComboBoxGetId("combo_active_type")) return false;
    show_message(dialog, "Не выбран тип действия");
    dialog->SetFocusToProblemWidget("combo_active_type");
    return true;
}

// The parameter dialog of each type of action, on its record of the action.
const struct {
    std::string_view type;
    bool (*edit)(MGAction&);
} parameter_dialogs[] = {
    {"CONSOLE", [](MGAction& action) { return set_action_console(action.console); }},
    {"SENDFILE", [](MGAction& action) { return set_action_send(action.send); }},
    {"COPYFILE", [](MGAction& action) { return set_action_copy(action.copy); }},
    {"RUNPROG", [](MGAction& action) { return set_action_runprog(action.runprog); }},
    {"EXIST", [](MGAction& action) { return set_action_exist(action.exist); }},
};

void customize_action() {
    MGAction& action = *static_cast<MGAction*>(ActiveDialog->user_data);
    MGAction copy = action;
    copy.type = ActiveDialog->ComboBoxGetIdStr("combo_active_type");
    if (copy.type.empty()) {
        show_message(ActiveDialog,
                     "Для нажатия кнопки \"Настроить\" требуется установить значение поля \"Тип действия :\"");
        return;
    }
    for (const auto& dialog : parameter_dialogs)
        if (dialog.type == copy.type && dialog.edit(copy)) action = copy;
}

} // namespace

void show_actions(MGDialog& dialog, const std::vector<MGAction>& actions) {
    GtkListStore* store = GTK_LIST_STORE(dialog.GetObject("active_list_store"));
    const DetachedRows detached(dialog, store);
    for (const MGAction& action : actions) {
        dialog.ListStoreAppend(store);
        show_action(dialog, store, action);
    }
}

void active_add_and_insert(GtkListStore* store, bool insert, int index) {
    OpenDialog dialog(ActiveDialog, "dialog_active",
                      insert ? "Окно вставки нового действия" : "Окно добавления нового действия");
    MGAction action;
    dialog->ToggleButtonSet("check_active_activ", true);
    dialog->SetFocusToProblemWidget("combo_active_type");
    if (!edit_action(dialog, action)) return;

    if (insert)
        ConfigDialog->ListStoreInsert(store, index);
    else
        ConfigDialog->ListStoreAppend(store);
    active_save_data(store, action);
    ConfigDialog->TreeViewSetCursor(GTK_TREE_VIEW(ConfigDialog->GetObject("active_view")));
    Actions& actions = working_actions();
    actions.insert(insert ? actions.begin() + index : actions.end(), action);
    add_string_to_vector(action.name, init_action_name);
}

void active_replace(GtkTreeView* view) {
    GtkListStore* store = nullptr;
    if (!ConfigDialog->TreeViewGetSelection(view, &store)) return;
    if (ConfigDialog->TreeViewGetCountSelection() > 1) {
        show_message(ConfigDialog, "Выбраны несколько строк.\n"
                                   "Для изменения данных необходимо выбрать только одну строку.");
        return;
    }
    OpenDialog dialog(ActiveDialog, "dialog_active", "Окно изменение существующего действия");
    const auto index = static_cast<size_t>(ConfigDialog->TreeModelGetIndex());
    MGAction action = working_actions().at(index);
    dialog->ToggleButtonSet("check_active_activ", action.active);
    if (!action.type.empty()) dialog->ComboBoxSetId("combo_active_type", action.type.c_str());
    dialog->SetEntry("entry_active_name", action.name.c_str());
    if (!edit_action(dialog, action)) return;

    active_save_data(store, action);
    working_actions().at(index) = action;
    add_string_to_vector(action.name, init_action_name);
}

void active_save_data(GtkListStore* store, MGAction& action) {
    action.active = ActiveDialog->ToggleButtonGet("check_active_activ");
    action.type = ActiveDialog->ComboBoxGetIdStr("combo_active_type");
    action.name = ActiveDialog->GetEntry("entry_active_name");
    show_action(*ConfigDialog, store, action);
}

extern "C" {

void active_replace_click(GtkTreeView* view, GtkTreePath*, GtkTreeViewColumn*, gpointer) {
    at_handler(ConfigDialog, [&] { active_replace(view); });
}

void active_activ_taggle(GtkCellRendererToggle*, gchar* path, gpointer store) {
    if (!GTK_IS_LIST_STORE(store)) return;
    at_handler(ConfigDialog, [&] { invert_active(GTK_LIST_STORE(store), path); });
}

void active_add(GtkButton*, gpointer store) {
    at_handler(ConfigDialog, [&] { active_add_and_insert(GTK_LIST_STORE(store), false, 0); });
}

void active_insert(GtkButton*, gpointer view) {
    at_handler(ConfigDialog, [&] { insert_action(GTK_TREE_VIEW(view)); });
}

void active_replace_press(GtkButton*, gpointer view) {
    at_handler(ConfigDialog, [&] { active_replace(GTK_TREE_VIEW(view)); });
}

void active_delete(GtkButton*, gpointer view) {
    at_handler(ConfigDialog, [&] { delete_actions(GTK_TREE_VIEW(view)); });
}

void active_top(GtkButton*, gpointer view) {
    at_handler(ConfigDialog, [&] { move_actions(GTK_TREE_VIEW(view), Move::top); });
}

void active_up(GtkButton*, gpointer view) {
    at_handler(ConfigDialog, [&] { move_actions(GTK_TREE_VIEW(view), Move::up); });
}

void active_down(GtkButton*, gpointer view) {
    at_handler(ConfigDialog, [&] { move_actions(GTK_TREE_VIEW(view), Move::down); });
}

void active_bottom(GtkButton*, gpointer view) {
    at_handler(ConfigDialog, [&] { move_actions(GTK_TREE_VIEW(view), Move::bottom); });
}

void press_active_customize(GtkButton*, gpointer) {
    at_handler(ActiveDialog, [] { customize_action(); });
}

void active_ok(GtkButton*, gpointer dialog) {
    at_handler(ActiveDialog, [&] {
        if (type_is_missing(ActiveDialog) || entry_is_empty(ActiveDialog, "entry_active_name")) return;
        respond_ok(dialog);
    });
}
}
