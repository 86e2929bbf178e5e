// Mends the toolkit's lists by handlers that come before its own.
#include "dialog/list_habits.h"

#include "dialog/gtk_owner.h"
#include "dialog/rows.h"
#include "dialog/text_search.h"
#include "dialog/whole_cells.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

// The buttons beside a list.
struct ListButtons {
    std::string_view view;
    const char *add, *change, *remove;
    bool has_marks = false; // in its first column, for what the buttons do
};

constexpr auto all_buttons = std::to_array<ListButtons>({
    {"profile_view", "button_profile_create", "button_profile_rename", "button_profile_delete"},
    {"active_view", "button_active_insert", "button_active_replace", "button_active_delete"},
    {"admit_view", "button_admit_add", "button_admit_rename", "button_admit_delete", true},
    {"admit_view_2", "button_admit_add", "button_admit_rename", "button_admit_delete", true},
    {"queue_view", "button_admit_add", "button_admit_rename", "button_admit_delete", true},
    {"allow_view", "button_admit_add", "button_admit_rename", "button_admit_delete", true},
    {"adrs_view", "button_adrs_add", "button_adrs_rename", "button_adrs_delete", true},
});

const ListButtons* buttons_of(GtkTreeView* view) {
    const char* id = gtk_buildable_get_name(GTK_BUILDABLE(view));
    const auto* found = std::ranges::find(all_buttons, std::string_view(id ? id : ""), &ListButtons::view);
    return found == all_buttons.end() ? nullptr : found;
}

void press(GtkBuilder* builder, const char* id) {
    GtkWidget* button = GTK_WIDGET(gtk_builder_get_object(builder, id));
    if (gtk_widget_is_sensitive(button)) gtk_button_clicked(GTK_BUTTON(button));
}

bool is_enter(guint key) {
    return key == GDK_KEY_Return || key == GDK_KEY_KP_Enter || key == GDK_KEY_ISO_Enter;
}

// The view itself would flip the mark in the cell at the cursor.
void open_row(GtkTreeView* view, GtkTreePath* cursor) {
    gtk_tree_view_set_cursor(view, cursor, nullptr, FALSE); // selects the row and no other
    gtk_tree_view_row_activated(view, cursor, gtk_tree_view_get_column(view, 1));
}

void mark_row(GtkTreeView* view, GtkTreePath* cursor) {
    GList* cells = gtk_cell_layout_get_cells(GTK_CELL_LAYOUT(gtk_tree_view_get_column(view, 0)));
    const GtkText row(gtk_tree_path_to_string(cursor));
    g_signal_emit_by_name(cells->data, "toggled", row.get());
    g_list_free(cells);
}

// Without a row at the cursor a key does what the toolkit does.
gboolean act_on_row(GtkWidget* widget, GdkEventKey* key, gpointer) {
    GtkTreeView* view = GTK_TREE_VIEW(widget);
    const ListButtons* buttons = buttons_of(view);
    const bool opens =
        is_enter(key->keyval) &&
        g_signal_has_handler_pending(view, g_signal_lookup("row-activated", GTK_TYPE_TREE_VIEW), 0, FALSE);
    const bool marks = key->keyval == GDK_KEY_space && buttons && buttons->has_marks;
    if (!is_plain_key(key) || (!opens && !marks)) return FALSE;
    GtkTreePath* found = nullptr;
    gtk_tree_view_get_cursor(view, &found, nullptr);
    const GtkPath cursor(found);
    if (cursor) opens ? open_row(view, cursor.get()) : mark_row(view, cursor.get());
    return TRUE;
}

gboolean press_button_by_key(GtkWidget* view, GdkEventKey* key, gpointer builder) {
    const ListButtons& buttons = *buttons_of(GTK_TREE_VIEW(view));
    if (!is_plain_key(key)) return FALSE;
    switch (key->keyval) {
    case GDK_KEY_Insert:
    case GDK_KEY_KP_Insert:
        press(GTK_BUILDER(builder), buttons.add);
        return TRUE;
    case GDK_KEY_F2:
        press(GTK_BUILDER(builder), buttons.change);
        return TRUE;
    case GDK_KEY_Delete:
    case GDK_KEY_KP_Delete:
        press(GTK_BUILDER(builder), buttons.remove);
        return TRUE;
    default:
        return FALSE;
    }
}

