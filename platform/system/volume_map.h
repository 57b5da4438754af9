/// Which folder stands for a drive or a share.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velk::platform {

/// A path on a drive or a share, taken apart.
struct VolumePath {
    std::u16string root;   ///< `C:\` or `\\server\share\`, as in the table
    std::u16string below;  ///< clean, relative to the root, `/` between names
    bool share = false;
};

/// Nothing when the path has neither drive nor share. The prefix `\\?\` is
/// taken off. A computer without a share gives a root without one.
std::optional<VolumePath> volumePathOf(std::u16string_view path);

/// The folder of a root; nothing when the table does not have it, or has what
/// can be no folder.
std::optional<std::string> folderOfVolume(std::u16string const& root);

/// The name of the file system that the table gives a root, if it does.
std::optional<std::u16string> fileSystemOfVolume(std::u16string const& root);

}  // namespace velk::platform
