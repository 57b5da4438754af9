#include "platform/system/mounted_file_system.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <sstream>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>

#include "platform/system/utf16.h"

namespace velk::platform {

namespace {

/// How a line of /proc/self/mountinfo tells which mount it is.
struct MountMark {
    std::string id;      ///< empty when the kernel does not tell it
    std::string device;  ///< major:minor
};

MountMark markOf(std::string const& folder, struct stat const& status) {
    MountMark mark;
    struct statx facts = {};
    if (statx(AT_FDCWD, folder.c_str(), 0, STATX_MNT_ID, &facts) == 0 &&
        (facts.stx_mask & STATX_MNT_ID) != 0) {
        mark.id = std::to_string(facts.stx_mnt_id);
    }
    mark.device = std::to_string(major(status.st_dev)) + ":" + std::to_string(minor(status.st_dev));
    return mark;
}

/// Fields of a line: id, parent, device, root, place, options, others, "-",
/// type. Later lines were mounted over earlier ones.
std::string mountedType(MountMark const& mark) {
    std::ifstream mounts("/proc/self/mountinfo");
    std::string byId, byDevice;
    for (std::string line; std::getline(mounts, line);) {
        std::istringstream fields(line);
        std::string id, parent, device, field, type;
        fields >> id >> parent >> device;
        while (fields >> field && field != "-") {
        }
        if (!(fields >> type)) continue;
        if (id == mark.id) byId = type;
        if (device == mark.device) byDevice = type;
    }
    return !byId.empty() ? byId : byDevice;
}

struct KnownType {
    std::string_view type;
    std::u16string_view name;
};

constexpr std::array knownTypes = {KnownType{"ntfs", u"NTFS"}, KnownType{"ntfs3", u"NTFS"},
                                   KnownType{"vfat", u"FAT32"}, KnownType{"exfat", u"exFAT"}};

}  // namespace

std::optional<MountedFileSystem> mountedAt(std::string const& folder) {
    struct stat status = {};
    struct statvfs room = {};
    if (stat(folder.c_str(), &status) != 0 || statvfs(folder.c_str(), &room) != 0) {
        return std::nullopt;
    }
    MountedFileSystem found;
    std::string const type = mountedType(markOf(folder, status));
    auto const* const known =
        std::find_if(knownTypes.begin(), knownTypes.end(),
                     [&](KnownType const& candidate) { return candidate.type == type; });
    found.name = known != knownTypes.end() ? std::u16string(known->name) : toUtf16(type);
    found.serial = static_cast<DWORD>(room.f_fsid ^ (room.f_fsid >> 32));
    found.longestName = static_cast<DWORD>(room.f_namemax);
    found.readOnly = (room.f_flag & ST_RDONLY) != 0;
    return found;
}

}  // namespace velk::platform
