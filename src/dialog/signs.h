// What a window tells by signs alone, told in words too. On the toolkit's thread only.
#pragma once

#include <gtk/gtk.h>

// Called once for each widget of a window, before it is shown. Then
// - the icon in an entry is one that the theme draws in the colour of its texts, and its tooltip is its name;
// - a heading of signs has a tooltip that tells what they mean, and its marks have a name for assistive technology;
// - a frame that a check or radio button titles has the button's text for a name.
void explain_signs(GtkWidget* widget);
