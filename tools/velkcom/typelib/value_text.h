/// Texts of the plain values that occur in type libraries.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

#include <oleauto.h>

namespace velk::tools {

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

/// The value as a literal, preceded by its type where the literal alone does
/// not tell it.
std::string valueText(VARIANT const& value);

/// One name per set bit, in the order of the bits; unknown bits in hexadecimal.
struct FlagName {
    unsigned bit;
    char const* name;
};
std::vector<std::string> flagNames(unsigned flags, std::vector<FlagName> const& names);

/// The parts with ", " between them.
std::string joined(std::vector<std::string> const& parts);

/// The parts in brackets, or nothing where there are none.
std::string bracketed(std::vector<std::string> const& parts);

}  // namespace velk::tools
