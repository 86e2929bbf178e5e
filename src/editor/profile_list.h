// The list of profiles in the main window. Row i of its store shows element i of MGContext::profiles, and every
// operation changes both. What the user confirms here goes to disk at once. On the toolkit's thread only.
#pragma once

#include <gtk/gtk.h>

#include <string>

class MGContext;

// Fills the list at start: the profiles that were read, or one new profile where there is no master file yet.
void init_profile_dialog();

// Adds a row for each profile that was read.
void profile_add_config_data(GtkListStore* store);

// Adds a new profile with default settings: one row and one element of the vector.
void profile_add_data(GtkListStore* store, int is_default, const char* name, const char* id, int active);

// Whether a profile has this id, byte for byte; the profile whose index skip points to, if any, doesn't count.
bool id_already_exist(const MGContext* context, const std::string& id, const int* skip);
