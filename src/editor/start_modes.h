// The ten start modes of a profile: a radio button each, in one group over four pages of the profile editor, and the
// frame of widgets that is sensitive only while its mode is chosen. On the toolkit's thread only.
#pragma once

#include "config/records.h"

#include <string>
#include <vector>

class MGDialog;

// The ids of the widgets of a mode's frame, which are switched on and off together, in the order of the window. They
// follow from the tables that bind the widgets to the fields.
using PageTable = const std::vector<std::string>;
extern PageTable& init_timer_id;
extern PageTable& init_file_id;
extern PageTable& init_recv_id;
extern PageTable& init_modify_id;
extern PageTable& init_client_id;
extern PageTable& init_server_id;
extern PageTable& init_gw_client_id;
extern PageTable& init_gw_server_id;
extern PageTable& init_fc_id;
extern PageTable& init_fs_id;

// Shows all modes, in order: radio button, sensitivity, widgets. ConfigDialog is set, for the handlers run meanwhile.
void fill_start_modes(MGDialog& dialog, const MGConfig& config);

// Reads the widgets of all modes, chosen or not.
void read_start_modes(MGDialog& dialog, MGConfig& config);

// Switches all widgets of a mode's frame.
void set_sensitive_init(MGDialog* dialog, PageTable& page, bool sensitive);

// The dependants in the TLS server's frame: the certificate demand allows the admission list, and the use of the list
// allows its button and the admission of everyone.
void check_init_server();
