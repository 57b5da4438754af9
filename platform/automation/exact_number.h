/// Exact decimal numbers of 96 bits, which hold every integer, currency and
/// decimal value.
#pragma once

#include <string>

#include "oleauto.h"

namespace velk::platform {

__extension__ typedef unsigned __int128 Wide;

/// (-1)^negative * coefficient / 10^scale. The coefficient has 96 bits and
/// the scale is 0 to 28, except between the steps of a calculation.
struct ExactNumber {
    bool negative = false;
    Wide coefficient = 0;
    unsigned scale = 0;
};

constexpr unsigned greatestScale = 28;
constexpr Wide greatestCoefficient = (static_cast<Wide>(1) << 96) - 1;

ExactNumber exactOf(LONGLONG value) noexcept;
ExactNumber exactOf(ULONGLONG value) noexcept;
ExactNumber exactOf(CY value) noexcept;

/// E_INVALIDARG for a scale above 28.
HRESULT exactOf(DECIMAL const& value, ExactNumber& number) noexcept;
/// `number` must be within its bounds.
DECIMAL decimalOf(ExactNumber const& number) noexcept;

/// Drops decimal places until no more than `scale` are left, rounding halves
/// to the even neighbour.
void roundToScale(ExactNumber& number, unsigned scale) noexcept;

/// Drops zeroes at the end of the decimal places.
void stripZeroes(ExactNumber& number) noexcept;

/// The nearest double.
double realOf(ExactNumber const& number) noexcept;

/// The digits with '.' before the decimal places and '-' before a negative
/// value, without zeroes at the end of the places.
std::string textOf(ExactNumber number);

}  // namespace velk::platform
