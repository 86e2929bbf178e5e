// What a list does at keys and clicks, for every list of every window at one place. On the toolkit's thread only.
#pragma once

#include <gtk/gtk.h>

// Called once for a list that `builder` has made, before its window is shown. Then
// - Enter and a double click open the row: they press "Изменить" where the definition connects nothing else, and the
//   default button in a list to choose from;
// - Insert, F2 and Delete press the buttons that add, change and delete, and the buttons' tooltips say so;
// - the space bar marks the row at the cursor in lists that have marks, whichever of its cells has the cursor;
// - what is typed into the list finds a row by any part of its name;
// - a click after a box that another click has opened is no second half of a double click;
// - a tooltip gives the whole of what a cell shortens.
void mend_list(GtkTreeView* view, GtkBuilder* builder);

// Whether it comes without Ctrl, Alt and the like.
bool is_plain_key(const GdkEventKey* key);
