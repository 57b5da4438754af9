/// References to loaded modules, held for the users of the published functions.
#pragma once

#include <optional>
#include <string>

#include "platform/system/loaded_objects.h"

namespace velk::platform {

/// The loaded module of this published name: null for the program, a path or
/// a file name, or a name of the libraries that the layer stands for.
std::optional<LoadedObject> findModule(LPCWSTR name);

/// Loads a module and holds one reference to it. Null, with the thread's last
/// error set, when that fails. Runs the module's own start-up. Thread-safe.
HMODULE loadModule(LPCWSTR name);

/// Adds a reference to a loaded module; with `forEver`, it is never freed.
/// False when the module has gone meanwhile. Thread-safe.
bool holdModule(LoadedObject const& object, bool forEver);

/// Gives one reference back, which may unload the module and runs its
/// tear-down then. False when the handle is none of a loaded module. Thread-safe.
bool releaseModule(HMODULE module);

/// The module's own exported symbol, or null. Thread-safe.
void* moduleSymbol(HMODULE module, char const* name);

}  // namespace velk::platform
