/// Days and seconds of a DATE: a count of days since 30 December 1899 whose
/// fraction is the time of day, counted away from zero.
#pragma once

#include "oleauto.h"

namespace velk::platform {

struct CalendarDate {
    int year;   ///< 100 to 9999
    int month;  ///< 1 to 12
    int day;    ///< 1 to 31
};

constexpr int secondsPerDay = 24 * 60 * 60;

/// Days of 1 January 100 and of 31 December 9999.
constexpr LONG firstDay = -657434;
constexpr LONG lastDay = 2958465;

/// Whether a number stands for a date in the years 100 to 9999.
bool isDate(double value) noexcept;

bool isCalendarDate(CalendarDate const& date) noexcept;
LONG dayOf(CalendarDate const& date) noexcept;
CalendarDate calendarDateOf(LONG day) noexcept;

/// Splits a DATE, rounded to the nearest second. False outside the years 100
/// to 9999, to which rounding may lead as well.
bool splitDate(DATE date, LONG& day, int& second) noexcept;
DATE joinDate(LONG day, int second) noexcept;

/// The full year that is meant by a year below 100: 1930 to 2029.
int fullYear(int year) noexcept;

}  // namespace velk::platform
