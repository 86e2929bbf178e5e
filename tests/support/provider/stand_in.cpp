// The record of the stand-in, and its life over one test.
#include "support/provider/stand_in.h"

#include "net/provider.h"

#include <gmock/gmock.h>

ProviderStandIn provider_stand_in;

namespace {

void renew() {
    provider_stand_in.~ProviderStandIn();
    new (&provider_stand_in) ProviderStandIn;
}

} // namespace

ProviderTest::ProviderTest() : former_(vorma::provider_library) {
    renew();
    vorma::provider_library = PROVIDER_STAND_IN;
}

ProviderTest::~ProviderTest() {
    EXPECT_THAT(provider_stand_in.live, testing::IsEmpty());
    EXPECT_THAT(provider_stand_in.misuses, testing::IsEmpty());
    vorma::provider_library = former_;
    renew();
}
