#include "platform/system/loader_names.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/system/immortal.h"

namespace velk::platform {
namespace {

constexpr std::string_view descriptors = "/proc/self/fd/";

/// Whether the loader could put something else in place of a part of the text.
bool holdsToken(std::string_view text) {
    for (auto at = text.find('$'); at != text.npos; at = text.find('$', at + 1)) {
        auto rest = text.substr(at + 1);
        if (rest.starts_with('{')) rest.remove_prefix(1);
        for (auto const* token : {"ORIGIN", "LIB", "PLATFORM"}) {
            if (rest.starts_with(token)) return true;
        }
    }
    return false;
}

struct OpenFolder {
    std::string path;
    int descriptor;

    /// Whether the path still leads to this folder.
    bool isThere() const {
        struct stat open;
        struct stat named;
        return fstat(descriptor, &open) == 0 && stat(path.c_str(), &named) == 0 &&
               open.st_dev == named.st_dev && open.st_ino == named.st_ino;
    }
    std::string name() const { return std::string(descriptors) + std::to_string(descriptor); }
};

struct OpenFolders {
    std::mutex lock;
    std::vector<OpenFolder> all;
};

OpenFolders& folders() {
    static Immortal<OpenFolders> open;
    return *open;
}

std::optional<std::string> openFolder(std::string const& path) {
    std::lock_guard const guard(folders().lock);
    auto& all = folders().all;
    auto const known = std::ranges::find_if(
        all, [&](OpenFolder const& folder) { return folder.path == path && folder.isThere(); });
    if (known != all.end()) return known->name();
    all.reserve(all.size() + 1);
    OpenFolder folder{path, open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    if (folder.descriptor < 0) return std::nullopt;
    return all.emplace_back(std::move(folder)).name();
}

}  // namespace

std::optional<std::string> loaderNameOf(std::string const& path) {
    if (!holdsToken(path)) return path;
    auto const file = path.substr(path.rfind('/'));
    if (holdsToken(file)) return std::nullopt;
    auto const folder = openFolder(path.substr(0, path.size() - file.size()));
    return folder ? std::optional(*folder + file) : std::nullopt;
}

std::string pathOfLoaderName(std::string_view name) {
    if (name.starts_with(descriptors)) {
        auto const end = name.find('/', descriptors.size());
        std::lock_guard const guard(folders().lock);
        for (auto const& folder : folders().all) {
            if (folder.name() == name.substr(0, end)) {
                return folder.path + std::string(name.substr(std::min(end, name.size())));
            }
        }
    }
    return std::string(name);
}

}  // namespace velk::platform
