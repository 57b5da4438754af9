/// Libraries in use, so that each is read once.
#pragma once

#include <functional>
#include <string>

#include "platform/typelib/type_library.h"

namespace velk::typelib {

/// The library known under `key` while anybody uses it; otherwise what `load`
/// makes, which is remembered. Thread-safe. Two threads that ask for the same
/// library at once may both load it; one of the two then stays.
Reference<TypeLibrary> sharedLibrary(std::u16string const& key,
                                     std::function<Reference<TypeLibrary>()> const& load);

/// Called by a library at its end.
void forgetLibrary(TypeLibrary const* library) noexcept;

}  // namespace velk::typelib
