/// Texts of the values and flags that occur in type libraries.
#pragma once

#include <string>
#include <vector>

#include <windows.h>

#include <oleauto.h>

namespace velk::velkcom {

/// The value as a literal, preceded by its type where the literal alone does
/// not tell it.
std::string valueText(VARIANT const& value);

/// One name per set bit, in the order of the bits; unknown bits in hexadecimal.
struct FlagName {
    unsigned bit;
    char const* name;
};
std::vector<std::string> flagNames(unsigned flags, std::vector<FlagName> const& names);

/// The parts in brackets, or nothing where there are none.
std::string bracketed(std::vector<std::string> const& parts);

}  // namespace velk::velkcom
