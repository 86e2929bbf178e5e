// Members of MGDialog that work on views: selections, the cursor, the mouse.
#include "dialog/mg_dialog.h"
#include "dialog/rows.h"

bool MGDialog::TreeViewGetSelection(GtkTreeView* view, GtkListStore** store) {
    const auto failed = [this] {
        list_selection = nullptr;
        list_model = nullptr;
        return false;
    };
    list_selection = gtk_tree_view_get_selection(view);
    if (!list_selection) return failed();
    list_model = gtk_tree_view_get_model(view);
    if (!list_model) return failed();
    *store = GTK_LIST_STORE(list_model);
    selection_mode = gtk_tree_selection_get_mode(list_selection);
    if (selection_mode == GTK_SELECTION_NONE) return failed();

    if (selection_mode == GTK_SELECTION_MULTIPLE) {
        g_list_free_full(selected_rows, free_path);
        selected_rows = gtk_tree_selection_get_selected_rows(list_selection, nullptr);
        if (!selected_rows) return failed();
        if (!selected_rows->next)
            gtk_tree_model_get_iter(list_model, &list_iter, static_cast<GtkTreePath*>(selected_rows->data));
        return true;
    }
    GtkTreeIter selected;
    if (!gtk_tree_selection_get_selected(list_selection, nullptr, &selected)) return failed();
    list_iter = selected;
    return true;
}

int32_t MGDialog::TreeViewGetCountSelection() const {
    if (selection_mode == GTK_SELECTION_NONE) return 0;
    if (selection_mode != GTK_SELECTION_MULTIPLE) return 1;
    return list_selection ? gtk_tree_selection_count_selected_rows(list_selection) : 0;
}

bool MGDialog::GetListStoreFromTreeView(GtkTreeView* view, GtkListStore** store) const {
    GtkTreeModel* model = gtk_tree_view_get_model(view);
    if (!model) return false;
    *store = GTK_LIST_STORE(model);
    return true;
}

void MGDialog::TreeViewSetSelection(GtkTreeView* view) {
    gtk_tree_selection_select_iter(gtk_tree_view_get_selection(view), &list_iter);
}

void MGDialog::TreeViewSetCursor(GtkTreeView* view) {
    const GtkPath path(gtk_tree_model_get_path(gtk_tree_view_get_model(view), &list_iter));
    if (path) gtk_tree_view_set_cursor(view, path.get(), nullptr, FALSE);
}

bool MGDialog::IsPressMouseButtonOnSelected(GtkTreeView* view, const GdkEventButton* event) const {
    if (!event) return false;
    GtkTreePath* found = nullptr;
    gtk_tree_view_get_path_at_pos(view, static_cast<gint>(event->x), static_cast<gint>(event->y), &found, nullptr,
                                  nullptr, nullptr);
    const GtkPath path(found);
    return path && gtk_tree_selection_path_is_selected(gtk_tree_view_get_selection(view), path.get());
}

bool MGDialog::IsPressMouseRightButtonOnSelected(GtkTreeView* view, const GdkEventButton* event) const {
    return event && event->type == GDK_BUTTON_PRESS && event->button == 3 && IsPressMouseButtonOnSelected(view, event);
}

void MGDialog::ShowPopupMenu(const GdkEventButton* event, const char* menu_id) {
    GObject* menu = GetObject(menu_id);
    if (!GTK_IS_MENU(menu)) return;
    const guint32 time = event ? event->time : gtk_get_current_event_time();
    // What replaces gtk_menu_popup came only with version 3.22 of the toolkit.
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    gtk_menu_popup(GTK_MENU(menu), nullptr, nullptr, nullptr, nullptr, event ? event->button : 0, time);
    G_GNUC_END_IGNORE_DEPRECATIONS
}

int32_t MGDialog::ListBoxGetIndexRow(GtkListBoxRow* row) const {
    return gtk_list_box_row_get_index(row);
}

void MGDialog::ListBoxSetSingleClick(const char* id, bool value) {
    if (id) gtk_list_box_set_activate_on_single_click(GTK_LIST_BOX(GetObject(id)), value);
}
