#include "runtime/mg_file.h"
#include "support/error_of.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

// Central European time, spelled out so that no time zone data are needed. Expected texts are those of date(1).
class Dates : public testing::Test {
protected:
    Dates() {
        setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
        tzset();
    }
    ~Dates() override {
        unsetenv("TZ");
        tzset();
    }
};

TEST_F(Dates, FollowTheLocalClock) {
    const struct {
        time_t t;
        std::string text, file, archive;
    } rows[] = {
        {1711846799, "2024-03-31 01:59:59", "_20240331_015959", "/d2024/03/31/015959_0000002a"},
        {1711846800, "2024-03-31 03:00:00", "_20240331_030000", "/d2024/03/31/030000_0000002a"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(MGFile::GetDateAndTime(row.t), row.text);
        EXPECT_EQ(MGFile::GetDateAndTimeForFile(row.t), row.file);
        std::string dir = "/d";
        MGFile::DirAddArchiveDateExtTime(row.t, dir, 42);
        EXPECT_EQ(dir, row.archive);
    }
    EXPECT_EQ(MGFile::GetDateAndTime(0), "");
    EXPECT_EQ(error_of([] { MGFile::GetDateAndTime(67767976233532799); }).mess_1, "Непонятная ошибка"); // year 2^31
}

TEST_F(Dates, TextComesBackAsTheSameMoment) {
    constexpr time_t new_year = 1704063600, hour = 3600, twice_told = 1729990800;
    for (time_t t = new_year; t < new_year + 366 * 24 * hour; t += hour) {
        if (t == twice_told || t == twice_told - hour) continue;
        ASSERT_EQ(MGFile::StringToTime(MGFile::GetDateAndTime(t)), t);
    }
}

} // namespace
