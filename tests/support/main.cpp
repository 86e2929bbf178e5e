// Ends with a code of its own when nothing failed but something was left out, so that ctest says so.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    if (RUN_ALL_TESTS() != 0) return 1;
    return testing::UnitTest::GetInstance()->skipped_test_count() > 0 ? 77 : 0;
}
