/// Names of types, and names, numbers and identifiers as text.
#pragma once

#include <charconv>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

#include <oleauto.h>
#include <propidl.h>

namespace velk::velkcom {

/// What a type of automation is called; null where it has no name of the kind.
struct TypeNames {
    VARTYPE type;
    char const* symbol;    ///< "VT_I2"
    char const* declared;  ///< as declarations write it, "short"
    char const* written;   ///< before values on the command line, "short"
};

/// The names of the types with a symbol.
std::span<TypeNames const> allTypeNames();

/// Of one type; without any name where it is unknown.
TypeNames const& namesOf(VARTYPE type);

/// A name in UTF-8, on one line and harmless to a terminal: control characters
/// become "?", a lone surrogate U+FFFD.
std::string nameText(std::basic_string_view<OLECHAR> text);

/// `text` in double quotes, with quotes, backslashes and control characters
/// escaped as in C.
std::string quoted(std::basic_string_view<OLECHAR> text);

/// "0x" and at least `digits` lower-case hexadecimal digits.
std::string hexadecimal(unsigned long long value, int digits = 1);

/// Lower-case, without braces.
std::string guidText(GUID const& id);

/// Upper-case, in braces.
std::string idText(GUID const& id);

/// As few digits as tell it from every other number of its type.
template <typename Number>
std::string numberText(Number number) {
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

/// The number in a VARIANT or PROPVARIANT of a type that holds one, dates and
/// truth values included, as it is stored; nothing for other types.
std::optional<std::string> storedNumber(VARIANT const& value);
std::optional<std::string> storedNumber(PROPVARIANT const& value);

/// The parts with ", " between them.
std::string joined(std::vector<std::string> const& parts);

}  // namespace velk::velkcom
