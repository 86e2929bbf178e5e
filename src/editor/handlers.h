// The toolkit's handlers of the main window and of the profile editor, found by name when a window is loaded.
// Each finds its dialog and calls an operation that has arguments of its own; none lets an exception out. On the
// toolkit's thread only.
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

// dialog_config, general pages
void config_ok(GtkButton* button, gpointer dialog);
void toggle_debug_log(GtkToggleButton* button, gpointer);
void toggle_error_save(GtkToggleButton* button, gpointer);
void toggle_crypto_init(GtkToggleButton* button, gpointer);
void press_catalog_log(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void press_error_catalog(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void press_error_file(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void press_catalog_archive_in(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void press_catalog_archive_out(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void press_catalog_error_in(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);

// dialog_config, pages of the start modes
void toggle_init_timer(GtkToggleButton* button, gpointer);
void toggle_init_file(GtkToggleButton* button, gpointer);
void toggle_init_recv(GtkToggleButton* button, gpointer);
void toggle_init_modify(GtkToggleButton* button, gpointer);
void toggle_init_client(GtkToggleButton* button, gpointer);
void toggle_init_server(GtkToggleButton* button, gpointer);
void toggle_init_gw_client(GtkToggleButton* button, gpointer);
void toggle_init_gw_server(GtkToggleButton* button, gpointer);
void toggle_init_fc(GtkToggleButton* button, gpointer);
void toggle_init_fs(GtkToggleButton* button, gpointer);
void toggle_tls_recv(GtkToggleButton* button, gpointer);
void toggle_server_need_cert(GtkToggleButton* button, gpointer);
void toggle_use_admission_list(GtkToggleButton* button, gpointer);
void press_init_catalog(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void press_mask_file(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void press_recv_catalog(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void press_modify_catalog(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void press_modify_file(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);

// dialog_config, page of the actions
void active_replace_click(GtkTreeView* view, GtkTreePath* path, GtkTreeViewColumn* column, gpointer);
void active_activ_taggle(GtkCellRendererToggle* cell, gchar* path, gpointer store);
void active_add(GtkButton* button, gpointer store);
void active_insert(GtkButton* button, gpointer view);
void active_replace_press(GtkButton* button, gpointer view);
void active_delete(GtkButton* button, gpointer view);
void active_top(GtkButton* button, gpointer view);
void active_up(GtkButton* button, gpointer view);
void active_down(GtkButton* button, gpointer view);
void active_bottom(GtkButton* button, gpointer view);

// dialog_active
void press_active_customize(GtkButton* button, gpointer);
void active_ok(GtkButton* button, gpointer dialog);

// dialog_console
void console_ok(GtkButton* button, gpointer dialog);

// dialog_send
void toggle_tls(GtkToggleButton* button, gpointer);
void press_send_catalog(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void press_send_file(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void send_ok(GtkButton* button, gpointer dialog);

// dialog_copy
void press_copy_catalog(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void press_copy_file(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void press_copy_catalog_to(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void copy_ok(GtkButton* button, gpointer dialog);

// dialog_runprog
void runprog_ok(GtkButton* button, gpointer dialog);

// dialog_exist
void press_exist_catalog(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void press_exist_file(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void exist_ok(GtkButton* button, gpointer dialog);
}
