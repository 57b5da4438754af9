/// Type libraries as text.
#pragma once

#include <filesystem>
#include <ostream>

#include <windows.h>

#include <oleauto.h>

namespace velk::velkcom {

/// Prints everything that the type library in `file` says, in the manner of
/// an interface description: identifiers, versions, flags, help, members with
/// their dispatch identifiers, vtable offsets, parameters, defaults and
/// constants. A dual interface is printed as both of its views.
///
/// The text depends on the library alone, so that two of them can be compared.
/// `file` may end in a backslash and the number of a resource, as for
/// LoadTypeLib. The library is not registered.
///
/// @param errors receives one line when the library cannot be loaded
/// @return 0, or 1 when the library cannot be loaded
int printTypeLibrary(std::filesystem::path const& file, std::ostream& out, std::ostream& errors);

/// The same of a library that is already loaded.
void printTypeLibrary(ITypeLib* library, std::ostream& out);

}  // namespace velk::velkcom
