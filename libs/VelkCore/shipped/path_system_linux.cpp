#include "path_system.h"

#include <cerrno>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include <velk_paths.h>

namespace velk::core {

namespace fs = std::filesystem;

namespace {

OLECHAR const* oleText(QString const& text) {
    return reinterpret_cast<OLECHAR const*>(text.utf16());
}

/// The path with the origin of `path`, when it is below that one's root.
std::optional<PathParts> withOriginOf(PathParts const& path, fs::path const& canonical) {
    std::error_code error;
    auto const rootLocation = locationOf(path.root());
    fs::path const root = rootLocation ? fs::weakly_canonical(*rootLocation, error) : fs::path();
    if (!rootLocation || error) return std::nullopt;
    PathParts const rootParts = PathParts::parse(textOf(root));
    PathParts const parts = PathParts::parse(textOf(canonical));
    int const below = parts.namesBelow(rootParts);
    if (below < 0) return std::nullopt;
    PathParts result = path.root();
    result.rooted = true;
    result.names = parts.names.mid(parts.names.size() - below);
    return result;
}

}  // namespace

bool rootIsAbsolute() {
    return true;
}

std::optional<fs::path> locationOf(PathParts const& path) {
    QString const text = path.native();
    DWORD const size = VelkFileOfPath(oleText(text), nullptr, 0);
    std::vector<char> file(size + 1);
    // Nothing, too, when the table was changed between the two calls.
    DWORD const length = size == 0 ? 0 : VelkFileOfPath(oleText(text), file.data(), size);
    if (length == 0 || length >= size) return std::nullopt;
    return fs::path(std::string(file.data(), length));
}

QString textOf(fs::path const& location) {
    return QString::fromStdString(location.native());
}

PathParts absoluteOf(PathParts const& path) {
    PathParts absolute = path;
    if (path.hasOrigin()) {
        absolute.rooted = true;
    } else if (!path.rooted) {
        std::error_code error;
        absolute = PathParts::parse(textOf(fs::current_path(error))).joined(path);
    }
    return absolute.cleaned();
}

std::optional<PathParts> canonicalOf(PathParts const& path) {
    std::error_code error;
    auto const location = locationOf(absoluteOf(path));
    if (!location) return std::nullopt;
    fs::path const canonical = fs::weakly_canonical(*location, error);
    if (error) return std::nullopt;
    auto result = path.hasOrigin() ? withOriginOf(path, canonical) : std::nullopt;
    return result ? *result : PathParts::parse(textOf(canonical));
}

PathParts localPathOf(PathParts const& path) {
    PathParts const absolute = absoluteOf(path);
    OLECHAR root[4] = {};
    if (VelkDriveOfShare(oleText(path.root().native()), root)) {
        PathParts local = absolute;
        local.computer.clear();
        local.share.clear();
        local.drive = QChar(root[0]);
        return local;
    }
    auto const location = locationOf(absolute);
    return location ? PathParts::parse(textOf(*location)) : PathParts();
}

bool isHidden(fs::path const& location) {
    return location.filename().native().starts_with('.');
}

bool mayRead(fs::path const& location) {
    return access(location.c_str(), R_OK) == 0;
}

bool mayWrite(fs::path const& location) {
    return access(location.c_str(), W_OK) == 0;
}

bool isLink(fs::path const& location) {
    std::error_code error;
    return fs::is_symlink(location, error);
}

std::error_code createNewFile(fs::path const& location) {
    int const file = open(location.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0) return {errno, std::generic_category()};
    close(file);
    return {};
}

}  // namespace velk::core
