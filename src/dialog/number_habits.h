// A number is stored as it was typed, or the user sees what becomes of it first. On the toolkit's thread only.
#pragma once

#include <gtk/gtk.h>

// Called once for a spin button, before its window is shown. Then what is no whole number brings back the last one,
// where the toolkit would take the digits at its beginning; and a tooltip tells the limits. The definition lets any
// character be typed: of "9o97" nobody would expect 997.
void mend_number(GtkSpinButton* button);

// Asked before `window` is closed by its OK. True if what was typed into one of its spin buttons and what this shows
// now differ: then the number is in view and has the focus. It is asked about each of them once, so that the next OK
// goes through.
bool shows_corrected_number(GtkWindow* window);
