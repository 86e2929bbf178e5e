// Handlers that many windows of the interface definition share; found there by name. The definition hands in the
// dialog as user data. On the toolkit's thread only.
#pragma once

#include <gtk/gtk.h>

extern "C" {
void button_ok(GtkWidget* button, gpointer dialog);     // ends the run with GTK_RESPONSE_OK, unchecked
void button_cancel(GtkWidget* button, gpointer dialog); // ends the run with GTK_RESPONSE_CANCEL
}
