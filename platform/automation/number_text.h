/// Numbers as people write them.
#pragma once

#include <array>
#include <string>

#include "exact_number.h"

namespace velk::platform {

/// A number read from text, before it is fitted to a type:
/// (-1)^negative * digits * 10^exponent, or `bits` for "&H" and "&O" forms.
struct ParsedNumber {
    bool negative = false;
    bool isBits = false;
    ULONGLONG bits = 0;
    bool bitsOverflow = false;  ///< more than 64 bits were written
    // More digits than any type keeps; what follows only matters as `inexact`.
    std::array<char, 48> digits{};
    unsigned digitCount = 0;  ///< without zeroes at the front
    bool inexact = false;     ///< a digit other than 0 follows `digits`
    int exponent = 0;
};

/// Reads a number with blanks, a sign before or after, parentheses for
/// negative values, the currency sign, groups and decimal separator,
/// an exponent, or an "&H" or "&O" prefix. DISP_E_TYPEMISMATCH for any other
/// text, null included.
HRESULT parseNumber(OLECHAR const* text, ParsedNumber& number) noexcept;

/// The nearest double; DISP_E_OVERFLOW beyond its range.
HRESULT realOf(ParsedNumber const& number, double& value) noexcept;

/// The number with at most `scale` decimal places, halves rounded to even,
/// and fewer where 96 bits do not hold as many. DISP_E_OVERFLOW when the
/// digits before the decimal separator alone need more.
HRESULT exactOf(ParsedNumber const& number, unsigned scale, ExactNumber& value) noexcept;

/// A floating-point value of `digits` significant digits as an exact number;
/// DISP_E_OVERFLOW from 2^96 on and for what is no finite number.
HRESULT exactOf(double value, int digits, ExactNumber& number) noexcept;

/// Significant digits of the texts of single and double precision values.
constexpr int singleDigits = 7;
constexpr int doubleDigits = 15;

/// A floating-point value as text with '.' as decimal separator.
std::string textOf(double value, int digits);

}  // namespace velk::platform
