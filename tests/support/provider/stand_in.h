// The stand-in of the crypto provider: a shared library of the provider's functions (stand_in_library.cpp), which is
// loaded and unloaded as the real one. Its record stays in the program, so that leftovers can be judged after the
// library is gone.
#pragma once

#include "net/mg_trelm.h"
#include "net/provider.h"
#include "support/provider/record.h"

#include <gmock/gmock.h>

// For the time of one test: provider_library is the stand-in, and its record is new. At the end nothing that was handed
// out may be left.
class ProviderTest {
public:
    ProviderTest() : former_(vorma::provider_library) {
        provider_stand_in = {};
        vorma::provider_library = PROVIDER_STAND_IN;
    }
    ~ProviderTest() {
        EXPECT_THAT(provider_stand_in.live, testing::IsEmpty());
        provider_stand_in = {};
        vorma::provider_library = former_;
    }

private:
    std::string former_;
};

// Two sessions shake hands without a network.
inline void shake_hands(MGTrelm& client, MGTrelm& server) {
    client.TlsCreate("vorma.test", true, false);
    server.TlsCreate("", false, true);
    std::vector<uint8_t> flight;
    client.TlsHandshake({}, flight);
    for (bool done = false; !done;) {
        server.TlsHandshake(flight, flight);
        if (!flight.empty()) client.TlsHandshake(flight, flight);
        done = client.TlsComplete() && server.TlsComplete();
    }
}
