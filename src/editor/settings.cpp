// The two small dialogs of the menu: the program's settings and the about box.
#include "app/mg_context.h"
#include "config/saving.h"
#include "dialog/make_dialog.h"
#include "dialog/open_dialogs.h"
#include "editor/handlers.h"

namespace {

void edit_settings() {
    OpenDialog dialog(SettingsDialog, "dialog_settings", "Окно редактирования конфигурации");
    dialog->SetEntry("entry_log_editor", Context->editor_path.c_str());
    if (!dialog.RunOk()) return;
    Context->editor_path = dialog->GetEntry("entry_log_editor");
    save_all_config_data(SettingsDialog);
}

void show_about() {
    OpenDialog dialog(AboutDialog, "dialog_about", "Окно с информацией о программе");
    dialog->SetLabel("label_about", "Конфигурационная программа Архиватора\nВерсия 1.0.1");
    dialog.RunOk();
}

} // namespace

extern "C" {

void profile_settings(GtkMenuItem*, gpointer) {
    at_handler(ProfileDialog, [] { edit_settings(); });
}

void profile_about(GtkMenuItem*, gpointer) {
    at_handler(ProfileDialog, [] { show_about(); });
}
}
