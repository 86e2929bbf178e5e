// Mends the toolkit's inputs by handlers that come before its own.
#include "dialog/input_habits.h"

#include "dialog/drop_down.h"
#include "dialog/list_habits.h"
#include "dialog/number_habits.h"
#include "dialog/signs.h"

#include <string>

namespace {

bool fits_one_line(gunichar character) {
    switch (g_unichar_type(character)) {
    case G_UNICODE_CONTROL:
    case G_UNICODE_LINE_SEPARATOR:
    case G_UNICODE_PARAGRAPH_SEPARATOR:
        return false;
    default:
        return character != 0xFFFE && character != 0xFFFF;
    }
}

// Inserts what fits in place of the text. A row that was chosen from a drop-down list comes as it stands.
void insert_one_line(GtkEditable* entry, const char* text, int length, gpointer position, gpointer) {
    GtkWidget* combo = gtk_widget_get_ancestor(GTK_WIDGET(entry), GTK_TYPE_COMBO_BOX);
    if (combo && g_signal_get_invocation_hint(combo)) return;
    const char* end = text + (length < 0 ? std::char_traits<char>::length(text) : static_cast<size_t>(length));
    std::string kept;
    for (const char* at = text; at < end; at = g_utf8_next_char(at))
        if (fits_one_line(g_utf8_get_char(at))) kept.append(at, static_cast<size_t>(g_utf8_next_char(at) - at));
    if (kept.size() == static_cast<size_t>(end - text)) return;
    g_signal_stop_emission_by_name(entry, "insert-text");
    gtk_editable_insert_text(entry, kept.c_str(), static_cast<int>(kept.size()), static_cast<int*>(position));
}

// Without its own handler the toolkit takes the event to the parent. Else scrolling past a value would change it
// unseen.
gboolean leave_wheel_to_page(GtkWidget* input, GdkEvent*, gpointer window) {
    GtkWidget* focus = gtk_window_get_focus(GTK_WINDOW(window));
    const bool edited = focus && (focus == input || gtk_widget_is_ancestor(focus, input));
    if (!edited) g_signal_stop_emission_by_name(input, "scroll-event");
    return FALSE;
}

// A spin button would jump to its limit, a list would move its cursor by a page, which it does without Ctrl too, and a
// page wider than the window would scroll sideways.
gboolean leave_page_keys_to_notebook(GtkWidget* input, GdkEventKey* key, gpointer) {
    const bool page = key->keyval == GDK_KEY_Page_Up || key->keyval == GDK_KEY_Page_Down;
    if (page && key->state & GDK_CONTROL_MASK) g_signal_stop_emission_by_name(input, "key-press-event");
    return FALSE;
}

// The toolkit gives icons to the mouse alone.
gboolean press_icon_by_key(GtkWidget* window, GdkEventKey* key, gpointer) {
    GtkWidget* focus = gtk_window_get_focus(GTK_WINDOW(window));
    if (!is_plain_key(key) || key->keyval != GDK_KEY_F4 || !GTK_IS_ENTRY(focus) ||
        gtk_entry_get_icon_storage_type(GTK_ENTRY(focus), GTK_ENTRY_ICON_SECONDARY) == GTK_IMAGE_EMPTY)
        return FALSE;
    g_signal_emit_by_name(focus, "icon-press", GTK_ENTRY_ICON_SECONDARY, key);
    return TRUE;
}

// The toolkit lets the focus into a group at its chosen button only, which may be out of sight.
gboolean enter_group_without_choice(GtkWidget* radio, GtkDirectionType, gpointer) {
    if (gtk_widget_is_focus(radio)) return FALSE;
    for (GSList* item = gtk_radio_button_get_group(GTK_RADIO_BUTTON(radio)); item; item = item->next)
        if (gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(item->data)) &&
            gtk_widget_get_mapped(GTK_WIDGET(item->data)))
            return FALSE;
    if (!gtk_widget_is_sensitive(radio)) return FALSE;
    gtk_widget_grab_focus(radio);
    return TRUE;
}

// A key can choose a mode whose frame is out of sight.
void show_chosen(GtkWidget* radio, gpointer) {
    if (gtk_widget_get_mapped(radio) && gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(radio)))
        gtk_widget_grab_focus(radio);
}

// Otherwise the longest row says how narrow the page can be.
void let_rows_shrink(GtkCellLayout* combo) {
    GList* cells = gtk_cell_layout_get_cells(combo);
    for (GList* cell = cells; cell; cell = cell->next)
        g_object_set(cell->data, "ellipsize", PANGO_ELLIPSIZE_END, nullptr);
    g_list_free(cells);
}

void mend(GtkWidget* input, GtkWidget* window, GtkBuilder* builder) {
    explain_signs(input);
    if (GTK_IS_SPIN_BUTTON(input) || GTK_IS_COMBO_BOX(input))
        g_signal_connect(input, "scroll-event", G_CALLBACK(leave_wheel_to_page), window);
    if ((GTK_IS_SPIN_BUTTON(input) || GTK_IS_TREE_VIEW(input) || GTK_IS_SCROLLED_WINDOW(input)) &&
        gtk_widget_get_ancestor(input, GTK_TYPE_NOTEBOOK))
        g_signal_connect(input, "key-press-event", G_CALLBACK(leave_page_keys_to_notebook), nullptr);
    if (GTK_IS_COMBO_BOX_TEXT(input)) {
        if (gtk_combo_box_get_has_entry(GTK_COMBO_BOX(input)))
            prepare_drop_down(GTK_COMBO_BOX(input));
        else
            let_rows_shrink(GTK_CELL_LAYOUT(input));
    }
    if (GTK_IS_ENTRY(input)) g_signal_connect(input, "insert-text", G_CALLBACK(insert_one_line), nullptr);
    if (GTK_IS_TREE_VIEW(input)) mend_list(GTK_TREE_VIEW(input), builder);
    if (GTK_IS_SPIN_BUTTON(input)) mend_number(GTK_SPIN_BUTTON(input));
    if (GTK_IS_RADIO_BUTTON(input)) {
        g_signal_connect(input, "focus", G_CALLBACK(enter_group_without_choice), nullptr);
        g_signal_connect_after(input, "clicked", G_CALLBACK(show_chosen), nullptr);
    }
    if (!GTK_IS_LABEL(input)) return;
    if (GtkWidget* named = gtk_label_get_mnemonic_widget(GTK_LABEL(input)))
        g_object_bind_property(named, "sensitive", input, "sensitive", G_BINDING_SYNC_CREATE);
}

} // namespace

void mend_inputs(GtkBuilder* builder, GtkWidget* window) {
    g_signal_connect(window, "key-press-event", G_CALLBACK(press_icon_by_key), nullptr);
    GSList* objects = gtk_builder_get_objects(builder);
    for (GSList* item = objects; item; item = item->next) {
        if (GTK_IS_CELL_RENDERER_TEXT(item->data)) g_object_set(item->data, "single-paragraph-mode", TRUE, nullptr);
        if (GTK_IS_WIDGET(item->data) && gtk_widget_is_ancestor(GTK_WIDGET(item->data), window))
            mend(GTK_WIDGET(item->data), window, builder);
    }
    g_slist_free(objects);
}

void set_entry_text(GtkEntry* entry, const char* text) {
    const auto filter = reinterpret_cast<gpointer>(insert_one_line);
    g_signal_handlers_block_by_func(entry, filter, nullptr);
    gtk_entry_set_text(entry, text);
    g_signal_handlers_unblock_by_func(entry, filter, nullptr);
}
