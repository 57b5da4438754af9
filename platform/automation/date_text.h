/// Dates as people write them.
#pragma once

#include <string>

#include "locale_table.h"

namespace velk::platform {

/// Reads a date, a time, or both. `flags` may be VAR_TIMEVALUEONLY or
/// VAR_DATEVALUEONLY. DISP_E_TYPEMISMATCH for any other text, null included.
/// A date without a year is one of this year.
HRESULT parseDate(OLECHAR const* text, Locale const& locale, ULONG flags, DATE& date) noexcept;

/// The short date and the long time of the locale; the time alone for a day
/// part of 0, the date alone at midnight. E_INVALIDARG outside the years 100
/// to 9999.
HRESULT formatDate(DATE date, Locale const& locale, ULONG flags, std::u16string& text);

}  // namespace velk::platform
