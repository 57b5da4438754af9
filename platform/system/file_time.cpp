// Times between a count of 100 ns steps since 1601, and years to milliseconds.
#include <ctime>

#include <winbase.h>

namespace {

constexpr ULONGLONG stepsPerMillisecond = 10000;
constexpr ULONGLONG stepsPerSecond = 1000 * stepsPerMillisecond;
// From 1 January 1601 to 1 January 1970.
constexpr LONGLONG secondsToUnixTime = 11644473600;
// Of a split time, as published.
constexpr WORD firstYear = 1601;
constexpr WORD lastYear = 30827;

bool isLeapYear(int year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int daysOfMonth(int year, int month) {
    constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeapYear(year) ? 29 : days[month - 1];
}

bool isTime(SYSTEMTIME const& split) {
    return split.wYear >= firstYear && split.wYear <= lastYear && split.wMonth >= 1 &&
           split.wMonth <= 12 && split.wDay >= 1 &&
           split.wDay <= daysOfMonth(split.wYear, split.wMonth) && split.wHour < 24 &&
           split.wMinute < 60 && split.wSecond < 60 && split.wMilliseconds < 1000;
}

BOOL refuse(DWORD error) {
    SetLastError(error);
    return FALSE;
}

SYSTEMTIME fromCalendar(std::tm const& parts, WORD milliseconds) {
    return {static_cast<WORD>(parts.tm_year + 1900), static_cast<WORD>(parts.tm_mon + 1),
            static_cast<WORD>(parts.tm_wday),        static_cast<WORD>(parts.tm_mday),
            static_cast<WORD>(parts.tm_hour),        static_cast<WORD>(parts.tm_min),
            static_cast<WORD>(parts.tm_sec),         milliseconds};
}

/// Only for a time that isTime() accepts.
LONGLONG unixTime(SYSTEMTIME const& split) {
    std::tm parts{};
    parts.tm_year = split.wYear - 1900;
    parts.tm_mon = split.wMonth - 1;
    parts.tm_mday = split.wDay;
    parts.tm_hour = split.wHour;
    parts.tm_min = split.wMinute;
    parts.tm_sec = split.wSecond;
    return timegm(&parts);
}

}  // namespace

BOOL FileTimeToSystemTime(FILETIME const* time, LPSYSTEMTIME split) {
    if (time == nullptr || split == nullptr) return refuse(ERROR_INVALID_PARAMETER);
    ULONGLONG const steps = ULONGLONG{time->dwHighDateTime} << 32 | time->dwLowDateTime;
    if (steps >> 63 != 0) return refuse(ERROR_INVALID_PARAMETER);
    std::time_t const seconds = static_cast<LONGLONG>(steps / stepsPerSecond) - secondsToUnixTime;
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    *split = fromCalendar(parts, static_cast<WORD>(steps % stepsPerSecond / stepsPerMillisecond));
    return TRUE;
}

BOOL SystemTimeToFileTime(SYSTEMTIME const* split, FILETIME* time) {
    if (split == nullptr || time == nullptr || !isTime(*split)) {
        return refuse(ERROR_INVALID_PARAMETER);
    }
    ULONGLONG const steps =
        static_cast<ULONGLONG>(unixTime(*split) + secondsToUnixTime) * stepsPerSecond +
        split->wMilliseconds * stepsPerMillisecond;
    *time = {static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
    return TRUE;
}

BOOL SystemTimeToTzSpecificLocalTime(TIME_ZONE_INFORMATION const* zone, SYSTEMTIME const* utc,
                                     LPSYSTEMTIME local) {
    if (zone != nullptr) return refuse(ERROR_NOT_SUPPORTED);
    if (utc == nullptr || local == nullptr || !isTime(*utc)) return refuse(ERROR_INVALID_PARAMETER);
    std::time_t const seconds = unixTime(*utc);
    std::tm parts{};
    if (localtime_r(&seconds, &parts) == nullptr || parts.tm_year + 1900 < firstYear ||
        parts.tm_year + 1900 > lastYear) {
        return refuse(ERROR_INVALID_PARAMETER);
    }
    *local = fromCalendar(parts, utc->wMilliseconds);
    return TRUE;
}
