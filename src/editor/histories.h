// The histories that feed the drop-down lists of the editor (the vectors init_... of app/globals.h): gathered at start
// from all profiles and from the machine, added to while the program runs, never stored and never shortened.
#pragma once

#include "app/globals.h"

#include <string>

class MGContext;
class MGDialog;

// Appends text to the history unless it is empty or stands there already, byte for byte.
void add_string_to_vector(const std::string& text, History& history);
// The same for each text of source, in order. Throws MGErr.
void add_vector_to_vector(const History& source, History& history);

// Appends a row for each text to a combo box, which a newly opened dialog has empty. Throws MGErr.
void init_combo_box(MGDialog* dialog, const char* combo, const History& history);

// Adds the names and the ids of all profiles. Throws MGErr.
void profile_set_vector(const MGContext* context, History& names, History& ids);

// Gathers all histories at start, after the files are read. Throws MGErr: the machine's interfaces can't be listed.
void init_globsl_combo_box(const MGContext* context);
