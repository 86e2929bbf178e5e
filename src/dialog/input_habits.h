// Habits of the toolkit's inputs that would harm or stop the user, mended for every window at one place.
#pragma once

#include <gtk/gtk.h>

// Called once for a window that `builder` has made, before it is shown. Then
// - the wheel changes a spin button or combo box only where it is being edited, and scrolls the page elsewhere;
// - Ctrl with a page key turns the notebook's page from a spin button or a list too;
// - Enter opens the row of a list whose rows can be opened, whichever of its cells has the cursor;
// - F4 presses the icon in the entry that has the focus;
// - Tab reaches radio buttons also where the chosen one of their group lies on another page;
// - a start mode or another radio button that a key chooses is scrolled into view and has the focus;
// - a drop-down list can be narrower than its longest row;
// - a label is dimmed together with the input that it names.
void mend_inputs(GtkBuilder* builder, GtkWidget* window);
