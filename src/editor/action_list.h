// The list of actions in the profile editor. Row i of its store shows element i of `actions` of the working copy, and
// every operation changes both; nothing is saved here. On the toolkit's thread only.
#pragma once

#include "config/action_records.h"

#include <gtk/gtk.h>

#include <vector>

class MGDialog;

// Fills the empty list of a newly opened profile editor.
void show_actions(MGDialog& dialog, const std::vector<MGAction>& actions);

// Opens dialog_active for a new action and adds it: before the row `index` with insert, else at the end.
void active_add_and_insert(GtkListStore* store, bool insert, int index);

// Opens dialog_active for the selected action.
void active_replace(GtkTreeView* view);

// Reads dialog_active into the action and into the current row of the store.
void active_save_data(GtkListStore* store, MGAction& action);
