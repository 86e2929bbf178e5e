// A profile's own file, config_dir/id.xml, which holds its whole MGConfig. The service reads it too.
// Its root `profile` bears version, release, mark and id; its children are the sections, start modes and lists, all of
// them written every time, in one order, and required on reading in any order. The readers check no range and no
// token. One thread at a time may read or write a profile.
#pragma once

#include "config/records.h"

#include <string>

class MGContext;

std::string profile_file_name(const MGContext& context, const MGProfile& profile);

// What `file` holds, if it is the file of the profile `id` under this context's master file. Throws MGErr.
MGConfig read_profile(const MGContext& context, const std::string& id, const std::string& file);

// Reads the file of profiles[index] into its config, whose lists it appends to. Throws MGErr; what was read up to then
// stays in the config.
void read_profile_file(MGContext* context, int index);

// Writes the file of profiles[index] in place, after a reserve copy. Throws MGErr.
void write_profile_file(MGContext* context, int index);
