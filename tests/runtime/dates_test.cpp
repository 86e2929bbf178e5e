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
        {-1, "1970-01-01 00:59:59", "_19700101_005959", "/d1970/01/01/005959_0000002a"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(MGFile::GetDateAndTime(row.t), row.text);
        EXPECT_EQ(MGFile::GetDateAndTimeForFile(row.t), row.file);
        std::string dir = "/d", year, month, day, hour, minute, second;
        MGFile::DirAddArchiveDateExtTime(row.t, dir, 42);
        EXPECT_EQ(dir, row.archive);
        MGFile::GetDateFromTimeStr(row.t, year, month, day, hour, minute, second);
        EXPECT_EQ(year + "-" + month + "-" + day + " " + hour + ":" + minute + ":" + second, row.text);
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
    EXPECT_EQ(MGFile::StringToTime(""), 0);
}

// Whatever the clock says, the forms of the present agree; taken again if a second ended between them.
TEST_F(Dates, OfThePresentAgree) {
    std::string before, dir, archive, year, month, day, time;
    do {
        before = MGFile::GetLocalDateAndTime();
        MGFile::GetCurrentDateTimeStr(year, month, day, time);
        dir = archive = "/d";
        MGFile::AddYearMonDayToDir(dir, true, true, true);
        MGFile::DirAddArchiveDate(archive, 1);
    } while (before != MGFile::GetLocalDateAndTime());
    EXPECT_EQ(before.substr(0, 10), year + "-" + month + "-" + day);
    EXPECT_EQ(dir, "/d/" + year + "/" + month + "/" + day);
    EXPECT_EQ(archive, dir + "/" + time + "_00000001");
}

} // namespace
