// The editor of one profile, dialog_config. It works on a copy of the profile's settings, which nested dialogs reach
// through user_data of ConfigDialog: nothing reaches the profile or the disk before its button "Сохранить". On the
// toolkit's thread only.
#pragma once

#include <gtk/gtk.h>

// Opens the editor for the profile that is selected in the main window; does nothing without a selection.
// Failures are told over the main window.
void profile_configure(GtkTreeView* view);
