// The histories that feed the drop-down lists of the editor (the vectors init_...): gathered at start from all
// profiles and from the machine, added to while the program runs, never stored and never shortened. On the toolkit's
// thread only.
#pragma once

#include <string>
#include <vector>

class MGContext;
class MGDialog;

// Each holds a text once, oldest first. They live as long as the process and are used by the toolkit's thread alone.
using History = std::vector<std::string>;
extern History init_profile_name;
extern History init_profile_id;
extern History init_recv_ip;
extern History init_send_ip;
extern History init_send_domen;
extern History init_recv_domen;
extern History init_sub_net;
extern History init_net_device;
extern History init_tun_device;
extern History init_local_adr;
extern History init_virtual_adr;
extern History init_virtual_ip;
extern History init_action_name;
extern History init_console_prog;
extern History init_active_file;
extern History init_run_prog;
extern History init_run_param;
extern History init_exist_content;
extern History init_admit_filter;
extern History init_sub_dir; // holds the two templates of a sub-catalog from the start

// Appends text to the history unless it is empty or stands there already, byte for byte.
void add_string_to_vector(const std::string& text, History& history);
// The same for each text of source, in order. Throws MGErr.
void add_vector_to_vector(const History& source, History& history);

// Appends a row for each text to a combo box, which a newly opened dialog has empty. Throws MGErr.
void init_combo_box(MGDialog* dialog, const char* combo, const History& history);

// Adds the names and the ids of all profiles. Throws MGErr.
void profile_set_vector(const MGContext* context, History& names, History& ids);

// Gathers all histories at start, after the files are read. Throws MGErr: the machine's interfaces can't be listed.
void init_globsl_combo_box(const MGContext* context);
