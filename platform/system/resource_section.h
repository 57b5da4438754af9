/// The resources of a module's file: its section ".rsrc.velk".
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/system/regular_file.h"

namespace velk::platform {

/// The bytes of the section in the file, and where they stand in memory
/// relative to the image's shift when the file is loaded.
struct ResourceSection {
    std::uint64_t address = 0;
    std::vector<std::byte> bytes;
};

/// Reads the section from a file without loading it. Nothing when the file is
/// no module of this machine, has no such section or contradicts itself.
/// Thread-safe.
std::optional<ResourceSection> readResourceSection(RegularFile const& file);

}  // namespace velk::platform
