// Habits of the toolkit's inputs that would harm or stop the user, mended for every window at one place. On the
// toolkit's thread only.
#pragma once

#include <gtk/gtk.h>

// Called once for a window that `builder` has made, before it is shown. Then
// - the wheel changes a spin button or combo box only where it is being edited, and scrolls the page elsewhere;
// - Ctrl with a page key turns the notebook's page from a spin button, a list or a page too wide for the window too;
// - F4 presses the icon in the entry that has the focus;
// - Tab reaches radio buttons also where the chosen one of their group lies on another page;
// - a start mode or another radio button that a key chooses is scrolled into view and has the focus;
// - what is typed, pasted or dropped into an entry brings no line ends, no other control characters and none that no
//   document can hold: the value in memory is the one in the file;
// - a drop-down list can be narrower than its longest row;
// - a cell of a list shows a text with line ends whole, in its one line, with a sign for each end as an entry has it;
// - lists have the habits of list_habits.h, numbers those of number_habits.h;
// - a label is dimmed together with the input that it names;
// - what signs alone would tell is told in words (signs.h).
void mend_inputs(GtkBuilder* builder, GtkWidget* window);

// Sets the text of an entry of such a window as it stands, line ends included: a value of a file may have them.
void set_entry_text(GtkEntry* entry, const char* text);
