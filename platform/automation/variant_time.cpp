#include "calendar.h"
#include "oleauto.h"

using namespace velk::platform;

namespace {

// Hours, minutes and seconds roll over in both directions; the fields count
// as signed numbers.
int signedField(WORD field) {
    return static_cast<SHORT>(field);
}

}  // namespace

INT SystemTimeToVariantTime(LPSYSTEMTIME time, DOUBLE* date) {
    if (time == nullptr || date == nullptr) return FALSE;
    if (time->wYear > 9999 || time->wMonth > 12 || time->wDay > 31) return FALSE;
    int year = fullYear(time->wYear);
    int month = time->wMonth;
    if (month == 0) {
        month = 12;
        --year;
    }
    if (year < 100) return FALSE;
    int const seconds = (signedField(time->wHour) * 60 + signedField(time->wMinute)) * 60 +
                        signedField(time->wSecond);
    int const carriedDays = (seconds - (seconds < 0 ? secondsPerDay - 1 : 0)) / secondsPerDay;
    // From the first of the month on, so that day 0 and the 31st of a shorter
    // month roll over as well.
    LONG const day = dayOf({year, month, 1}) + time->wDay - 1 + carriedDays;
    if (day < firstDay || day > lastDay) return FALSE;
    *date = joinDate(day, seconds - carriedDays * secondsPerDay);
    return TRUE;
}

INT VariantTimeToSystemTime(DOUBLE date, LPSYSTEMTIME time) {
    LONG day = 0;
    int second = 0;
    if (time == nullptr || !splitDate(date, day, second)) return FALSE;
    CalendarDate const parts = calendarDateOf(day);
    // Day 0, 30 December 1899, was a Saturday.
    int const weekday = static_cast<int>(((day % 7) + 7 + 6) % 7);
    *time = {.wYear = static_cast<WORD>(parts.year),
             .wMonth = static_cast<WORD>(parts.month),
             .wDayOfWeek = static_cast<WORD>(weekday),
             .wDay = static_cast<WORD>(parts.day),
             .wHour = static_cast<WORD>(second / 3600),
             .wMinute = static_cast<WORD>(second / 60 % 60),
             .wSecond = static_cast<WORD>(second % 60),
             .wMilliseconds = 0};
    return TRUE;
}
