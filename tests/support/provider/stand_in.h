// What a test tells the stand-in of the crypto provider, and what the stand-in tells a test. The stand-in itself is a
// shared library of the provider's functions (stand_in_library.cpp), which is loaded and unloaded as the real one; this
// record stays in the program, so that calls and leftovers can be judged after the library is gone.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

inline constexpr uint32_t stand_in_failure = 0xe0700abc;    // of a call that is made to fail
inline constexpr uint32_t stand_in_trouble = 0xe0700abd;    // of one that can't do what it is asked
inline constexpr uint32_t stand_in_bad_digest = 0xe0700abe; // first cause of a bad signature

struct ProviderStandIn {
    // --- told by the test ---
    int fail_call = 0;        // the call of this number, from 1, fails; 0 for none
    bool renegotiate = false; // the next write of a server asks for a new handshake
    // Name (CP1251), psp, lsp and ldap of each crypto profile; an empty text is a block without data.
    std::vector<std::vector<std::string>> profiles;

    // --- told to the test ---
    int calls = 0;                           // calls that can be made to fail
    std::string failed;                      // the function that was made to fail
    std::map<const void*, std::string> live; // what was handed out, and the function that did
    std::vector<std::string> misuses;        // functions that were given what isn't theirs, or wrong arguments
    std::vector<std::string> sessions_asked; // "name flags"

    std::recursive_mutex mutex; // sessions of two threads meet here
};

extern ProviderStandIn provider_stand_in;

// For the time of one test: provider_library is the stand-in, and its record is new. At the end nothing that was handed
// out may be left, nor any misuse have happened.
class ProviderTest {
public:
    ProviderTest();
    ~ProviderTest();

private:
    std::string former_;
};
