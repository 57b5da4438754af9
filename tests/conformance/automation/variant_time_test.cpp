// DATEs taken apart and put together.
#include <string>

#include <gtest/gtest.h>

#include "support/expected_difference.h"
#include "value_notation.h"

namespace velk::test {
namespace {

std::string apart(double date) {
    SYSTEMTIME time{};
    if (!VariantTimeToSystemTime(date, &time)) return "no date";
    auto const number = [](WORD field) { return std::to_string(field); };
    return number(time.wYear) + '-' + number(time.wMonth) + '-' + number(time.wDay) + ' ' +
           number(time.wHour) + ':' + number(time.wMinute) + ':' + number(time.wSecond);
}

// A negative date counts its days down and its time up.
TEST(VariantTime, Apart) {
    constexpr struct {
        double date;
        char const* expected;
    } rows[] = {{0, "1899-12-30 0:0:0"},
                {-0.5, "1899-12-30 12:0:0"},
                {-1.25, "1899-12-29 6:0:0"},
                {60, "1900-2-28 0:0:0"},
                {61, "1900-3-1 0:0:0"},
                {0.9999942, "1899-12-30 23:59:59"},
                {0.9999943, "1899-12-31 0:0:0"},
                {-1.999999, "1899-12-30 0:0:0"},
                {36526.0000058, "2000-1-1 0:0:1"},
                {36585, "2000-2-29 0:0:0"},
                {2958465.99999, "9999-12-31 23:59:59"},
                {2958466, "no date"},
                {-657434, "100-1-1 0:0:0"},
                {-657434.75, "100-1-1 18:0:0"},
                {-657435, "no date"},
                {1e300, "no date"}};
    for (auto const& row : rows) EXPECT_EQ(apart(row.date), row.expected) << row.date;
}

TEST(VariantTime, Weekdays) {
    SYSTEMTIME time{};
    for (int day = -20; day < 20; ++day) {
        ASSERT_TRUE(VariantTimeToSystemTime(day, &time));
        // 30 December 1899 was a Saturday.
        EXPECT_EQ(time.wDayOfWeek, (day + 6 + 70) % 7) << day;
    }
}

struct Together {
    SYSTEMTIME time;
    double expected;  // -1 for a time that is refused
};

TEST(VariantTime, Together) {
    Together const rows[] = {{{2003, 1, 0, 2, 12, 0, 0, 0}, 37623.5},
                             {{2003, 1, 0, 2, 12, 0, 0, 999}, 37623.5},
                             {{1899, 12, 0, 29, 6, 0, 0, 0}, -1.25},
                             {{29, 1, 0, 1, 0, 0, 0, 0}, 47119},
                             {{99, 1, 0, 1, 0, 0, 0, 0}, 36161},
                             {{100, 1, 0, 1, 0, 0, 0, 0}, -657434},
                             {{9999, 12, 0, 31, 0, 0, 0, 0}, 2958465},
                             {{10000, 1, 0, 1, 0, 0, 0, 0}, -1},
                             {{2003, 13, 0, 1, 0, 0, 0, 0}, -1},
                             {{2003, 1, 0, 32, 0, 0, 0, 0}, -1},
                             // Days and times roll over in both directions.
                             {{2003, 2, 0, 31, 0, 0, 0, 0}, 37683},
                             {{2003, 0, 0, 1, 0, 0, 0, 0}, 37591},
                             {{2003, 3, 0, 0, 0, 0, 0, 0}, 37680},
                             {{2003, 1, 0, 1, 24, 0, 0, 0}, 37623},
                             {{2003, 1, 0, 1, 0, 720, 0, 0}, 37622.5}};
    for (auto row : rows) {
        double date = -1;
        EXPECT_EQ(SystemTimeToVariantTime(&row.time, &date) != 0, row.expected != -1);
        EXPECT_DOUBLE_EQ(date, row.expected) << row.time.wYear;
    }
}

TEST(VariantTime, YearsFrom30AreInTheLastCentury) {
    expectDifference(System::wine, "two-digit years below 50 are in this century", [] {
        SYSTEMTIME time{30, 1, 0, 1, 0, 0, 0, 0};
        double date = 0;
        EXPECT_TRUE(SystemTimeToVariantTime(&time, &date));
        EXPECT_EQ(date, 10959);
    });
}

}  // namespace
}  // namespace velk::test
