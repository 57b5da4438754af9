/// The published functions about volumes.
#include <algorithm>
#include <cerrno>
#include <exception>
#include <filesystem>

#include <winbase.h>

#include "platform/system/mounted_file_system.h"
#include "platform/system/utf16.h"
#include "platform/system/volume_map.h"

namespace velk::platform {
namespace {

struct Volume {
    std::u16string fileSystem;
    MountedFileSystem mounted;
    bool share = false;
};

/// The last error in place of a volume.
struct NoVolume {
    DWORD error;
};

DWORD errorOf(int number) {
    return number == EACCES ? ERROR_ACCESS_DENIED : ERROR_PATH_NOT_FOUND;
}

MountedFileSystem requireMounted(std::string const& folder) {
    auto mounted = mountedAt(folder);
    if (!mounted) throw NoVolume{errorOf(errno)};
    return std::move(*mounted);
}

/// The volume of the current directory, which is no part of the table.
Volume currentVolume() {
    auto mounted = requireMounted(".");
    return {mounted.name, mounted, false};
}

void requireRoot(VolumePath const& path, std::u16string_view text) {
    if (!path.below.empty()) throw NoVolume{ERROR_DIR_NOT_ROOT};
    if (text.back() != u'\\' && text.back() != u'/') throw NoVolume{ERROR_INVALID_NAME};
}

Volume volumeAt(LPCWSTR root) {
    if (root == nullptr) return currentVolume();
    auto const path = volumePathOf(root);
    if (!path) throw NoVolume{ERROR_PATH_NOT_FOUND};
    requireRoot(*path, root);
    auto const folder = folderOfVolume(path->root);
    if (!folder) throw NoVolume{DWORD(path->share ? ERROR_BAD_NETPATH : ERROR_PATH_NOT_FOUND)};
    auto mounted = requireMounted(*folder);
    auto const name = fileSystemOfVolume(path->root);
    return {name ? *name : mounted.name, mounted, path->share};
}

DWORD flagsOf(MountedFileSystem const& mounted) {
    DWORD const always =
        FILE_CASE_SENSITIVE_SEARCH | FILE_CASE_PRESERVED_NAMES | FILE_UNICODE_ON_DISK;
    return mounted.readOnly ? always | FILE_READ_ONLY_VOLUME : always;
}

/// Mounts here have no labels that a program could be told.
void requireRoom(Volume const& volume, LPWSTR label, DWORD labelSize, LPWSTR fileSystem,
                 DWORD fileSystemSize) {
    bool const tooSmall = (label != nullptr && labelSize < 1) ||
                          (fileSystem != nullptr && fileSystemSize <= volume.fileSystem.size());
    if (tooSmall) throw NoVolume{ERROR_BAD_LENGTH};
}

}  // namespace
}  // namespace velk::platform

using namespace velk::platform;

BOOL GetVolumeInformationW(LPCWSTR root, LPWSTR label, DWORD labelSize, LPDWORD serial,
                           LPDWORD longestName, LPDWORD flags, LPWSTR fileSystem,
                           DWORD fileSystemSize) try {
    Volume const volume = volumeAt(root);
    requireRoom(volume, label, labelSize, fileSystem, fileSystemSize);
    if (label != nullptr) *label = u'\0';
    if (serial != nullptr) *serial = volume.mounted.serial;
    if (longestName != nullptr) *longestName = volume.mounted.longestName;
    if (flags != nullptr) *flags = flagsOf(volume.mounted);
    if (fileSystem != nullptr) {
        std::copy_n(volume.fileSystem.c_str(), volume.fileSystem.size() + 1, fileSystem);
    }
    return TRUE;
} catch (NoVolume const& none) {
    SetLastError(none.error);
    return FALSE;
} catch (std::exception const&) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return FALSE;
}

UINT GetDriveTypeW(LPCWSTR root) try {
    if (root == nullptr) return DRIVE_FIXED;
    auto const path = volumePathOf(root);
    auto const folder = path && path->below.empty() ? folderOfVolume(path->root) : std::nullopt;
    auto const mounted = folder ? mountedAt(*folder) : std::nullopt;
    if (!mounted) return DRIVE_NO_ROOT_DIR;
    return path->share || mounted->overNetwork ? DRIVE_REMOTE : DRIVE_FIXED;
} catch (std::exception const&) {
    return DRIVE_UNKNOWN;
}
