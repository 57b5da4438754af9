/// UTF-16 characters that texts of values are made of. All texts are those of US
/// English, whatever locale a caller names.
#pragma once

#include "oleauto.h"

namespace velk::platform {

constexpr OLECHAR decimalSeparator = u'.';
constexpr OLECHAR groupSeparator = u',';
constexpr OLECHAR currencySign = u'$';

constexpr bool isBlank(OLECHAR character) noexcept {
    return character == u' ' || (character >= u'\t' && character <= u'\r') ||
           character == u'\u00a0';
}

constexpr bool isDigit(OLECHAR character) noexcept {
    return character >= u'0' && character <= u'9';
}

constexpr OLECHAR lowerAscii(OLECHAR character) noexcept {
    return character >= u'A' && character <= u'Z' ? static_cast<OLECHAR>(character + 0x20)
                                                  : character;
}

/// Lower case of the letters of Western European languages.
constexpr OLECHAR lowerLatin(OLECHAR character) noexcept {
    bool const accented =
        character >= u'\u00c0' && character <= u'\u00de' && character != u'\u00d7';
    return accented ? static_cast<OLECHAR>(character + 0x20) : lowerAscii(character);
}

constexpr bool isLetter(OLECHAR character) noexcept {
    OLECHAR const lower = lowerLatin(character);
    return (lower >= u'a' && lower <= u'z') ||
           (lower >= u'\u00df' && lower <= u'\u00ff' && lower != u'\u00f7');
}

/// The value of a hexadecimal digit, or -1.
constexpr int hexDigit(OLECHAR character) noexcept {
    if (isDigit(character)) return character - u'0';
    OLECHAR const lower = lowerAscii(character);
    return lower >= u'a' && lower <= u'f' ? lower - u'a' + 10 : -1;
}

}  // namespace velk::platform
