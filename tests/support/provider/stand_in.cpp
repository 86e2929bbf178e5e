// The record of the stand-in, and its life over one test.
#include "support/provider/stand_in.h"

#include "net/provider.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

ProviderStandIn provider_stand_in;

namespace {

void renew() {
    provider_stand_in.~ProviderStandIn();
    new (&provider_stand_in) ProviderStandIn;
}

} // namespace

ProviderTest::ProviderTest() : former_(provider_library) {
    renew();
    provider_library = PROVIDER_STAND_IN;
}

ProviderTest::~ProviderTest() {
    EXPECT_EQ(complaints(), "");
    provider_library = former_;
    renew();
}

// The name is changed where the loader compares it, to one that nobody asks for.
void ProviderTest::lack(const std::string& function, const std::string& copy) {
    std::ifstream in(PROVIDER_STAND_IN, std::ios::binary);
    std::string library{std::istreambuf_iterator<char>(in), {}};
    const std::string name = '\0' + function + '\0';
    for (size_t at = 0; (at = library.find(name, at)) != std::string::npos; ++at) library[at + 1] = '_';
    std::ofstream(copy, std::ios::binary) << library;
    provider_library = copy;
}

std::string ProviderTest::complaints() {
    std::string text;
    for (const auto& [kind, thing] : provider_stand_in.live) text += std::string("left: ") + kind + "\n";
    for (const std::string& misuse : provider_stand_in.misuses) text += misuse + "\n";
    return text;
}
