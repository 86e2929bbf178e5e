// Owners of what the toolkit hands out. On the toolkit's thread only.
#pragma once

#include <gtk/gtk.h>

#include <memory>

struct GtkTextFree {
    void operator()(char* text) const { g_free(text); }
};
using GtkText = std::unique_ptr<char, GtkTextFree>;

struct GtkPathFree {
    void operator()(GtkTreePath* path) const { gtk_tree_path_free(path); }
};
using GtkPath = std::unique_ptr<GtkTreePath, GtkPathFree>;

struct GtkUnref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
using GtkListStorePtr = std::unique_ptr<GtkListStore, GtkUnref>; // one reference

// A window that is destroyed at the end of its scope.
struct GtkWindowDestroy {
    void operator()(GtkWidget* window) const { gtk_widget_destroy(window); }
};
using GtkOwnWindow = std::unique_ptr<GtkWidget, GtkWindowDestroy>;

// Of the elements of a GList of paths.
inline void free_path(gpointer path) {
    gtk_tree_path_free(static_cast<GtkTreePath*>(path));
}
