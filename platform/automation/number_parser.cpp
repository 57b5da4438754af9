#include "number_text.h"
#include "text_characters.h"

namespace velk::platform {
namespace {

// Beyond this every number with digits is an overflow or zero.
constexpr int exponentLimit = 100000;

/// Reads one text from left to right; every step returns whether the text can
/// still be a number.
class NumberParser {
  public:
    NumberParser(OLECHAR const* text, ParsedNumber& number) noexcept : next(text), number(number) {}

    bool parse() noexcept {
        readPrefix();
        bool const readable = *next == u'&' ? readBits() : readDigits() && readExponent();
        return readable && readSuffix();
    }

  private:
    // Blanks, sign, opening parenthesis and currency sign, in any order, each
    // at most once.
    void readPrefix() noexcept {
        for (;;) {
            if (isBlank(*next)) {
                ++next;
            } else if (!signSeen && (*next == u'+' || *next == u'-')) {
                takeSign();
            } else if (!open && *next == u'(') {
                open = true;
                number.negative = true;
                ++next;
            } else if (!takeCurrency()) {
                return;
            }
        }
    }

    bool readSuffix() noexcept {
        for (;;) {
            if (isBlank(*next)) {
                ++next;
            } else if (!signSeen && (*next == u'+' || *next == u'-')) {
                takeSign();
            } else if (open && *next == u')') {
                open = false;
                ++next;
            } else if (!takeCurrency()) {
                return *next == 0 && !open;
            }
        }
    }

    void takeSign() noexcept {
        signSeen = true;
        if (*next == u'-') number.negative = true;
        ++next;
    }

    bool takeCurrency() noexcept {
        if (currencySeen || *next != currencySign) return false;
        currencySeen = true;
        ++next;
        return true;
    }

    bool readBits() noexcept {
        OLECHAR const letter = lowerAscii(next[1]);
        if (letter != u'h' && letter != u'o') return false;
        unsigned const bitsPerDigit = letter == u'h' ? 4 : 3;
        next += 2;
        bool any = false;
        for (int digit; (digit = hexDigit(*next)) >= 0 && digit < (1 << bitsPerDigit); ++next) {
            if ((number.bits >> (64 - bitsPerDigit)) != 0) number.bitsOverflow = true;
            number.bits = (number.bits << bitsPerDigit) | static_cast<ULONGLONG>(digit);
            any = true;
        }
        number.isBits = true;
        // A sign is allowed before the prefix, and changes nothing.
        number.negative = false;
        return any;
    }

    bool readDigits() noexcept {
        bool any = false;
        bool fraction = false;
        for (;; ++next) {
            if (isDigit(*next)) {
                any = true;
                addDigit(static_cast<char>(*next), fraction);
            } else if (*next == decimalSeparator && !fraction) {
                fraction = true;
            } else if (!any || *next != groupSeparator) {
                return any;
            }
        }
    }

    void addDigit(char digit, bool fraction) noexcept {
        if (number.digitCount == number.digits.size()) {
            if (digit != '0') number.inexact = true;
            if (!fraction && number.exponent < exponentLimit) ++number.exponent;
            return;
        }
        if (digit != '0' || number.digitCount != 0) number.digits[number.digitCount++] = digit;
        if (fraction && number.exponent > -exponentLimit) --number.exponent;
    }

    bool readExponent() noexcept {
        if (lowerAscii(*next) != u'e') return true;
        ++next;
        bool const negative = *next == u'-';
        if (*next == u'+' || *next == u'-') ++next;
        int exponent = 0;
        bool any = false;
        for (; isDigit(*next) || *next == groupSeparator; ++next) {
            if (!isDigit(*next)) continue;
            any = true;
            if (exponent < exponentLimit) exponent = exponent * 10 + (*next - u'0');
        }
        number.exponent += negative ? -exponent : exponent;
        return any;
    }

    OLECHAR const* next;
    ParsedNumber& number;
    bool signSeen = false;
    bool currencySeen = false;
    bool open = false;
};

}  // namespace

HRESULT parseNumber(OLECHAR const* text, ParsedNumber& number) noexcept {
    number = {};
    if (text == nullptr) return DISP_E_TYPEMISMATCH;
    return NumberParser(text, number).parse() ? S_OK : DISP_E_TYPEMISMATCH;
}

}  // namespace velk::platform
