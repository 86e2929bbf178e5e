// Bends the toolkit's combo box and its completion to lists of any length.
#include "dialog/drop_down.h"

#include "dialog/input_habits.h"
#include "dialog/rows.h"
#include "dialog/text_search.h"
#include "dialog/whole_cells.h"

#include <cstring>

namespace {

// A menu makes a widget of every row and touches all earlier ones for each; a list draws the rows that are seen.
void show_as_list(GtkWidget* combo) {
    static GtkCssProvider* const list_style = [] {
        GtkCssProvider* provider = gtk_css_provider_new();
        gtk_css_provider_load_from_data(provider, "combobox { -GtkComboBox-appears-as-list: true; }", -1, nullptr);
        return provider;
    }();
    gtk_style_context_add_provider(gtk_widget_get_style_context(combo), GTK_STYLE_PROVIDER(list_style),
                                   GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    g_signal_emit_by_name(combo, "style-updated"); // else the menu would stay until the window is shown
}

// The window that pops up for a combo box or a completion. The toolkit keeps it to itself, but listens to it in their
// name; asking for it through the accessible object would make one, which then tells of every row that comes or goes.
GtkWidget* pop_up_of(gpointer owner) {
    GtkWidget* found = nullptr;
    GList* windows = gtk_window_list_toplevels();
    for (GList* item = windows; item; item = item->next)
        if (g_signal_handler_find(item->data, G_SIGNAL_MATCH_DATA, 0, 0, nullptr, nullptr, owner))
            found = GTK_WIDGET(item->data);
    g_list_free(windows);
    return found;
}

// The list below a widget.
GtkTreeView* list_in(GtkWidget* widget) {
    if (GTK_IS_TREE_VIEW(widget)) return GTK_TREE_VIEW(widget);
    GtkTreeView* found = nullptr;
    GList* children = GTK_IS_CONTAINER(widget) ? gtk_container_get_children(GTK_CONTAINER(widget)) : nullptr;
    for (GList* child = children; child && !found; child = child->next) found = list_in(GTK_WIDGET(child->data));
    g_list_free(children);
    return found;
}

// One row tells the height of all; else each is asked before the first is shown.
void give_rows_one_height(GtkTreeView* rows) {
    gtk_tree_view_column_set_sizing(gtk_tree_view_get_column(rows, 0), GTK_TREE_VIEW_COLUMN_FIXED);
    gtk_tree_view_set_fixed_height_mode(rows, TRUE);
}

// Before each pop-up the toolkit turns the scroll bar off and asks the list for its height. A list that has yet to
// look at its rows would say nothing then, and take the height of all of them later, beyond any screen.
void look_at_rows(GtkScrolledWindow* scrolled, GParamSpec*, gpointer) {
    GtkPolicyType horizontal, vertical;
    gtk_scrolled_window_get_policy(scrolled, &horizontal, &vertical);
    if (vertical != GTK_POLICY_NEVER) return;
    GtkTreeView* rows = list_in(GTK_WIDGET(scrolled));
    give_rows_one_height(rows);
    int width = 0;
    gtk_widget_get_preferred_width(GTK_WIDGET(rows), &width, nullptr);
    gtk_widget_queue_resize(GTK_WIDGET(rows));
}

// So that it is turned off the next time too.
void turn_scroll_bar_on(GtkScrolledWindow* scrolled, gpointer) {
    gtk_scrolled_window_set_policy(scrolled, GTK_POLICY_NEVER, GTK_POLICY_AUTOMATIC);
}

// In one line, line ends shown as in the entry.
void shorten_in_the_middle(GtkCellLayout* layout) {
    GList* cells = gtk_cell_layout_get_cells(layout);
    for (GList* cell = cells; cell; cell = cell->next)
        g_object_set(cell->data, "ellipsize", PANGO_ELLIPSIZE_MIDDLE, "single-paragraph-mode", TRUE, nullptr);
    g_list_free(cells);
}

constexpr const char* row_was_picked = "row-was-picked"; // of a completion: by a key, since the last typing

GtkListStorePtr rows_with(GtkTreeModel* rows, const char* typed) {
    GtkListStorePtr matches(gtk_list_store_new(1, G_TYPE_STRING));
    const GtkText key = folded(typed);
    GtkTreeIter row;
    for (gboolean found = *typed && gtk_tree_model_get_iter_first(rows, &row); found;
         found = gtk_tree_model_iter_next(rows, &row)) {
        GValue text = G_VALUE_INIT;
        gtk_tree_model_get_value(rows, &row, 0, &text);
        if (contains(g_value_get_string(&text), key.get()))
            gtk_list_store_insert_with_values(matches.get(), nullptr, -1, 0, g_value_get_string(&text), -1);
        g_value_unset(&text);
    }
    return matches;
}

gboolean any_row(GtkEntryCompletion*, const char*, GtkTreeIter*, gpointer) {
    return TRUE; // its rows are the matches
}

// Takes the row as it stands, as the whole list does.
gboolean take_match(GtkEntryCompletion* completion, GtkTreeModel* rows, GtkTreeIter* row, gpointer) {
    GtkWidget* entry = gtk_entry_completion_get_entry(completion);
    set_entry_text(GTK_ENTRY(entry), text_cell(rows, *row, 0).c_str());
    gtk_editable_set_position(GTK_EDITABLE(entry), -1);
    return TRUE;
}

// Comes before the completion, which shows its rows a moment later.
void narrow(GtkEntry* entry, gpointer combo) {
    GtkEntryCompletion* completion = gtk_entry_get_completion(entry);
    if (!completion) return;
    const GtkListStorePtr matches = rows_with(gtk_combo_box_get_model(GTK_COMBO_BOX(combo)), gtk_entry_get_text(entry));
    gtk_entry_completion_set_model(completion, GTK_TREE_MODEL(matches.get()));
    g_object_set_data(G_OBJECT(completion), row_was_picked, nullptr);
}

void dismiss(GtkEntry* entry, GtkEntryCompletion* completion) {
    g_object_ref(completion);
    gtk_entry_set_completion(entry, nullptr);
    gtk_entry_set_completion(entry, completion);
    g_object_unref(completion);
}

// The toolkit would close the dialog with the list by Escape, and take the row under a resting pointer by Enter.
gboolean keep_what_is_typed(GtkWidget* widget, GdkEventKey* key, gpointer) {
    GtkEntry* entry = GTK_ENTRY(widget);
    GtkEntryCompletion* completion = gtk_entry_get_completion(entry);
    if (!completion || !gtk_widget_get_mapped(pop_up_of(completion))) return FALSE;
    switch (key->keyval) {
    case GDK_KEY_Escape:
        dismiss(entry, completion);
        return TRUE;
    case GDK_KEY_Return:
    case GDK_KEY_KP_Enter:
    case GDK_KEY_ISO_Enter:
        if (!g_object_get_data(G_OBJECT(completion), row_was_picked)) dismiss(entry, completion);
        return FALSE;
    case GDK_KEY_Up:
    case GDK_KEY_KP_Up:
    case GDK_KEY_Down:
    case GDK_KEY_KP_Down:
    case GDK_KEY_Page_Up:
    case GDK_KEY_Page_Down:
        g_object_set_data(G_OBJECT(completion), row_was_picked, completion);
        return FALSE;
    default:
        return FALSE;
    }
}

// A press beside the matches closes them, and the toolkit leaves it at that: a button would need two presses.
void pass_press_on(GtkWidget* pop_up, GdkEvent* event, gpointer) {
    if (event->type != GDK_BUTTON_PRESS) return;
    const bool beside = event->button.x < 0 || event->button.x >= gtk_widget_get_allocated_width(pop_up) ||
                        event->button.y < 0 || event->button.y >= gtk_widget_get_allocated_height(pop_up);
    double x = 0, y = 0;
    GdkWindow* pressed = gdk_device_get_window_at_position_double(gdk_event_get_device(event), &x, &y);
    if (!beside || !pressed) return;
    GdkEvent* press = gdk_event_copy(event); // it was turned to the pop-up
    g_set_object(&press->button.window, pressed);
    press->button.x = x;
    press->button.y = y;
    gtk_main_do_event(press);
    gdk_event_free(press);
}

// Made for an entry when it is first used, since each brings a window and two views along.
gboolean offer_matches(GtkWidget* widget, GdkEvent*, gpointer) {
    GtkEntry* entry = GTK_ENTRY(widget);
    if (gtk_entry_get_completion(entry)) return FALSE;
    GtkEntryCompletion* completion = gtk_entry_completion_new();
    gtk_entry_completion_set_match_func(completion, any_row, nullptr, nullptr);
    gtk_entry_completion_set_text_column(completion, 0);
    shorten_in_the_middle(GTK_CELL_LAYOUT(completion));
    g_signal_connect(completion, "match-selected", G_CALLBACK(take_match), nullptr);
    GtkWidget* pop_up = pop_up_of(completion);
    give_rows_one_height(list_in(pop_up));
    g_signal_connect(pop_up, "event-after", G_CALLBACK(pass_press_on), nullptr);
    gtk_entry_set_completion(entry, completion);
    g_object_unref(completion); // the entry has it
    return FALSE;
}

} // namespace

void prepare_drop_down(GtkComboBox* combo) {
    show_as_list(GTK_WIDGET(combo));
    shorten_in_the_middle(GTK_CELL_LAYOUT(combo));
    GtkWidget* scrolled = gtk_bin_get_child(GTK_BIN(pop_up_of(GTK_WIDGET(combo))));
    show_whole_cells(list_in(scrolled));
    turn_scroll_bar_on(GTK_SCROLLED_WINDOW(scrolled), nullptr);
    g_signal_connect(scrolled, "notify::vscrollbar-policy", G_CALLBACK(look_at_rows), nullptr);
    g_signal_connect(scrolled, "unmap", G_CALLBACK(turn_scroll_bar_on), nullptr);
    GtkWidget* entry = gtk_bin_get_child(GTK_BIN(combo));
    g_signal_connect(entry, "focus-in-event", G_CALLBACK(offer_matches), nullptr);
    g_signal_connect(entry, "changed", G_CALLBACK(narrow), combo);
    g_signal_connect(entry, "key-press-event", G_CALLBACK(keep_what_is_typed), nullptr);
}
