// The application context: where everything lies below the user's home, and the list of profiles.
// main creates the one object and every handler reaches it through the global Context. On the toolkit's thread only.
#pragma once

#include "config/records.h"

#include <cstdint>
#include <string>
#include <vector>

class MGContext {
public:
    // The catalog tree, absolute paths without a trailing slash; empty until init_vorma_catalogs.
    std::string base_dir; // $HOME/.selunara/vormaqs
    std::string config_dir;
    std::string log_dir;
    std::string signal_dir;
    std::string result_dir;
    std::string archive_in_dir;
    std::string archive_out_dir;
    std::string error_in_dir;
    std::string tmp_dir;
    std::string log_file;

    std::string config_file; // the master file; set by find_config_file whether or not it exists
    bool config_found = false;

    // Format version of the master file, required of every profile file.
    int32_t version = 1;
    int32_t release = 1;
    int32_t quantity = 0; // number of profiles as last read or written

    // All profiles in the order of the master file and of the main window's rows.
    std::vector<MGProfile> profiles;

    std::string editor_path = "/usr/bin/kate"; // the program that opens result files
};

// Set by main before anything else can run; lives as long as the process and is used by one thread, the toolkit's.
extern MGContext* Context;

// Builds the catalog tree below $HOME, each catalog made at once where it is missing, and fills the path fields.
// Throws MGErr: HOME is not set, or a catalog can't be made.
void init_vorma_catalogs(MGContext* context, const char* log_file_name);

// Sets config_file, and config_found where that file exists; gives back whether it does. Throws MGErr.
bool find_config_file(MGContext* context);
