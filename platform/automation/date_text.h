/// Dates as people write them.
#pragma once

#include <string>

#include "oleauto.h"

namespace velk::platform {

/// Reads a date, a time, or both, as US English writes them.
/// DISP_E_TYPEMISMATCH for any other text, null included. A date without a year
/// is one of this year.
HRESULT parseDate(OLECHAR const* text, DATE& date) noexcept;

/// Month, day and year, and the time in twelve hours; the time alone for a day
/// part of 0, the date alone at midnight. E_INVALIDARG outside the years 100 to
/// 9999.
HRESULT formatDate(DATE date, std::u16string& text);

}  // namespace velk::platform
