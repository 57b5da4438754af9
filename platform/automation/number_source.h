/// The number that a value stands for, before it is fitted to a type.
#pragma once

#include "number_text.h"

namespace velk::platform {

struct Number {
    enum class Kind { exact, real, parsed };
    Kind kind = Kind::exact;
    ExactNumber exact;          ///< integers, truth values, currency, decimal
    double real = 0;            ///< floating-point values and dates
    int digits = doubleDigits;  ///< significant digits of `real`
    ParsedNumber parsed;        ///< texts
};

/// DISP_E_TYPEMISMATCH for a text that is no number, E_INVALIDARG for a
/// malformed decimal value.
HRESULT readNumber(VARIANT const& source, Number& number) noexcept;

/// The number as a double. DISP_E_OVERFLOW beyond its range.
HRESULT realOf(Number const& number, double& value) noexcept;

/// The number with at most `scale` decimal places, halves rounded to even.
/// DISP_E_OVERFLOW for what no ExactNumber can hold, such as NaN.
HRESULT roundedOf(Number const& number, unsigned scale, ExactNumber& value) noexcept;

}  // namespace velk::platform
