// Life cycle of MGDialog: loading a definition, the chain of windows, running and destroying.
#include "dialog/gtk_owner.h"
#include "dialog/input_habits.h"
#include "dialog/mg_dialog.h"
#include "dialog/small_screens.h"

std::stack<GtkWidget*> g_dialog_stack;

MGDialog::MGDialog(const char* resource_prefix, const char* resource_name, const char* object_id) {
    if (!MakeBuilder()) return;
    const GtkText path(g_strconcat(resource_prefix, "/", resource_name, nullptr));
    GError* error = nullptr;
    const bool added = gtk_builder_add_from_resource(builder, path.get(), &error) != 0;
    Finish(added, error, object_id);
}

MGDialog::MGDialog(const char* file_name, const char* object_id) {
    if (!MakeBuilder()) return;
    GError* error = nullptr;
    const bool added = gtk_builder_add_from_file(builder, file_name, &error) != 0;
    Finish(added, error, object_id);
}

MGDialog::MGDialog(const char* text, size_t length, const char* object_id) {
    if (!MakeBuilder()) return;
    GError* error = nullptr;
    const bool added = gtk_builder_add_from_string(builder, text, length, &error) != 0;
    Finish(added, error, object_id);
}

MGDialog::~MGDialog() {
    Destroy();
}

bool MGDialog::MakeBuilder() {
    builder = gtk_builder_new();
    return builder != nullptr;
}

// What follows once the definition has been added to the builder, wherever it came from. Takes the error over.
void MGDialog::Finish(bool added, GError* error, const char* object_id) {
    if (!added) {
        if (error) g_printerr("%s\n", error->message);
        g_clear_error(&error);
        return;
    }
    GObject* object = GetObject(object_id);
    if (!GTK_IS_WINDOW(object)) return;
    window = GTK_WIDGET(object);
    gtk_builder_connect_signals(builder, nullptr);
    mend_inputs(builder, window);
    if (!g_dialog_stack.empty()) gtk_window_set_transient_for(GTK_WINDOW(window), GTK_WINDOW(g_dialog_stack.top()));
    g_dialog_stack.push(window);
}

void MGDialog::Destroy() {
    if (window) {
        if (!g_dialog_stack.empty()) g_dialog_stack.pop();
        gtk_widget_destroy(window);
        window = nullptr;
    }
    if (builder) {
        DestroyHiddenWindows();
        g_object_unref(builder);
        builder = nullptr;
    }
    if (selected_rows) {
        g_list_free_full(selected_rows, free_path);
        selected_rows = nullptr;
    }
}

// A builder makes every window of its definition, and the toolkit keeps a window until it is destroyed by name: without
// this each opening would leave all the windows behind that it did not show.
void MGDialog::DestroyHiddenWindows() {
    GSList* objects = gtk_builder_get_objects(builder);
    for (GSList* item = objects; item; item = item->next)
        if (GTK_IS_WINDOW(item->data)) gtk_widget_destroy(GTK_WIDGET(item->data));
    g_slist_free(objects);
}

void MGDialog::Show() {
    if (!window) return;
    fit_to_screen(builder, window);
    gtk_widget_show(window);
}

int32_t MGDialog::Run() {
    return window ? gtk_dialog_run(GTK_DIALOG(window)) : GTK_RESPONSE_CANCEL;
}

void MGDialog::Quit() {
    gtk_main_quit();
}

GObject* MGDialog::GetObject(const char* id) const {
    return builder && id ? gtk_builder_get_object(builder, id) : nullptr;
}

void MGDialog::WindowSetName(const char* title) {
    if (window && title) gtk_window_set_title(GTK_WINDOW(window), title);
}

void MGDialog::WindowSetFileIcon(const char* path) {
    if (!window || !path) return;
    GError* error = nullptr; // asked for, since the toolkit prints a warning where nobody takes it
    gtk_window_set_icon_from_file(GTK_WINDOW(window), path, &error);
    g_clear_error(&error);
}

void MGDialog::Free(void* memory) {
    g_free(memory);
}
