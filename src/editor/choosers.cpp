// Choosing directories and files for entries.
#include "editor/choosers.h"

#include "dialog/make_dialog.h"
#include "editor/validation.h"
#include "net/address_syntax.h"
#include "runtime/mg_file.h"

#include <memory>
#include <string>

std::string choose_path(MGDialog* dialog, const char* title, GtkFileChooserAction action, const char* preset) {
    char* name = nullptr;
    const int response = dialog->GetFileNameExt(title, action, string_is_empty(preset) ? nullptr : preset, &name);
    const std::unique_ptr<char, decltype(&MGDialog::Free)> owner(name, &MGDialog::Free);
    return response == GTK_RESPONSE_ACCEPT && name ? name : "";
}

void choice_catalog(MGDialog* dialog, const char* entry) {
    at_handler(dialog, [&] {
        const std::string path =
            choose_path(dialog, "Окно выбора каталога", GTK_FILE_CHOOSER_ACTION_SELECT_FOLDER, dialog->GetEntry(entry));
        if (path.empty() || is_error_stored(dialog, "Имя каталога", path, "Переименуйте каталог или выберите другой."))
            return;
        dialog->SetEntry(entry, path.c_str());
    });
}

void choice_file(MGDialog* dialog, const char* catalog_entry, const char* file_entry) {
    at_handler(dialog, [&] {
        const std::string path = choose_path(dialog, "Окно выбора имени файла", GTK_FILE_CHOOSER_ACTION_OPEN,
                                             dialog->GetEntry(catalog_entry));
        const std::string name = MGFile::GetNameFromFile(path);
        if (name.empty() || is_error_stored(dialog, "Имя файла", name, "Переименуйте файл или выберите другой."))
            return;
        dialog->SetEntry(file_entry, name.c_str());
    });
}
