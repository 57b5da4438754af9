/// What the dynamic loader has in memory: the program and its shared objects.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include <windef.h>

namespace velk::platform {

/// One loaded object. Its handle is the address at which its image begins.
struct LoadedObject {
    HMODULE handle = nullptr;
    /// How far the image lies from the addresses written in its file.
    std::ptrdiff_t shift = 0;
    /// The file's absolute path, in the system's bytes.
    std::string path;
    /// The name under which the dynamic loader knows it.
    std::string loaderName;
    bool isProgram = false;
};

/// The object with this handle, if it is loaded. Thread-safe.
std::optional<LoadedObject> loadedObject(HMODULE handle);

/// The object whose image contains the address. Thread-safe.
std::optional<LoadedObject> loadedObjectAround(void const* address);

/// The object of this name: a path when it contains a slash, else a file name
/// in whatever folder, with or without its ".so". Thread-safe.
std::optional<LoadedObject> loadedObjectNamed(std::string_view name);

/// The program itself.
LoadedObject programObject();

/// Whether all the bytes lie in one readable part of a loaded image. Thread-safe.
bool isInLoadedImage(void const* begin, std::size_t size);

}  // namespace velk::platform
