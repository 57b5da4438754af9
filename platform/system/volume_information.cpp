/// The published functions about volumes.
#include <algorithm>
#include <cerrno>

#include "platform/system/boundary.h"
#include "platform/system/mounted_file_system.h"
#include "platform/system/utf16.h"
#include "platform/system/volume_map.h"

namespace velk::platform {
namespace {

struct Volume {
    std::u16string fileSystem;
    MountedFileSystem mounted;
};

LONG errorOf(int number) {
    return number == EACCES ? ERROR_ACCESS_DENIED : ERROR_PATH_NOT_FOUND;
}

MountedFileSystem requireMounted(std::string const& folder) {
    auto mounted = mountedAt(folder);
    require(mounted.has_value(), errorOf(errno));
    return std::move(*mounted);
}

/// The volume of the current directory, which is no part of the table.
Volume currentVolume() {
    auto mounted = requireMounted(".");
    return {mounted.name, mounted};
}

void requireRoot(VolumePath const& path, std::u16string_view text) {
    require(path.below.empty(), ERROR_DIR_NOT_ROOT);
    require(text.back() == u'\\' || text.back() == u'/', ERROR_INVALID_NAME);
}

Volume volumeAt(LPCWSTR root) {
    if (root == nullptr) return currentVolume();
    auto const path = volumePathOf(root);
    require(path.has_value(), ERROR_PATH_NOT_FOUND);
    requireRoot(*path, root);
    auto const folder = folderOfVolume(path->root);
    require(folder.has_value(), path->share ? ERROR_BAD_NETPATH : ERROR_PATH_NOT_FOUND);
    auto mounted = requireMounted(*folder);
    auto const name = fileSystemOfVolume(path->root);
    return {name ? *name : mounted.name, mounted};
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
    require(!tooSmall, ERROR_BAD_LENGTH);
}

}  // namespace
}  // namespace velk::platform

using namespace velk::platform;

BOOL GetVolumeInformationW(LPCWSTR root, LPWSTR label, DWORD labelSize, LPDWORD serial,
                           LPDWORD longestName, LPDWORD flags, LPWSTR fileSystem,
                           DWORD fileSystemSize) {
    return orLastError(FALSE, [&] {
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
    });
}
