// The main window: creating, renaming and deleting profiles, the default mark and the active flags.
#include "editor/profile_list.h"

#include "app/mg_context.h"
#include "config/saving.h"
#include "dialog/busy.h"
#include "dialog/make_dialog.h"
#include "dialog/mg_dialog.h"
#include "dialog/open_dialogs.h"
#include "editor/handlers.h"
#include "editor/histories.h"
#include "editor/validation.h"

#include <algorithm>

namespace {

enum ProfileColumn { COLUMN_DEFAULT, COLUMN_NAME, COLUMN_ID, COLUMN_ACTIVE };

GtkListStore* profile_store() {
    return GTK_LIST_STORE(ProfileDialog->GetObject("profile_list_store"));
}

// Writes a profile into the current row.
void show_profile(GtkListStore* store, const MGProfile& profile) {
    ProfileDialog->ListStoreSetBoolean(store, COLUMN_DEFAULT, profile.is_default);
    ProfileDialog->ListStoreSetString(store, COLUMN_NAME, profile.name.c_str());
    ProfileDialog->ListStoreSetString(store, COLUMN_ID, profile.id.c_str());
    ProfileDialog->ListStoreSetBoolean(store, COLUMN_ACTIVE, profile.active);
}

// The heading of dialog_enter_2, and the names and ids that its drop-down lists offer.
void prepare_enter_2(const char* heading) {
    Enter2Dialog->SetLabel("label_enter_2_profile", heading);
    profile_set_vector(Context, init_profile_name, init_profile_id);
    init_combo_box(Enter2Dialog, "combo_enter_2_name", init_profile_name);
    init_combo_box(Enter2Dialog, "combo_enter_2_id", init_profile_id);
}

void create_profile(GtkListStore* store) {
    OpenDialog dialog(Enter2Dialog, "dialog_enter_2", "Окно ввода данных");
    prepare_enter_2("Создание профиля");
    if (!dialog.RunOk()) return;
    profile_add_data(store, dialog->ListStoreGetNumRows(store) == 0, dialog->GetEntry("entry_enter_2_name"),
                     dialog->GetEntry("entry_enter_2_id"), 0);
    ProfileDialog->TreeViewSetCursor(GTK_TREE_VIEW(ProfileDialog->GetObject("profile_view")));
    save_all_config_data(Enter2Dialog);
}

void rename_profile(GtkTreeView* view) {
    GtkListStore* store = nullptr;
    if (!ProfileDialog->TreeViewGetSelection(view, &store)) return;
    int index = ProfileDialog->TreeModelGetIndex();
    MGProfile& profile = Context->profiles.at(static_cast<size_t>(index));

    OpenDialog dialog(Enter2Dialog, "dialog_enter_2", "Окно ввода данных");
    prepare_enter_2("Переименование профиля");
    dialog->SetEntry("entry_enter_2_name", profile.name.c_str());
    dialog->SetEntry("entry_enter_2_id", profile.id.c_str());
    dialog->SetSensitive("entry_enter_2_id", false);
    dialog->SetSensitive("combo_enter_2_id", false);
    dialog->user_data = &index;
    if (!dialog.RunOk()) return;

    // The id isn't read back: it never changes.
    profile.name = dialog->GetEntry("entry_enter_2_name");
    ProfileDialog->ListStoreSetString(store, COLUMN_NAME, profile.name.c_str());
    save_all_config_data(Enter2Dialog);
}

void delete_profile(GtkTreeView* view) {
    GtkListStore* store = nullptr;
    if (!ProfileDialog->TreeViewGetSelection(view, &store)) return;
    const int index = ProfileDialog->TreeModelGetIndex();
    std::vector<MGProfile>& profiles = Context->profiles;

    const std::string question =
        "Вы действительно хотите удалить этот профиль (" + profiles.at(static_cast<size_t>(index)).id + ")?";
    if (!ask_yes_no(ProfileDialog, question.c_str())) return;

    int was_default = 0;
    ProfileDialog->TreeModelGetBoolean(COLUMN_DEFAULT, &was_default);
    profiles.erase(profiles.begin() + index);
    ProfileDialog->ListStoreDeleteIter(store);
    if (was_default && !profiles.empty()) {
        profiles.front().is_default = true;
        ProfileDialog->ListStoreGetRowIndex(store, 0);
        ProfileDialog->ListStoreSetBoolean(store, COLUMN_DEFAULT, true);
    }
    save_all_config_data(ProfileDialog);
}

// Moves the default mark to the row. Each row is saved as it is passed, not all of them once at the end: that is how
// the list is agreed to reach the disk, and the reserve copies thus hold the state before the last row.
void make_default(GtkListStore* store, const char* path) {
    if (!ProfileDialog->ListStoreGetRow(store, path)) return;
    int is_default = 0;
    ProfileDialog->TreeModelGetBoolean(COLUMN_DEFAULT, &is_default);
    if (is_default) return;

    const Busy busy;
    const int clicked = ProfileDialog->TreeModelGetIndex();
    const int rows = ProfileDialog->ListStoreGetNumRows(store);
    for (int row = 0; row < rows; ++row) {
        Context->profiles.at(static_cast<size_t>(row)).is_default = row == clicked;
        ProfileDialog->ListStoreGetRowIndex(store, row);
        ProfileDialog->ListStoreSetBoolean(store, COLUMN_DEFAULT, row == clicked);
        save_all_config_data(ProfileDialog);
    }
}

void invert_active(GtkListStore* store, const char* path) {
    if (!ProfileDialog->ListStoreGetRow(store, path)) return;
    int active = 0;
    ProfileDialog->TreeModelGetBoolean(COLUMN_ACTIVE, &active);
    Context->profiles.at(static_cast<size_t>(ProfileDialog->TreeModelGetIndex())).active = !active;
    ProfileDialog->ListStoreSetBoolean(store, COLUMN_ACTIVE, !active);
    save_all_config_data(ProfileDialog);
}

bool id_is_taken(MGDialog* dialog) {
    const std::string id = dialog->GetEntry("entry_enter_2_id");
    // A profile's file of that name would be written over the list of profiles.
    const bool is_master = Context->config_dir + "/" + id + ".xml" == Context->config_file;
    if (!is_master && !id_already_exist(Context, id, static_cast<int*>(dialog->user_data))) return false;
    show_refusal(dialog, "Такой идентификатор уже существует в другом профиле.\nИзмените значение идентификатора.");
    dialog->SetFocusToProblemWidget("entry_enter_2_id");
    return true;
}

// Nothing is unsaved, and nothing is asked, but after a save that failed: that is tried once more.
void leave() {
    if (save_failed()) save_all_config_data(ProfileDialog);
    if (!save_failed() ||
        ask_yes_no(ProfileDialog, "Последние изменения не записаны на диск и будут потеряны.\nВыйти без сохранения?"))
        ProfileDialog->Quit();
}

} // namespace

