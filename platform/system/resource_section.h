/// The resources of a module's file: its section ".rsrc.velk".
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/system/resource_list.h"

namespace velk::platform {

/// The bytes of the section in the file, and where they stand in memory
/// relative to the image's shift when the file is loaded.
struct ResourceSection {
    std::uint64_t address = 0;
    std::vector<std::byte> bytes;
};

/// Whether the file begins as a shared object of this machine.
bool isSharedObjectFile(std::string const& path);

/// Reads the section from a file without loading it. Nothing when the file
/// cannot be read, is no shared object of this machine, has no such section or
/// contradicts itself. `path` is in the system's bytes. Thread-safe.
std::optional<ResourceSection> readResourceSection(std::string const& path);

/// Reads one resource from a file without loading it. Nothing when there is
/// none; see readResourceSection. Thread-safe.
std::optional<std::vector<std::byte>> readResource(std::string const& path,
                                                   ResourceName const& type,
                                                   ResourceName const& name);

}  // namespace velk::platform
