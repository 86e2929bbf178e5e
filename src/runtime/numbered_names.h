// The numbered copies of a name: stem, "~", number, extension.
#pragma once

#include "runtime/mg_file.h"

#include <string>
#include <vector>

namespace vorma {

// The bare names of the numbered copies of stem and ext in dir, lowest number first. A name is one of them if it is
// just stem, "~", the digits of a number above 0, and ext. Throws MGErr.
std::vector<MGFileNumExt> numbered_copies(MGFile& file, const std::string& dir, const std::string& stem,
                                          const std::string& ext);

} // namespace vorma
