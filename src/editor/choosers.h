// The choosers behind every entry with a browse icon. A failure is told over the dialog; nothing is thrown.
#pragma once

class MGDialog;

// Lets the user choose a directory, from the entry's own text on; the entry receives its path.
void choice_catalog(MGDialog* dialog, const char* entry);

// Lets the user choose a file in the catalog that catalog_entry (may be null) names; file_entry receives the bare
// name, and the catalog's entry stays as it is.
void choice_file(MGDialog* dialog, const char* catalog_entry, const char* file_entry);
