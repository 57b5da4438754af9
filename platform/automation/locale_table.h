/// What a language and country change in the text of numbers, dates and truth
/// values.
#pragma once

#include <array>
#include <string_view>

#include "oleauto.h"

namespace velk::platform {

/// The order in which a short date names day and month; the year is last.
enum class DateOrder { monthDay, dayMonth };

struct LocaleNames {
    std::array<std::u16string_view, 12> months;
    std::array<std::u16string_view, 12> shortMonths;
    std::array<std::u16string_view, 7> days;  ///< from Sunday on
    std::array<std::u16string_view, 7> shortDays;
};

struct Locale {
    LCID id;
    OLECHAR decimalSeparator;
    OLECHAR groupSeparator;
    std::u16string_view currency;
    DateOrder order;
    OLECHAR dateSeparator;  ///< where it is no full stop, a full stop separates times
    bool padDate;           ///< two digits for day and month
    bool twelveHours;       ///< "1:05:00 PM", otherwise "13:05:00"
    std::u16string_view trueText;
    std::u16string_view falseText;
    LocaleNames const* names;
};

/// The entry for an LCID. The neutral, the user's and the system's default and
/// every LCID without an entry give US English. Never fails.
Locale const& localeOf(LCID id) noexcept;

/// Whether a character separates groups of digits in this locale.
bool isGroupSeparator(Locale const& locale, OLECHAR character) noexcept;

}  // namespace velk::platform
