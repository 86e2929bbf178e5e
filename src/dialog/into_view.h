// Bringing a widget before the user's eyes. On the toolkit's thread only.
#pragma once

#include <gtk/gtk.h>

// Scrolls the area that the widget lies in, as little as needed; of a widget that is too high it shows the beginning.
void scroll_into_view(GtkWidget* widget);

// For a value at fault: its notebook's page comes to the front, and the widget is in view and has the focus. In a frame
// that is closed the focus goes to the choice in the frame's title, which opens it.
void focus_problem(GtkWidget* widget);
