// What a test tells the stand-in of the crypto provider, and what the stand-in tells a test. The stand-in itself is a
// shared library of the provider's functions (stand_in_library.cpp), which is loaded and unloaded as the real one; this
// record stays in the program, so that calls and leftovers can be judged after the library is gone. Used without such a
// program, the library works on a record of its own.
#pragma once

#include <cstdint>
#include <mutex>
#include <set>
#include <string>
#include <vector>

inline constexpr uint32_t stand_in_failure = 0xe0700abc;    // of a call that is made to fail
inline constexpr uint32_t stand_in_trouble = 0xe0700abd;    // of one that can't do what it is asked
inline constexpr uint32_t stand_in_bad_digest = 0xe0700abe; // first cause of a bad signature

struct ProviderStandIn {
    // --- told by the test ---
    std::string fail_function;            // its next call fails, once
    int fail_call = 0;                    // the call of this number, from 1, fails; 0 for none
    bool place_fails = false;             // TRELM_GetErrorLineEx doesn't tell
    bool no_cause = false;                // a bad signature has no codes
    bool renegotiate = false;             // the next write of a server asks for a new handshake
    std::string peer_name = "vorma.test"; // of the server, in its certificate
    // Name (CP1251), psp, lsp and ldap of each crypto profile; an empty text is a block without data.
    std::vector<std::vector<std::string>> profiles;

    // --- told to the test ---
    int calls = 0;                           // calls that can be made to fail
    std::string failed;                      // the function that was made to fail
    std::set<std::pair<char, void*>> live;   // what was handed out: context, block, tls session, state, result
    std::vector<std::string> misuses;        // what was given back twice or was never ours, and other wrong arguments
    std::vector<std::string> sessions_asked; // "name flags"
    std::string connect_asked;               // "flags text text text text"
    std::string hash_asked;                  // algorithm
    void* place_asked = nullptr;             // context of the last TRELM_GetErrorLineEx

    std::mutex mutex; // sessions of two threads may meet here
};

extern ProviderStandIn provider_stand_in;

// For the time of one test: provider_library is the stand-in, and its record is new. At the end nothing that was handed
// out may be left, nor any misuse have happened.
class ProviderTest {
public:
    ProviderTest();
    ~ProviderTest();
    ProviderTest(const ProviderTest&) = delete;
    ProviderTest& operator=(const ProviderTest&) = delete;

    // A copy of the library that has no such function; provider_library is that copy then.
    static void lack(const std::string& function, const std::string& copy);
    // Leftovers and misuses; empty if there are none.
    static std::string complaints();

private:
    std::string former_;
};
