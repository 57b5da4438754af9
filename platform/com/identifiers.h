/// Identifiers as text, "{00000000-0000-0000-0000-000000000000}", and what the
/// registry says about those of classes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <guiddef.h>

namespace velk::platform::com {

inline constexpr std::size_t guidTextLength = 38;

/// The text with braces and upper-case digits.
std::u16string textOfGuid(REFGUID id);

/// Reads the whole text, which must have exactly the published form; digits
/// may be in either case.
std::optional<GUID> guidOfText(std::u16string_view text);

/// Where a class's module is.
struct ModuleOfClass {
    std::u16string path;
    /// Objects of the class belong to the thread that made them.
    bool isApartmentThreaded = true;
};
/// Fails with REGDB_E_READREGDB when what is asked for may stand in a hive that
/// cannot be read.
std::optional<ModuleOfClass> moduleOfClass(REFCLSID id);

}  // namespace velk::platform::com
