#include "calendar.h"

#include <chrono>
#include <cmath>

namespace velk::platform {
namespace {

constexpr std::chrono::sys_days firstOfAll = std::chrono::year{1899} / std::chrono::December / 30;

std::chrono::year_month_day chronoDate(CalendarDate const& date) noexcept {
    return std::chrono::year{date.year} / std::chrono::month{static_cast<unsigned>(date.month)} /
           std::chrono::day{static_cast<unsigned>(date.day)};
}

}  // namespace

bool isDate(double value) noexcept {
    return value > firstDay - 1 && value < lastDay + 1;
}

bool isCalendarDate(CalendarDate const& date) noexcept {
    return date.year >= 100 && date.year <= 9999 && date.month >= 1 && date.month <= 12 &&
           date.day >= 1 && date.day <= 31 && chronoDate(date).ok();
}

LONG dayOf(CalendarDate const& date) noexcept {
    return static_cast<LONG>((std::chrono::sys_days{chronoDate(date)} - firstOfAll).count());
}

CalendarDate calendarDateOf(LONG day) noexcept {
    std::chrono::year_month_day const date{firstOfAll + std::chrono::days{day}};
    return {static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day()))};
}

bool splitDate(DATE date, LONG& day, int& second) noexcept {
    if (!isDate(date)) return false;
    double const whole = std::trunc(date);
    day = static_cast<LONG>(whole);
    second = static_cast<int>(std::lround(std::fabs(date - whole) * secondsPerDay));
    if (second == secondsPerDay) {
        second = 0;
        ++day;
    }
    return day >= firstDay && day <= lastDay;
}

DATE joinDate(LONG day, int second) noexcept {
    double const fraction = static_cast<double>(second) / secondsPerDay;
    return day < 0 ? day - fraction : day + fraction;
}

int fullYear(int year) noexcept {
    if (year >= 100) return year;
    return year < 30 ? year + 2000 : year + 1900;
}

}  // namespace velk::platform
