// Boxes that MGDialog opens over its window: messages and file choosers.
#include "dialog/gtk_owner.h"
#include "dialog/mg_dialog.h"
#include "dialog/valid_text.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

// A box of this many rows of this many characters fits a small screen, its buttons too.
constexpr glong box_rows = 24;
constexpr glong row_length = 60;
constexpr glong line_limit = 8 * row_length;

// The text as far as a box can show it; "…" stands for what is left out. The toolkit lays a text out as a whole, so
// that the megabytes which an error may quote from a bent file would stop the program. The log keeps them.
std::string fitting(const char* text) {
    const ValidText valid(text);
    std::string shown;
    glong rows = 0;
    const char* line = valid.get();
    while (*line && rows < box_rows) {
        const char* end = strchrnul(line, '\n');
        const glong length = g_utf8_strlen(line, end - line);
        const glong kept = std::min(length, line_limit);
        shown.append(line, static_cast<const char*>(g_utf8_offset_to_pointer(line, kept)));
        if (kept < length) shown += "…";
        if (*end) shown += *end++;
        rows += 1 + kept / row_length;
        line = end;
    }
    if (*line) shown += "…";
    return shown;
}

// Lets the box's text break inside a word, since a path or a quoted value can be wider than the screen; without
// hyphens, which would seem a part of it.
void break_long_words(GtkMessageDialog* box) {
    PangoAttrList* attributes = pango_attr_list_new();
    pango_attr_list_insert(attributes, pango_attr_insert_hyphens_new(FALSE));
    GList* labels = gtk_container_get_children(GTK_CONTAINER(gtk_message_dialog_get_message_area(box)));
    for (GList* item = labels; item; item = item->next) {
        gtk_label_set_line_wrap_mode(GTK_LABEL(item->data), PANGO_WRAP_WORD_CHAR);
        gtk_label_set_attributes(GTK_LABEL(item->data), attributes);
    }
    g_list_free(labels);
    pango_attr_list_unref(attributes);
}

// The toolkit names these two by the locale, which may lack Russian.
void name_answers(GtkDialog* box) {
    for (const auto& [response, label] : {std::pair(GTK_RESPONSE_YES, "_Да"), {GTK_RESPONSE_NO, "_Нет"}})
        if (GtkWidget* button = gtk_dialog_get_widget_for_response(box, response))
            gtk_button_set_label(GTK_BUTTON(button), label);
}

GtkOwnWindow make_chooser(GtkWidget* window, const char* title, GtkFileChooserAction action) {
    return GtkOwnWindow(gtk_file_chooser_dialog_new(title, GTK_WINDOW(window), action, "Отменить", GTK_RESPONSE_CANCEL,
                                                    "Установить", GTK_RESPONSE_ACCEPT, nullptr));
}

void take(std::string& out, const GtkText& text) {
    if (text) out = text.get();
}

std::string bare_name(const std::string& path) {
    return path.substr(path.rfind('/') + 1); // the whole name where there is no slash
}

} // namespace

int32_t MGDialog::MessageBox(const char* title, const char* text, GtkMessageType type, GtkButtonsType buttons) {
    if (!window) return -1;
    const GtkOwnWindow box(gtk_message_dialog_new(GTK_WINDOW(window), GTK_DIALOG_MODAL, type, buttons, "%s",
                                                  fitting(text ? text : "").c_str()));
    break_long_words(GTK_MESSAGE_DIALOG(box.get()));
    name_answers(GTK_DIALOG(box.get()));
    if (title) gtk_window_set_title(GTK_WINDOW(box.get()), title);
    return gtk_dialog_run(GTK_DIALOG(box.get()));
}

int32_t MGDialog::GetFileNameExt(const char* title, GtkFileChooserAction action, const char* initial,
                                 char** file_name) {
    *file_name = nullptr;
    if (!window) return -1;
    const GtkOwnWindow box = make_chooser(window, title, action);
    if (!box) return -1;
    GtkFileChooser* chooser = GTK_FILE_CHOOSER(box.get());
    if (initial) gtk_file_chooser_set_filename(chooser, initial);
    // A catalog as the place where to look for a file is to be open, not selected in its parent.
    if (initial && action == GTK_FILE_CHOOSER_ACTION_OPEN && g_file_test(initial, G_FILE_TEST_IS_DIR))
        gtk_file_chooser_set_current_folder(chooser, initial);
    const int32_t response = gtk_dialog_run(GTK_DIALOG(box.get()));
    if (response == GTK_RESPONSE_ACCEPT) *file_name = gtk_file_chooser_get_filename(chooser);
    return response;
}

int32_t MGDialog::GetFileName(const char* title, const char* initial, char** file_name) {
    return GetFileNameExt(title, GTK_FILE_CHOOSER_ACTION_SAVE, initial, file_name);
}

// The proposals come as copies: a caller may give the same strings to take the answer.
bool MGDialog::GetFileNameSave(const char* title, std::string folder, std::string name, std::string& out_folder,
                               std::string& out_name) {
    out_folder.clear();
    out_name.clear();
    if (!window) return false;
    const GtkOwnWindow box = make_chooser(window, title, GTK_FILE_CHOOSER_ACTION_SAVE);
    if (!box) return false;
    GtkFileChooser* chooser = GTK_FILE_CHOOSER(box.get());
    if (!folder.empty()) gtk_file_chooser_set_current_folder(chooser, folder.c_str());
    if (!name.empty()) gtk_file_chooser_set_current_name(chooser, name.c_str());
    if (gtk_dialog_run(GTK_DIALOG(box.get())) != GTK_RESPONSE_ACCEPT) return false;
    take(out_folder, GtkText(gtk_file_chooser_get_current_folder(chooser)));
    take(out_name, GtkText(gtk_file_chooser_get_current_name(chooser)));
    return true;
}

bool MGDialog::GetFileNameSave(const char* title, std::string folder, std::string name, std::string& out_path) {
    std::string chosen_folder, chosen_name;
    if (!GetFileNameSave(title, std::move(folder), std::move(name), chosen_folder, chosen_name)) return false;
    if (!chosen_folder.empty() && chosen_folder.back() != '/') chosen_folder += '/';
    out_path = chosen_folder + chosen_name;
    return true;
}

bool MGDialog::GetFilesFromDir(const char* title, std::string folder, std::string& out_folder,
                               std::vector<std::string>& out_names) {
    out_names.clear();
    out_folder.clear();
    if (!window) return false;
    const GtkOwnWindow box = make_chooser(window, title, GTK_FILE_CHOOSER_ACTION_OPEN);
    if (!box) return false;
    GtkFileChooser* chooser = GTK_FILE_CHOOSER(box.get());
    gtk_file_chooser_set_select_multiple(chooser, TRUE);
    if (!folder.empty()) gtk_file_chooser_set_current_folder(chooser, folder.c_str());
    if (gtk_dialog_run(GTK_DIALOG(box.get())) != GTK_RESPONSE_ACCEPT) return false;

    GSList* files = gtk_file_chooser_get_filenames(chooser);
    for (GSList* item = files; item; item = item->next) {
        if (!item->data) continue;
        const GtkText path(static_cast<char*>(item->data));
        out_names.push_back(bare_name(path.get()));
    }
    g_slist_free(files);
    if (out_names.empty()) return false;
    take(out_folder, GtkText(gtk_file_chooser_get_current_folder(chooser)));
    return true;
}
