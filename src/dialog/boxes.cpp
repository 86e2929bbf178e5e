// Boxes that MGDialog opens over its window: messages and file choosers.
#include "dialog/gtk_owner.h"
#include "dialog/mg_dialog.h"
#include "dialog/small_screens.h"
#include "dialog/valid_text.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace {

// A box of this many rows of this many characters fits a small screen, its buttons too.
constexpr glong box_rows = 24;
constexpr glong row_length = 60;
constexpr glong line_limit = 8 * row_length;

constexpr const char* whole_text_key = "vorma-whole-text";

// Takes the first or the last line off the text, with its end.
std::string_view take_line(std::string_view& text, bool first) {
    const std::string_view line = first ? text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1)
                                        : text.substr(text.substr(0, text.size() - 1).rfind('\n') + 1);
    first ? text.remove_prefix(line.size()) : text.remove_suffix(line.size());
    return line;
}

// The line with "…" for the middle of a long one: the name of a file often stands at the end.
std::string fitting_line(std::string_view line) {
    if (g_utf8_strlen(line.data(), static_cast<gssize>(line.size())) <= line_limit) return std::string(line);
    const char* end = line.data() + line.size();
    const char* head_end = g_utf8_offset_to_pointer(line.data(), line_limit / 2);
    const char* tail = g_utf8_offset_to_pointer(end, -line_limit / 2);
    return std::string(line.data(), head_end) + "…" + std::string(tail, end);
}

// The text as far as a box can show it, with "…" for what is left out in the middle. The toolkit lays a text out as a
// whole, so that the megabytes which an error may quote from a bent file would stop the program.
std::string fitting(std::string_view text) {
    std::string head, tail;
    for (glong head_rows = 0, tail_rows = 0; !text.empty();) {
        const bool first = head_rows <= tail_rows;
        const std::string line = fitting_line(take_line(text, first));
        (first ? head_rows : tail_rows) += 1 + g_utf8_strlen(line.c_str(), -1) / row_length;
        if (head_rows + tail_rows > box_rows) return head + "…\n" + tail;
        first ? head += line : tail.insert(0, line);
    }
    return head + tail;
}

// Who takes all that a box shows wants what it could not show too.
void copy_whole_text(GtkLabel* label, gpointer) {
    int begin = 0, end = 0;
    gtk_label_get_selection_bounds(label, &begin, &end);
    if (end - begin < g_utf8_strlen(gtk_label_get_text(label), -1)) return;
    g_signal_stop_emission_by_name(label, "copy-clipboard");
    const char* text = static_cast<const char*>(g_object_get_data(G_OBJECT(label), whole_text_key));
    gtk_clipboard_set_text(gtk_widget_get_clipboard(GTK_WIDGET(label), GDK_SELECTION_CLIPBOARD), text, -1);
}

// The focus stands on a button, but the keys that select and copy are meant for the text.
gboolean give_text_its_keys(GtkWidget*, GdkEventKey* key, gpointer label) {
    return key->state & GDK_CONTROL_MASK && gtk_bindings_activate_event(G_OBJECT(label), key);
}

// Makes the box's text one to be selected and copied, and lets it break inside a word, since a path or a quoted value
// can be wider than the screen; without hyphens, which would seem a part of it.
void mend_text(GtkMessageDialog* box, const char* whole_text) {
    PangoAttrList* attributes = pango_attr_list_new();
    pango_attr_list_insert(attributes, pango_attr_insert_hyphens_new(FALSE));
    GList* labels = gtk_container_get_children(GTK_CONTAINER(gtk_message_dialog_get_message_area(box)));
    for (GList* item = labels; item; item = item->next) {
        GtkLabel* label = GTK_LABEL(item->data);
        gtk_label_set_line_wrap_mode(label, PANGO_WRAP_WORD_CHAR);
        gtk_label_set_attributes(label, attributes);
        gtk_label_set_selectable(label, TRUE);
        g_object_set_data_full(G_OBJECT(label), whole_text_key, g_strdup(whole_text), g_free);
        g_signal_connect(label, "copy-clipboard", G_CALLBACK(copy_whole_text), nullptr);
        g_signal_connect(box, "key-press-event", G_CALLBACK(give_text_its_keys), label);
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
    GtkOwnWindow box(gtk_file_chooser_dialog_new(title, GTK_WINDOW(window), action, "Отменить", GTK_RESPONSE_CANCEL,
                                                 "Установить", GTK_RESPONSE_ACCEPT, nullptr));
    if (box) fit_to_screen(GTK_FILE_CHOOSER_DIALOG(box.get()));
    return box;
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
    const ValidText valid(text ? text : "");
    const GtkOwnWindow box(gtk_message_dialog_new(GTK_WINDOW(window), GTK_DIALOG_MODAL, type, buttons, "%s",
                                                  fitting(valid.get()).c_str()));
    mend_text(GTK_MESSAGE_DIALOG(box.get()), valid.get());
    name_answers(GTK_DIALOG(box.get()));
    if (title) gtk_window_set_title(GTK_WINDOW(box.get()), title);
    fit_to_screen(GTK_MESSAGE_DIALOG(box.get()));
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
