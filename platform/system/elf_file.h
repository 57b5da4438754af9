/// Files of modules as they stand on the disk: looked at before anything of
/// them is loaded.
#pragma once

#include <optional>

#include <elf.h>

#include "platform/system/regular_file.h"

namespace velk::platform {

/// The header of a shared object or program of this machine; nothing for
/// another file.
std::optional<Elf64_Ehdr> moduleHeader(RegularFile const& file) noexcept;

/// Whether the file is a shared object of this machine and holds every byte
/// that its segments promise. The dynamic loader maps them unseen, and what
/// lies beyond the end of a file ends the process that reads it.
bool isWholeSharedObject(RegularFile const& file);

}  // namespace velk::platform
