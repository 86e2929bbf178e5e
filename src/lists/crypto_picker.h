// The choice of a crypto profile from the list of the closed provider, a shared library that may be absent. It is
// loaded for this one question and unloaded at once; without it the user is told, and types the values. On the
// toolkit's thread only.
#pragma once

#include "config/records.h"

#include <vector>

// Appends a record for each crypto profile of the provider, in its order. Throws MGErr: the library or one of its
// functions is missing, or a call failed.
void get_trelm_context(std::vector<MGCrypto>& list);
