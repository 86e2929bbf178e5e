// The address lists of a gateway, dialog_adrs: for each side the internal and the virtual addresses. It edits a copy
// of its list and hands it to the profile editor's working copy on OK. On the toolkit's thread only.
#pragma once

#include "config/list_records.h"

#include <gtk/gtk.h>

// Opens one of the four lists and runs it to its end. Failures are told over ConfigDialog.
void edit_list_adrs_ext(bool server, bool is_virtual);

// Whether the list in AdrsDialog is one of virtual addresses: what find_active says in this dialog.
bool list_is_virtual();

// Writes an address into the current row of AdrsDialog; reset_mark takes its [v] mark off, else the mark stays.
void fill_adrs_address(GtkListStore* store, bool reset_mark, const MGListAdrs& address, bool is_virtual);

// Reads AddressDialog into the record; histories take what they are given here.
void assign_adrs_address(MGListAdrs& address, bool is_virtual);
