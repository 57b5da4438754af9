/// The type library that the module carries, and its registration.
#pragma once

#include <string>

#include "com/owners.h"

namespace velk::adapter {

/// A loaded type library and the file that it was loaded from.
struct LoadedTypeLibrary {
    com::ComPtr<ITypeLib> library;
    com::Bstr path;
};

/// Loads the library out of the module's file, or else from the file of the
/// same name with the extension ".tlb". Throws com::Error.
LoadedTypeLibrary loadTypeLibrary();

/// Registers the module's type library for the machine or for the current
/// user. Gives the successful result; throws com::Error.
HRESULT registerTypeLibrary(bool perUser);

/// Takes that back; what is not registered is no failure. Gives the successful
/// result; throws com::Error.
HRESULT unregisterTypeLibrary(bool perUser);

/// `path` with its extension replaced by ".tlb", which is appended when there
/// is none. Throws com::Error(E_FAIL) when that has 260 characters or more.
std::basic_string<OLECHAR> withLibraryExtension(std::basic_string<OLECHAR> path);

}  // namespace velk::adapter
