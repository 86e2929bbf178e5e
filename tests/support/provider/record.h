// What a test tells the stand-in of the crypto provider, and what the stand-in tells a test.
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
    int fail_call = 0;        // the call of this number, from 1, fails; 0 for none
    bool renegotiate = false; // the next write of a server asks for a new handshake
    // Name (CP1251), psp, lsp and ldap of each crypto profile; an empty text is a block without data.
    std::vector<std::vector<std::string>> profiles;

    int calls = 0;                           // told to the test: calls that can be made to fail
    std::string failed;                      // the function that was made to fail
    std::map<const void*, std::string> live; // what was handed out, and the function that did
};

inline ProviderStandIn provider_stand_in;
inline std::mutex provider_stand_in_mutex; // sessions of two threads meet there
