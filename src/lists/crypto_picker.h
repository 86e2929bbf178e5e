// The choice of a crypto profile from the list of the closed provider, a shared library that may be absent. It is
// loaded for this one question and unloaded at once; without it the user is told, and types the values. On the
// toolkit's thread only.
#pragma once

#include <string>
#include <vector>

// One crypto profile as the provider lists it; never stored as such.
struct MGCrypto {
    std::string name;
    std::string psp;  // personal store of the user
    std::string lsp;  // local store of the user
    std::string ldap; // network store

    bool operator==(const MGCrypto&) const = default;
};

// Appends a record for each crypto profile of the provider, in its order. Throws MGErr: the library or one of its
// functions is missing, or a call failed.
void get_trelm_context(std::vector<MGCrypto>& list);