// A double click on a mark has marked twice, and means no more.
void change_row(GtkTreeView* view, GtkTreePath*, GtkTreeViewColumn* column, gpointer builder) {
    if (column != gtk_tree_view_get_column(view, 0)) press(GTK_BUILDER(builder), buttons_of(view)->change);
}

// In a list to choose from: the chosen row is the answer.
void press_ok(GtkTreeView* view, GtkTreePath*, GtkTreeViewColumn*, gpointer) {
    gtk_window_activate_default(GTK_WINDOW(gtk_widget_get_toplevel(GTK_WIDGET(view))));
}

void connect_buttons(GtkTreeView* view, GtkBuilder* builder) {
    const ListButtons* buttons = buttons_of(view);
    if (!buttons) {
        g_signal_connect(view, "row-activated", G_CALLBACK(press_ok), nullptr);
        return;
    }
    if (buttons->has_marks) g_signal_connect(view, "row-activated", G_CALLBACK(change_row), builder);
    g_signal_connect(view, "key-press-event", G_CALLBACK(press_button_by_key), builder);
    const auto tell = [&](const char* id, const char* text) {
        gtk_widget_set_tooltip_text(GTK_WIDGET(gtk_builder_get_object(builder, id)), text);
    };
    tell(buttons->add, "Клавиша Insert в списке");
    tell(buttons->change, buttons->view == "profile_view" ? "Клавиша F2 в списке"
                                                          : "Клавиша F2 или Enter в списке, двойной щелчок по строке");
    tell(buttons->remove, "Клавиша Delete в списке");
}

// The toolkit asks for FALSE where the row is found; its own finds by the beginning alone.
gboolean lacks_text(GtkTreeModel* rows, int column, const char* typed, GtkTreeIter* row, gpointer) {
    const GtkText key = folded(typed);
    return !contains(text_cell(rows, *row, column).c_str(), key.get());
}

constexpr const char* click_counter = "vorma-click-counter";
constexpr const char* click_was_cut_short = "vorma-click-cut-short";

// Called for each click that the toolkit counts; there is no other way to the counter of a list's rows.
gboolean remember_counter(GSignalInvocationHint*, guint, const GValue* values, gpointer) {
    GtkEventController* counter = GTK_EVENT_CONTROLLER(g_value_get_object(values));
    GtkWidget* widget = gtk_event_controller_get_widget(counter);
    const bool of_rows = gtk_event_controller_get_propagation_phase(counter) == GTK_PHASE_BUBBLE; // not of the headings
    if (of_rows && GTK_IS_TREE_VIEW(widget)) g_object_set_data(G_OBJECT(widget), click_counter, counter);
    return TRUE;
}

// A box takes the input away. The counter of a click that opened it has lost its time limit.
void note_cut_short(GtkWidget* view, gboolean has_input, gpointer) {
    if (!has_input) g_object_set_data(G_OBJECT(view), click_was_cut_short, view);
}

gboolean count_clicks_anew(GtkWidget* view, GdkEvent*, gpointer) {
    const bool cut_short = g_object_steal_data(G_OBJECT(view), click_was_cut_short);
    gpointer counter = g_object_get_data(G_OBJECT(view), click_counter);
    if (cut_short && counter) gtk_event_controller_reset(GTK_EVENT_CONTROLLER(counter));
    return FALSE;
}

void mend_double_clicks(GtkWidget* view) {
    [[maybe_unused]] static const gulong hook = g_signal_add_emission_hook(
        g_signal_lookup("pressed", GTK_TYPE_GESTURE_MULTI_PRESS), 0, remember_counter, nullptr, nullptr);
    g_signal_connect(view, "grab-notify", G_CALLBACK(note_cut_short), nullptr);
    g_signal_connect(view, "button-press-event", G_CALLBACK(count_clicks_anew), nullptr);
}

} // namespace

bool is_plain_key(const GdkEventKey* key) {
    return (key->state & gtk_accelerator_get_default_mod_mask()) == 0;
}

void mend_list(GtkTreeView* view, GtkBuilder* builder) {
    connect_buttons(view, builder);
    g_signal_connect(view, "key-press-event", G_CALLBACK(act_on_row), nullptr);
    gtk_tree_view_set_search_equal_func(view, lacks_text, nullptr, nullptr);
    mend_double_clicks(GTK_WIDGET(view));
    show_whole_cells(view);
}
