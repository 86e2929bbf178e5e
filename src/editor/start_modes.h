// The ten start modes of a profile: a radio button each, in one group over four pages of the profile editor, and the
// frame of widgets that is sensitive only while its mode is chosen.
#pragma once

#include "app/globals.h"
#include "config/records.h"

class MGDialog;

// Shows all modes, in order: radio button, sensitivity, widgets. ConfigDialog is set, for the handlers run meanwhile.
void fill_start_modes(MGDialog& dialog, const MGConfig& config);

// Reads the widgets of all modes, chosen or not.
void read_start_modes(MGDialog& dialog, MGConfig& config);

// Switches all widgets of a mode's frame.
void set_sensitive_init(MGDialog* dialog, PageTable& page, bool sensitive);

// The dependants in the TLS server's frame: the certificate demand allows the admission list, and the use of the list
// allows its button and the admission of everyone.
void check_init_server();
