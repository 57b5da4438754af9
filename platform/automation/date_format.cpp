#include "calendar.h"
#include "date_text.h"

namespace velk::platform {
namespace {

std::string numeral(int value, bool pad) {
    std::string digits = std::to_string(value);
    if (pad && digits.size() < 2) digits.insert(0, 1, '0');
    return digits;
}

std::u16string shortDate(LONG day, Locale const& locale) {
    CalendarDate const date = calendarDateOf(day);
    bool const monthFirst = locale.order == DateOrder::monthDay;
    char const separator = static_cast<char>(locale.dateSeparator);
    std::string const text = numeral(monthFirst ? date.month : date.day, locale.padDate) +
                             separator +
                             numeral(monthFirst ? date.day : date.month, locale.padDate) +
                             separator + std::to_string(date.year);
    return std::u16string(text.begin(), text.end());
}

std::u16string longTime(int second, Locale const& locale) {
    int const hour = second / 3600;
    int const shownHour = hour % 12 == 0 ? 12 : hour % 12;
    std::string text = locale.twelveHours ? std::to_string(shownHour) : numeral(hour, true);
    text += ':' + numeral(second / 60 % 60, true) + ':' + numeral(second % 60, true);
    if (locale.twelveHours) text += hour < 12 ? " AM" : " PM";
    return std::u16string(text.begin(), text.end());
}

}  // namespace

HRESULT formatDate(DATE date, Locale const& locale, ULONG flags, std::u16string& text) {
    LONG day = 0;
    int second = 0;
    if (!splitDate(date, day, second)) return E_INVALIDARG;
    bool const timeOnly = (flags & VAR_TIMEVALUEONLY) != 0;
    bool const dateOnly = (flags & VAR_DATEVALUEONLY) != 0;
    // What rounding carries into the next day does not make a time a date.
    bool const hasDay = static_cast<LONG>(date) != 0;
    bool const showDay = dateOnly || (!timeOnly && hasDay);
    bool const showTime = timeOnly || (!dateOnly && (!hasDay || second != 0));
    text.clear();
    if (showDay) text = shortDate(day, locale);
    if (showDay && showTime) text += u' ';
    if (showTime) text += longTime(second, locale);
    return S_OK;
}

}  // namespace velk::platform
