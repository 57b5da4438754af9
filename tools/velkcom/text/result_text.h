/// Automation values as text.
#pragma once

#include <string>

#include <windows.h>

#include <oleauto.h>

namespace velk::velkcom {

/// The type and the value, in the form in which arguments are written where
/// there is one: "int:5", "string:text", "null". An object shows its type's
/// name if it has type information, an array its bounds and elements.
std::string resultText(VARIANT const& value);

}  // namespace velk::velkcom
