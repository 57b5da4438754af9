/// Paths of programs, as files of this system.
#include <velk_paths.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "platform/system/boundary.h"
#include "platform/system/utf16.h"
#include "platform/system/volume_map.h"

namespace velk::platform {
namespace {

std::string nativePath(std::u16string_view path) {
    auto file = toFileName(path);
    require(file.has_value(), ERROR_INVALID_NAME);
    // In a path from the root on, `\` is a character of a name like any other.
    if (!file->starts_with('/')) std::replace(file->begin(), file->end(), '\\', '/');
    return *std::move(file);
}

std::string fileOf(std::u16string_view path) {
    require(!path.empty(), ERROR_INVALID_NAME);
    auto const volume = volumePathOf(path);
    if (!volume) return nativePath(path);
    auto const below = toFileName(volume->below);
    require(below.has_value(), ERROR_INVALID_NAME);
    auto folder = folderOfVolume(volume->root);
    require(folder.has_value(), volume->share ? ERROR_BAD_NETPATH : ERROR_PATH_NOT_FOUND);
    if (below->empty()) return std::move(*folder);
    if (!folder->ends_with('/')) folder->push_back('/');
    return *folder + *below;
}

}  // namespace
}  // namespace velk::platform

using namespace velk::platform;

DWORD VelkFileOfPath(LPCWSTR path, char* file, DWORD capacity) {
    return orLastError(DWORD{0}, [&] {
        std::string const found = fileOf(path != nullptr ? path : u"");
        auto const size = static_cast<DWORD>(found.size() + 1);
        if (file == nullptr || capacity < size) return size;
        std::memcpy(file, found.c_str(), size);
        return size - 1;
    });
}

BOOL VelkDriveOfShare(LPCWSTR share, LPWSTR root) {
    return orLastError(FALSE, [&] {
        auto const volume = volumePathOf(share != nullptr ? share : u"");
        if (!volume || !volume->share || root == nullptr) return FALSE;
        auto const folder = folderOfVolume(volume->root);
        if (!folder) return FALSE;
        for (char16_t letter = u'A'; letter <= u'Z'; ++letter) {
            std::u16string const drive{letter, u':', u'\\'};
            std::error_code ignored;
            auto const other = folderOfVolume(drive);
            if (other && std::filesystem::equivalent(*other, *folder, ignored)) {
                std::copy_n(drive.c_str(), drive.size() + 1, root);
                return TRUE;
            }
        }
        return FALSE;
    });
}
