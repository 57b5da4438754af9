/// Values of properties as text.
#pragma once

#include <optional>
#include <string>

#include <windows.h>

#include <propidl.h>

namespace velk::velkcom {

/// "VT_LPSTR", "VT_VECTOR|VT_LPSTR"; the number of a type without a name.
std::string typeName(VARTYPE type);

/// A type's name without regard to case, and without "VT_" too, when a value
/// of it can be written as text. Nothing for any other.
std::optional<VARTYPE> typeFromName(std::string const& name);

/// What a script sees, as text; numbers and blocks that scripts do not see in
/// a form for people. Times are in the form that valueFromText reads, with as
/// many digits as they have; empty for one that is no time.
std::string valueText(PROPVARIANT const& value);

/// Whether valueFromText makes values of the type.
bool canBeWritten(VARTYPE type);

/// A value of a type from text: whole and floating-point numbers, true or
/// false, any text, and times as "2024-03-05T09:07:04.0450001Z": what is left
/// out at the end is zero, and the time is in UTC, or off by "+01:00". An empty value takes no
/// text. Throws UsageError for text that is no such value. The caller clears it.
PROPVARIANT valueFromText(VARTYPE type, std::string const& text);

}  // namespace velk::velkcom
