// Tooltips over the cells of a list.
#include "dialog/whole_cells.h"

#include "dialog/gtk_owner.h"

namespace {

// The column of the pointer, whose place is told in the list's own window, or of the cursor.
GtkTreeViewColumn* column_in_question(GtkTreeView* view, int x, int y, gboolean by_key) {
    GtkTreeViewColumn* column = nullptr;
    if (by_key)
        gtk_tree_view_get_cursor(view, nullptr, &column);
    else
        gtk_tree_view_get_path_at_pos(view, x, y, nullptr, &column, nullptr, nullptr);
    return column;
}

// The column's text of that row if it has no room there, else null.
GtkText shortened_text(GtkTreeView* view, GtkTreeViewColumn* column, GtkTreePath* path, GtkTreeIter* row) {
    gtk_tree_view_column_cell_set_cell_data(column, gtk_tree_view_get_model(view), row, FALSE, FALSE);
    GdkRectangle area;
    gtk_tree_view_get_cell_area(view, path, column, &area);
    char* text = nullptr;
    GList* cells = gtk_cell_layout_get_cells(GTK_CELL_LAYOUT(column));
    for (GList* cell = cells; cell && !text; cell = cell->next) {
        int width = 0;
        gtk_cell_renderer_get_preferred_width(GTK_CELL_RENDERER(cell->data), GTK_WIDGET(view), nullptr, &width);
        if (GTK_IS_CELL_RENDERER_TEXT(cell->data) && width > area.width)
            g_object_get(cell->data, "text", &text, nullptr);
    }
    g_list_free(cells);
    return GtkText(text);
}

// What a screen has room for beside the pointer; of a longer text its beginning, and how long it is.
GtkText shown_part(const char* text) {
    constexpr long most = 1000;
    const long length = g_utf8_strlen(text, -1);
    if (length <= most) return GtkText(g_strdup(text));
    const auto bytes = static_cast<int>(g_utf8_offset_to_pointer(text, most) - text);
    return GtkText(g_strdup_printf("%.*s…\n(показано начало: %ld символов из %ld)", bytes, text, most, length));
}

// The toolkit's own would break a line at spaces only, and paths have none.
GtkWidget* make_label(const char* text) {
    GtkWidget* label = gtk_label_new(shown_part(text).get());
    PangoAttrList* attributes = pango_attr_list_new();
    pango_attr_list_insert(attributes, pango_attr_insert_hyphens_new(FALSE)); // they would seem a part of the text
    gtk_label_set_attributes(GTK_LABEL(label), attributes);
    pango_attr_list_unref(attributes);
    gtk_label_set_line_wrap(GTK_LABEL(label), TRUE);
    gtk_label_set_line_wrap_mode(GTK_LABEL(label), PANGO_WRAP_WORD_CHAR);
    gtk_label_set_max_width_chars(GTK_LABEL(label), 70);
    gtk_label_set_lines(GTK_LABEL(label), 20); // a text can be full of line ends
    gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
    gtk_widget_show(label);
    return label;
}

gboolean show_whole(GtkWidget* widget, int x, int y, gboolean by_key, GtkTooltip* tooltip, gpointer) {
    GtkTreeView* view = GTK_TREE_VIEW(widget);
    GtkTreePath* found = nullptr;
    GtkTreeIter row;
    if (!gtk_tree_view_get_tooltip_context(view, &x, &y, by_key, nullptr, &found, &row)) return FALSE;
    const GtkPath path(found);
    GtkTreeViewColumn* column = column_in_question(view, x, y, by_key);
    const GtkText text = column ? shortened_text(view, column, path.get(), &row) : nullptr;
    if (!text) return FALSE;
    gtk_tooltip_set_custom(tooltip, make_label(text.get()));
    gtk_tree_view_set_tooltip_cell(view, tooltip, path.get(), column, nullptr);
    return TRUE;
}

} // namespace

void show_whole_cells(GtkTreeView* view) {
    gtk_widget_set_has_tooltip(GTK_WIDGET(view), TRUE);
    g_signal_connect(view, "query-tooltip", G_CALLBACK(show_whole), nullptr);
}
