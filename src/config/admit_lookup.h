// The look-up of a connected peer in an admission list, by the subject of its certificate. Any thread may call these.
#pragma once

#include "config/list_records.h"

#include <string>
#include <vector>

// Finds the first row of this subject, without regard to the case of Latin and Russian letters, and stores its index;
// false, with index untouched, if there is none. Throws MGErr.
bool find_subject_in_admit(const std::vector<MGAdmit>& list, const std::string& subject, unsigned& index);
