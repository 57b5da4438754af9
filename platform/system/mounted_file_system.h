/// What is mounted where a folder is.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <windef.h>

namespace velk::platform {

struct MountedFileSystem {
    std::u16string name;  ///< as programs know it: NTFS, FAT32, exFAT, else the system's
    DWORD serial = 0;
    DWORD longestName = 0;
    bool readOnly = false;
};

/// Nothing when the folder cannot be looked at; `errno` tells why.
std::optional<MountedFileSystem> mountedAt(std::string const& folder);

}  // namespace velk::platform
