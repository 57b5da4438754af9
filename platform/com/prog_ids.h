/// What the registry says about classes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <guiddef.h>

namespace velk::platform::com {

/// Thrown by all of these when what is asked for may stand in a hive that cannot
/// be read; the published answer is REGDB_E_READREGDB.
struct RegistryUnreadable {};

/// The class of a programmatic id, or of the current version that it names.
std::optional<CLSID> classOfProgId(std::u16string_view progId);

/// The programmatic id that a class names for itself.
std::optional<std::u16string> progIdOfClass(REFCLSID id);

/// Where a class's module is.
struct ModuleOfClass {
    std::u16string path;
    /// Objects of the class belong to the thread that made them.
    bool isApartmentThreaded = true;
};
std::optional<ModuleOfClass> moduleOfClass(REFCLSID id);

}  // namespace velk::platform::com