void init_profile_dialog() {
    GtkListStore* store = profile_store();
    if (Context->config_found)
        profile_add_config_data(store);
    else
        profile_add_data(store, 1, "Профиль системы Архивирования", "vormaqs_profile_0", 0);
}

void profile_add_config_data(GtkListStore* store) {
    const size_t count = std::min(static_cast<size_t>(std::max(Context->quantity, 0)), Context->profiles.size());
    for (size_t row = 0; row < count; ++row) {
        ProfileDialog->ListStoreAppend(store);
        show_profile(store, Context->profiles[row]);
    }
}

void profile_add_data(GtkListStore* store, int is_default, const char* name, const char* id, int active) {
    MGProfile profile;
    profile.is_default = is_default != 0;
    profile.name = name;
    profile.id = id;
    profile.active = active != 0;
    ProfileDialog->ListStoreAppend(store);
    show_profile(store, profile);
    Context->profiles.push_back(std::move(profile));
}

bool id_already_exist(const MGContext* context, const std::string& id, const int* skip) {
    for (size_t index = 0; index < context->profiles.size(); ++index) {
        if (skip && static_cast<size_t>(*skip) == index) continue;
        if (context->profiles[index].id == id) return true;
    }
    return false;
}

extern "C" {

gboolean window_delete_event(GtkWidget*, GdkEvent*, gpointer) {
    at_handler(ProfileDialog, leave);
    return TRUE; // main destroys the window after the main loop
}

void programm_exit(GtkMenuItem*, gpointer) {
    at_handler(ProfileDialog, leave);
}

void profile_create(GtkButton*, gpointer store) {
    at_handler(ProfileDialog, [&] { create_profile(GTK_LIST_STORE(store)); });
}

void profile_rename(GtkButton*, gpointer view) {
    at_handler(ProfileDialog, [&] { rename_profile(GTK_TREE_VIEW(view)); });
}

void profile_delete(GtkButton*, gpointer view) {
    at_handler(ProfileDialog, [&] { delete_profile(GTK_TREE_VIEW(view)); });
}

void profile_default_taggle(GtkCellRendererToggle*, gchar* path, gpointer store) {
    if (!GTK_IS_LIST_STORE(store)) return;
    at_handler(ProfileDialog, [&] { make_default(GTK_LIST_STORE(store), path); });
}

void profile_active_taggle(GtkCellRendererToggle*, gchar* path, gpointer store) {
    if (!GTK_IS_LIST_STORE(store)) return;
    at_handler(ProfileDialog, [&] { invert_active(GTK_LIST_STORE(store), path); });
}

void enter_2_ok(GtkButton*, gpointer dialog) {
    at_handler(Enter2Dialog, [&] {
        if (entry_is_empty(Enter2Dialog, "entry_enter_2_name") || entry_is_empty(Enter2Dialog, "entry_enter_2_id") ||
            entry_not_id(Enter2Dialog, "entry_enter_2_id") || id_is_taken(Enter2Dialog))
            return;
        respond_ok(dialog);
    });
}
}
