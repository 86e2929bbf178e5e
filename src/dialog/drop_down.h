// Drop-down lists of editable combo boxes, made fit for as many rows as a site has addresses: a list in place of a
// menu, long rows shortened in the middle, and under the entry, while the user types, the rows that contain what he
// typed. What he typed stays as it is until he picks a row.
#pragma once

#include <gtk/gtk.h>

// To be called once, while the combo box has few rows or none. The combo box has an entry.
void prepare_drop_down(GtkComboBox* combo);
