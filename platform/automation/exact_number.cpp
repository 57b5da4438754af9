#include "exact_number.h"

#include <algorithm>
#include <charconv>

namespace velk::platform {
namespace {

constexpr unsigned currencyScale = 4;

std::string digitsOf(Wide value) {
    std::string digits;
    do {
        digits.push_back(static_cast<char>('0' + static_cast<int>(value % 10)));
        value /= 10;
    } while (value != 0);
    std::reverse(digits.begin(), digits.end());
    return digits;
}

}  // namespace

ExactNumber exactOf(LONGLONG value) noexcept {
    auto const bits = static_cast<ULONGLONG>(value);
    return {value < 0, value < 0 ? 0 - bits : bits, 0};
}

ExactNumber exactOf(ULONGLONG value) noexcept {
    return {false, value, 0};
}

ExactNumber exactOf(CY value) noexcept {
    ExactNumber number = exactOf(value.int64);
    number.scale = currencyScale;
    return number;
}

HRESULT exactOf(DECIMAL const& value, ExactNumber& number) noexcept {
    if (value.scale > greatestScale) return E_INVALIDARG;
    number.negative = (value.sign & DECIMAL_NEG) != 0;
    number.coefficient = (static_cast<Wide>(value.Hi32) << 64) | value.Lo64;
    number.scale = value.scale;
    return S_OK;
}

DECIMAL decimalOf(ExactNumber const& number) noexcept {
    DECIMAL value{};
    value.scale = static_cast<BYTE>(number.scale);
    value.sign = number.negative ? DECIMAL_NEG : 0;
    value.Hi32 = static_cast<ULONG>(number.coefficient >> 64);
    value.Lo64 = static_cast<ULONGLONG>(number.coefficient);
    return value;
}

void roundToScale(ExactNumber& number, unsigned scale) noexcept {
    unsigned lastDigit = 0;
    bool rest = false;
    if (number.scale <= scale) return;
    for (; number.scale > scale; --number.scale) {
        rest = rest || lastDigit != 0;
        lastDigit = static_cast<unsigned>(number.coefficient % 10);
        number.coefficient /= 10;
    }
    bool const odd = (number.coefficient & 1) != 0;
    if (lastDigit > 5 || (lastDigit == 5 && (rest || odd))) ++number.coefficient;
}

void stripZeroes(ExactNumber& number) noexcept {
    while (number.scale > 0 && number.coefficient % 10 == 0) {
        number.coefficient /= 10;
        --number.scale;
    }
}

double realOf(ExactNumber const& number) noexcept {
    if (number.coefficient == 0) return 0;
    // Up to 2^53 the coefficient is a double already.
    if (number.scale == 0 && number.coefficient <= (1ULL << 53)) {
        auto const value = static_cast<double>(static_cast<ULONGLONG>(number.coefficient));
        return number.negative ? -value : value;
    }
    // 29 digits, an exponent and a sign.
    char text[40];
    char* end = std::end(text);
    char* first = end - 4;
    first[0] = 'e';
    first[1] = '-';
    first[2] = static_cast<char>('0' + number.scale / 10);
    first[3] = static_cast<char>('0' + number.scale % 10);
    Wide rest = number.coefficient;
    do {
        *--first = static_cast<char>('0' + static_cast<int>(rest % 10));
        rest /= 10;
    } while (rest != 0);
    double value = 0;
    std::from_chars(first, end, value);
    return number.negative ? -value : value;
}

std::string textOf(ExactNumber number) {
    stripZeroes(number);
    std::string digits = digitsOf(number.coefficient);
    if (number.scale > 0) {
        if (digits.size() <= number.scale) digits.insert(0, number.scale + 1 - digits.size(), '0');
        digits.insert(digits.size() - number.scale, 1, '.');
    }
    if (number.negative && number.coefficient != 0) digits.insert(0, 1, '-');
    return digits;
}

}  // namespace velk::platform
