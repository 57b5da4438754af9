/// Where libraries come from: files, the registry, and what this layer carries itself.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/typelib/interfaces/type_library.h"

namespace velk::typelib {

/// The library in a file, as LoadTypeLib names it: a library, or a module with
/// a library among its resources, the number of the resource after a backslash
/// at the end. A library that is still in use is shared. Fails with a
/// Failure.
Reference<TypeLibrary> loadLibraryFile(std::u16string_view path);

/// Whether the path names the same file whatever folder is current.
constexpr bool isAbsolutePath(std::u16string_view path) noexcept {
    return path.starts_with(u'/');
}

/// The registered library of an identifier, by the rules of LoadRegTypeLib.
/// Fails with a Failure, TYPE_E_LIBNOTREGISTERED where there is none.
Reference<TypeLibrary> loadRegisteredLibrary(REFGUID id, WORD major, WORD minor, LCID lcid);

/// The library of the standard types (IUnknown, IDispatch and their kin), which
/// the layer carries itself so that others can refer to it without any
/// registration. Shared while in use.
Reference<TypeLibrary> standardTypes();

/// The identifier of the library of the standard types.
extern GUID const standardTypesId;

/// The library known under `key` while anybody uses it; otherwise what `load`
/// makes, which is remembered. Thread-safe. Two threads that ask for the same
/// library at once may both load it; one of the two then stays.
Reference<TypeLibrary> sharedLibrary(std::u16string const& key,
                                     std::function<Reference<TypeLibrary>()> const& load);

/// Called by a library at its end.
void forgetLibrary(TypeLibrary const* library) noexcept;

}  // namespace velk::typelib
