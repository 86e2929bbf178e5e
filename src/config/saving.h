// Writing every confirmed change to disk at once. Failures are logged and shown here; none reaches the caller. On
// the toolkit's thread only.
#pragma once

#include <string>

class MGDialog;

// Writes the master file, then every profile's file, each after a reserve copy of what stood there. The first failure
// ends the save and is shown over `dialog`; memory keeps the change, and the next save writes everything again.
void save_all_config_data(MGDialog* dialog);

// Whether the last save failed: memory holds what the disk lacks.
bool save_failed();

// Makes a catalog with its missing parents; a failure is shown over `dialog`.
void make_vorma_catalog(MGDialog* dialog, const std::string& path);
