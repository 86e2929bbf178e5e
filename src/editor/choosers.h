// The choosers behind every entry with a browse icon. On the toolkit's thread only.
#pragma once

#include <gtk/gtk.h>

#include <string>

class MGDialog;

// Runs a chooser over the dialog, beginning at `preset` unless that is blank; empty unless the user accepted.
std::string choose_path(MGDialog* dialog, const char* title, GtkFileChooserAction action, const char* preset);

// Lets the user choose a directory, from the entry's own text on; the entry receives its path.
// A failure is told over the dialog, and so is a name that can't be stored byte for byte: the entry then stays.
void choice_catalog(MGDialog* dialog, const char* entry);

// Lets the user choose a file in the catalog that catalog_entry (may be null) names; file_entry receives the bare
// name, and the catalog's entry stays as it is. Refuses as choice_catalog does.
void choice_file(MGDialog* dialog, const char* catalog_entry, const char* file_entry);
