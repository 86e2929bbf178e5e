// Mends the toolkit's inputs by handlers that come before its own.
#include "dialog/input_habits.h"

namespace {

// Without its own handler the toolkit takes the event to the parent. Else scrolling past a value would change it
// unseen.
gboolean leave_wheel_to_page(GtkWidget* input, GdkEvent*, gpointer window) {
    GtkWidget* focus = gtk_window_get_focus(GTK_WINDOW(window));
    const bool edited = focus && (focus == input || gtk_widget_is_ancestor(focus, input));
    if (!edited) g_signal_stop_emission_by_name(input, "scroll-event");
    return FALSE;
}

// A spin button would jump to its limit, and a list would move its cursor by a page, which it does without Ctrl too.
gboolean leave_page_keys_to_notebook(GtkWidget* input, GdkEventKey* key, gpointer) {
    const bool page = key->keyval == GDK_KEY_Page_Up || key->keyval == GDK_KEY_Page_Down;
    if (page && key->state & GDK_CONTROL_MASK) g_signal_stop_emission_by_name(input, "key-press-event");
    return FALSE;
}

bool is_plain_key(const GdkEventKey* key) {
    return (key->state & gtk_accelerator_get_default_mod_mask()) == 0;
}

// The view would flip the mark in the cell at the cursor.
gboolean open_row_by_enter(GtkWidget* widget, GdkEventKey* key, gpointer) {
    if (!is_plain_key(key) || (key->keyval != GDK_KEY_Return && key->keyval != GDK_KEY_KP_Enter)) return FALSE;
    GtkTreeView* view = GTK_TREE_VIEW(widget);
    GtkTreePath* cursor = nullptr;
    gtk_tree_view_get_cursor(view, &cursor, nullptr);
    if (cursor) {
        gtk_tree_view_set_cursor(view, cursor, nullptr, FALSE); // selects the row and no other
        gtk_tree_view_row_activated(view, cursor, gtk_tree_view_get_column(view, 0));
        gtk_tree_path_free(cursor);
    }
    return TRUE;
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

void mend(GtkWidget* input, GtkWidget* window) {
    if (GTK_IS_SPIN_BUTTON(input) || GTK_IS_COMBO_BOX(input))
        g_signal_connect(input, "scroll-event", G_CALLBACK(leave_wheel_to_page), window);
    if ((GTK_IS_SPIN_BUTTON(input) || GTK_IS_TREE_VIEW(input)) && gtk_widget_get_ancestor(input, GTK_TYPE_NOTEBOOK))
        g_signal_connect(input, "key-press-event", G_CALLBACK(leave_page_keys_to_notebook), nullptr);
    if (GTK_IS_COMBO_BOX_TEXT(input) && !gtk_combo_box_get_has_entry(GTK_COMBO_BOX(input)))
        let_rows_shrink(GTK_CELL_LAYOUT(input));
    if (GTK_IS_RADIO_BUTTON(input)) {
        g_signal_connect(input, "focus", G_CALLBACK(enter_group_without_choice), nullptr);
        g_signal_connect_after(input, "clicked", G_CALLBACK(show_chosen), nullptr);
    }
    if (GTK_IS_TREE_VIEW(input) &&
        g_signal_has_handler_pending(input, g_signal_lookup("row-activated", GTK_TYPE_TREE_VIEW), 0, FALSE))
        g_signal_connect(input, "key-press-event", G_CALLBACK(open_row_by_enter), nullptr);
    if (!GTK_IS_LABEL(input)) return;
    if (GtkWidget* named = gtk_label_get_mnemonic_widget(GTK_LABEL(input)))
        g_object_bind_property(named, "sensitive", input, "sensitive", G_BINDING_SYNC_CREATE);
}

} // namespace

void mend_inputs(GtkBuilder* builder, GtkWidget* window) {
    g_signal_connect(window, "key-press-event", G_CALLBACK(press_icon_by_key), nullptr);
    GSList* objects = gtk_builder_get_objects(builder);
    for (GSList* item = objects; item; item = item->next)
        if (GTK_IS_WIDGET(item->data) && gtk_widget_is_ancestor(GTK_WIDGET(item->data), window))
            mend(GTK_WIDGET(item->data), window);
    g_slist_free(objects);
}
