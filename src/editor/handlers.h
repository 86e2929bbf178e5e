// The toolkit's handlers of the main window and of the profile editor, found by name when a window is loaded.
// Each finds its dialog and calls an operation that has arguments of its own; none lets an exception out.
#pragma once

#include <gtk/gtk.h>

extern "C" {

// window_profile
gboolean window_delete_event(GtkWidget* window, GdkEvent* event, gpointer);
void programm_exit(GtkMenuItem* item, gpointer);
void profile_settings(GtkMenuItem* item, gpointer);
void profile_about(GtkMenuItem* item, gpointer);
void profile_configure_click(GtkTreeView* view, GtkTreePath* path, GtkTreeViewColumn* column, gpointer);
void profile_configure_press(GtkButton* button, gpointer view);
void profile_default_taggle(GtkCellRendererToggle* cell, gchar* path, gpointer store);
void profile_active_taggle(GtkCellRendererToggle* cell, gchar* path, gpointer store);
void profile_create(GtkButton* button, gpointer store);
void profile_rename(GtkButton* button, gpointer view);
void profile_delete(GtkButton* button, gpointer view);

// dialog_enter_2
void enter_2_ok(GtkButton* button, gpointer dialog);
}
