// Gives the whole of what a list's cells shorten.
#pragma once

#include <gtk/gtk.h>

// Called once for a list: a text that its column is too narrow for is then shown whole in a tooltip, also at the
// cursor by the toolkit's key for it.
void show_whole_cells(GtkTreeView* view);
