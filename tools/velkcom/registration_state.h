/// What the registry says about a module.
#pragma once

#include <optional>
#include <string>

#include <windows.h>

namespace velk::velkcom {

/// Whether a class of the module's type library, or the library itself, stands
/// in the classes of a hive: HKEY_LOCAL_MACHINE or HKEY_CURRENT_USER. Nothing
/// when the module has no library to tell its classes by.
std::optional<bool> isRegistered(std::basic_string<OLECHAR> const& module, HKEY hive);

}  // namespace velk::velkcom
