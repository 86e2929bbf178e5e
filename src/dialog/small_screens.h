// Windows on small screens and with large fonts. On the toolkit's thread only.
#pragma once

#include <gtk/gtk.h>

// Called for a window that `builder` has made and the code has filled, before it is shown. It opens no larger than its
// screen. In the definition the content of a dialog stands in a scrolled window that never scrolls, its buttons beside
// it. If the dialog as a whole is too large for the screen, its content scrolls and long titles of check buttons
// shorten, so that the buttons stay in sight. A column of buttons that is too low for them shows its bar.
void fit_to_screen(GtkBuilder* builder, GtkWidget* window);

// The same for a box, which has the size that its text asks for: a text too large for the screen scrolls.
void fit_to_screen(GtkMessageDialog* box);

// A file chooser becomes no larger than its screen; beside its buttons it scrolls where it is too small for its font.
void fit_to_screen(GtkFileChooserDialog* chooser);
