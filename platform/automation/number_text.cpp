#include "number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

#include "text_characters.h"

namespace velk::platform {
namespace {

// "&H" and "&O" forms stand for the 32 bits of a Long where the type that is
// asked for has no bits of its own.
HRESULT longOfBits(ParsedNumber const& number, LONG& value) noexcept {
    if (number.bitsOverflow || number.bits > std::numeric_limits<ULONG>::max()) {
        return DISP_E_OVERFLOW;
    }
    value = static_cast<LONG>(static_cast<ULONG>(number.bits));
    return S_OK;
}

// The greatest coefficient has 29 digits.
constexpr int mostDigits = 29;

int digitsBeforeSeparator(ParsedNumber const& number) noexcept {
    return static_cast<int>(number.digitCount) + number.exponent;
}

// The digit at an index from the front; what was not written is 0.
unsigned digitAt(ParsedNumber const& number, int index) noexcept {
    bool const written = index >= 0 && index < static_cast<int>(number.digitCount);
    return written ? static_cast<unsigned>(number.digits[static_cast<unsigned>(index)] - '0') : 0;
}

// Rounds to a number of decimal places; false when 96 bits are too few.
bool roundToPlaces(ParsedNumber const& number, int places, ExactNumber& value) noexcept {
    int const kept = digitsBeforeSeparator(number) + places;
    Wide coefficient = 0;
    for (int index = 0; index < kept; ++index) {
        coefficient = coefficient * 10 + digitAt(number, index);
        if (coefficient > greatestCoefficient) return false;
    }
    unsigned const dropped = kept < 0 ? 0 : digitAt(number, kept);
    bool rest = number.inexact;
    for (int index = std::max(kept + 1, 0); index < static_cast<int>(number.digitCount); ++index) {
        rest = rest || digitAt(number, index) != 0;
    }
    bool const odd = (coefficient & 1) != 0;
    if (dropped > 5 || (dropped == 5 && (rest || odd))) ++coefficient;
    if (coefficient > greatestCoefficient) return false;
    value = {number.negative && coefficient != 0, coefficient, static_cast<unsigned>(places)};
    return true;
}

std::string notFiniteText(double value) {
    if (std::isinf(value)) return value < 0 ? "-1.#INF" : "1.#INF";
    return std::signbit(value) ? "-1.#IND" : "1.#QNAN";
}

}  // namespace

HRESULT realOf(ParsedNumber const& number, double& value) noexcept {
    if (number.isBits) {
        LONG bits = 0;
        HRESULT const result = longOfBits(number, bits);
        value = bits;
        return result;
    }
    value = 0;
    if (number.digitCount != 0) {
        char text[80];
        char* end = std::copy_n(number.digits.begin(), number.digitCount, text);
        int exponent = number.exponent;
        if (number.inexact) {
            *end++ = '1';
            --exponent;
        }
        *end++ = 'e';
        end = std::to_chars(end, std::end(text), exponent).ptr;
        auto const parsed = std::from_chars(text, end, value);
        if (parsed.ec == std::errc::result_out_of_range) {
            // Too small a number is zero, only too great a one is an error.
            if (exponent + static_cast<int>(number.digitCount) > 0) return DISP_E_OVERFLOW;
            value = 0;
        }
    }
    if (number.negative) value = -value;
    return S_OK;
}

HRESULT exactOf(ParsedNumber const& number, unsigned scale, ExactNumber& value) noexcept {
    if (number.isBits) {
        LONG bits = 0;
        HRESULT const result = longOfBits(number, bits);
        value = exactOf(static_cast<LONGLONG>(bits));
        return result;
    }
    value = {};
    if (number.digitCount == 0) return S_OK;
    if (digitsBeforeSeparator(number) > mostDigits) return DISP_E_OVERFLOW;
    // As many decimal places as were written and asked for; fewer where 96
    // bits do not hold them.
    for (int places = std::clamp(-number.exponent, 0, static_cast<int>(scale)); places >= 0;
         --places) {
        if (roundToPlaces(number, places, value)) return S_OK;
    }
    return DISP_E_OVERFLOW;
}

HRESULT exactOf(double value, int digits, ExactNumber& number) noexcept {
    // The greatest coefficient is 2^96 - 1.
    if (!(std::fabs(value) < 0x1p96)) return DISP_E_OVERFLOW;
    char text[40];
    char const* const end = std::to_chars(text, std::end(text), std::fabs(value),
                                          std::chars_format::scientific, digits - 1)
                                .ptr;
    ParsedNumber parsed;
    parsed.negative = value < 0;
    char const* next = text;
    for (; next != end && *next != 'e'; ++next) {
        if (*next == '.') continue;
        if (*next != '0' || parsed.digitCount != 0) parsed.digits[parsed.digitCount++] = *next;
    }
    int exponent = 0;
    if (next != end) std::from_chars(next[1] == '+' ? next + 2 : next + 1, end, exponent);
    parsed.exponent = exponent - (digits - 1);
    HRESULT const result = exactOf(parsed, greatestScale, number);
    if (SUCCEEDED(result)) stripZeroes(number);
    return result;
}

namespace {

/// How many places a number with an exponent is written with instead: what is
/// small enough for no more places than it may have digits. 0 for no other.
int placesOf(std::string_view mantissa, std::string_view exponent, int digits) {
    if (exponent.front() != '-') return 0;
    int first = 0;
    std::from_chars(exponent.data() + 1, exponent.data() + exponent.size(), first);
    auto const point = std::min(mantissa.find('.'), mantissa.size() - 1);
    int const places = first + static_cast<int>(mantissa.size() - 1 - point);
    return first < digits && places <= digits ? places : 0;
}

}  // namespace

std::string textOf(double value, int digits) {
    if (!std::isfinite(value)) return notFiniteText(value);
    if (value == 0) return "0";
    char text[40];
    char* end = std::to_chars(text, std::end(text), value, std::chars_format::general, digits).ptr;
    char* const mark = std::find(text, end, 'e');
    if (mark == end) return std::string(text, end);
    if (int const places = placesOf({text, mark}, {mark + 1, end}, digits); places != 0) {
        end = std::to_chars(text, std::end(text), value, std::chars_format::fixed, places).ptr;
        return std::string(text, end);
    }
    *mark = 'E';
    return std::string(text, end);
}

}  // namespace velk::platform
