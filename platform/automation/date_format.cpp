#include "calendar.h"
#include "date_text.h"

namespace velk::platform {
namespace {

std::string shortDate(LONG day) {
    CalendarDate const date = calendarDateOf(day);
    return std::to_string(date.month) + '/' + std::to_string(date.day) + '/' +
           std::to_string(date.year);
}

std::string twoDigits(int value) {
    return (value < 10 ? "0" : "") + std::to_string(value);
}

std::string longTime(int second) {
    int const hour = second / 3600;
    return std::to_string(hour % 12 == 0 ? 12 : hour % 12) + ':' + twoDigits(second / 60 % 60) +
           ':' + twoDigits(second % 60) + (hour < 12 ? " AM" : " PM");
}

}  // namespace

HRESULT formatDate(DATE date, std::u16string& text) {
    LONG day = 0;
    int second = 0;
    if (!splitDate(date, day, second)) return E_INVALIDARG;
    // What rounding carries into the next day does not make a time a date.
    bool const hasDay = static_cast<LONG>(date) != 0;
    std::string parts = hasDay ? shortDate(day) : "";
    if (hasDay && second != 0) parts += ' ';
    if (!hasDay || second != 0) parts += longTime(second);
    text.assign(parts.begin(), parts.end());
    return S_OK;
}

}  // namespace velk::platform
