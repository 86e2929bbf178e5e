// The toolkit's handlers of the list dialogs and of the choice of a crypto profile, found by name when a window is
// loaded. Each calls an operation that has arguments of its own; none lets an exception out. On the toolkit's thread
// only.
#pragma once

#include <gtk/gtk.h>

extern "C" {

// dialog_config: the buttons that open the lists
void edit_admit_list(GtkButton* button, gpointer);
void edit_admit_list_gw(GtkButton* button, gpointer);
void edit_admit_fc_queue(GtkButton* button, gpointer);
void edit_admit_fs_allow(GtkButton* button, gpointer);
void edit_adrs_list_client(GtkButton* button, gpointer);
void edit_adrs_list_server(GtkButton* button, gpointer);
void edit_virtual_list_client(GtkButton* button, gpointer);
void edit_virtual_list_server(GtkButton* button, gpointer);
void fill_crypt_context(GtkButton* button, gpointer);

// dialog_crypto
void crypto_ok(GtkButton* button, gpointer dialog);

// dialog_admit
void edit_admit_fs_cert(GtkButton* button, gpointer);
void edit_admit_fs_que(GtkButton* button, gpointer);
void admit_find(GtkButton* button, gpointer);
void admit_next(GtkButton* button, gpointer);
void admit_select_find(GtkButton* button, gpointer);
void admit_status_toggle(GtkCellRendererToggle* cell, gchar* path, gpointer);
void admit_select_all(GtkButton* button, gpointer);
void admit_unselect_all(GtkButton* button, gpointer);
void admit_add_user(GtkButton* button, gpointer);
void admit_rename_user(GtkButton* button, gpointer);
void admit_delete_user(GtkButton* button, gpointer);
void admit_print(GtkButton* button, gpointer);

// dialog_subject
void press_subject_name(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void toggle_use_server(GtkToggleButton* button, gpointer);
void subject_ok(GtkButton* button, gpointer dialog);

// dialog_subject_2
void press_subject_name_2(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void subject_ok_2(GtkButton* button, gpointer dialog);

// dialog_queue
void press_in_dir_catalog(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void press_out_dir_catalog(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void press_ticket_catalog(GtkEntry* entry, GtkEntryIconPosition icon, GdkEvent* event, gpointer);
void queue_ok(GtkButton* button, gpointer dialog);

// dialog_allow
void allow_ok(GtkButton* button, gpointer dialog);

// dialog_adrs
void adrs_status_toggle(GtkCellRendererToggle* cell, gchar* path, gpointer store);
void adrs_add_address(GtkButton* button, gpointer store);
void adrs_rename_address(GtkButton* button, gpointer view);
void adrs_delete_address(GtkButton* button, gpointer store);
void adrs_print(GtkButton* button, gpointer);
void adrs_select_all(GtkButton* button, gpointer store);
void adrs_unselect_all(GtkButton* button, gpointer store);

// dialog_address
void address_ok(GtkButton* button, gpointer dialog);

// dialog_result
void result_view(GtkButton* button, gpointer);
}
