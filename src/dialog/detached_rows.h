// Takes a list off its views while many of its rows are written, since a view follows every cell. For lists that have
// no selection yet: a view forgets it. On the toolkit's thread only.
#pragma once

#include "dialog/mg_dialog.h"

#include <vector>

// All views of the dialog's window that show the store.
inline std::vector<GtkTreeView*> views_of(const MGDialog& dialog, GtkListStore* store) {
    std::vector<GtkTreeView*> views;
    GSList* objects = gtk_builder_get_objects(dialog.builder);
    for (GSList* item = objects; item; item = item->next)
        if (GTK_IS_TREE_VIEW(item->data) && gtk_tree_view_get_model(GTK_TREE_VIEW(item->data)) == GTK_TREE_MODEL(store))
            views.push_back(GTK_TREE_VIEW(item->data));
    g_slist_free(objects);
    return views;
}

class DetachedRows {
public:
    DetachedRows(const MGDialog& dialog, GtkListStore* store) : store_(store) {
        for (GtkTreeView* view : views_of(dialog, store)) {
            views_.push_back({view, gtk_tree_view_get_search_column(view)});
            gtk_tree_view_set_model(view, nullptr);
        }
    }
    ~DetachedRows() {
        for (const View& view : views_) {
            gtk_tree_view_set_model(view.view, GTK_TREE_MODEL(store_));
            gtk_tree_view_set_search_column(view.view, view.search_column); // forgotten with the list
        }
    }
    DetachedRows(const DetachedRows&) = delete;
    DetachedRows& operator=(const DetachedRows&) = delete;

private:
    struct View {
        GtkTreeView* view;
        int search_column;
    };
    GtkListStore* store_; // the builder has it
    std::vector<View> views_;
};
