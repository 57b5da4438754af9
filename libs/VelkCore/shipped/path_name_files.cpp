#include "path_name.h"

#include <random>

#include "path_system.h"

// What a path name asks of files, and does to them.

namespace velk::core {

namespace fs = std::filesystem;

namespace {

fs::path requireLocation(PathParts const& path, char const* operation) {
    if (path.isNull()) proxyObjectC::throwExecuteException("The path is empty", operation, 1);
    auto location = locationOf(path);
    if (!location) {
        proxyObjectC::throwExecuteException(
            "'" + mzComStringC(path.native()) + "' is on no drive or share that is known here",
            operation, 1);
    }
    return std::move(*location);
}

/// Fails with the reason when something went wrong.
void requireSuccess(std::error_code const& error, PathParts const& path, char const* operation) {
    if (!error) return;
    std::string const reason = error.message();
    proxyObjectC::throwExecuteException(
        "'" + mzComStringC(path.native()) + "': " + mzComStringC(QString::fromStdString(reason)),
        operation, 1);
}

/// The state of what a link leads to.
fs::file_status statusOf(PathParts const& path) {
    std::error_code ignored;
    auto const location = locationOf(path);
    return location ? fs::status(*location, ignored) : fs::file_status(fs::file_type::not_found);
}

/// A link is there even when what it leads to is not.
bool isThere(fs::path const& location) {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(location, ignored));
}

std::error_code removeTree(fs::path const& location);

/// The first error ends it.
std::error_code removeBelow(fs::path const& folder, bool filesAlone) {
    std::error_code error;
    for (fs::directory_iterator place(folder, error), end; !error && place != end;) {
        fs::path const entry = place->path();
        place.increment(error);
        if (error) break;
        bool const isFolder = !isLink(entry) && fs::is_directory(entry, error);
        if (!error && !(isFolder && filesAlone)) error = removeTree(entry);
    }
    return error;
}

std::error_code removeTree(fs::path const& location) {
    std::error_code error;
    if (!isLink(location) && fs::is_directory(location, error)) {
        error = removeBelow(location, false);
    }
    if (!error) fs::remove(location, error);
    return error;
}

fs::path requireFolderToEmpty(PathParts const& path, char const* operation) {
    fs::path location = requireLocation(path, operation);
    if (absoluteOf(path).isRoot()) {
        proxyObjectC::throwExecuteException("A root is never emptied", operation, 1);
    }
    std::error_code error;
    if (!fs::is_directory(location, error)) {
        proxyObjectC::throwExecuteException("'" + mzComStringC(path.native()) + "' is no folder",
                                            operation, 1);
    }
    return location;
}

QString randomName() {
    static constexpr char letters[] = "0123456789abcdefghijklmnopqrstuvwxyz";
    std::random_device source;
    std::uniform_int_distribution<std::size_t> place(0, sizeof letters - 2);
    QString name;
    for (int i = 0; i < 8; ++i) name.append(letters[place(source)]);
    return name;
}

void requirePartOfName(QString const& text, char const* operation) {
    if (text.contains('/') || text.contains('\\') || text.contains(QChar('\0'))) {
        proxyObjectC::throwExecuteException("'" + mzComStringC(text) + "' cannot be in a name",
                                            operation, 1);
    }
}

PathParts folderForTemporaries(PathParts const& folder) {
    std::error_code ignored;
    return folder.isNull() ? PathParts::parse(textOf(fs::temp_directory_path(ignored))) : folder;
}

/// Tries names until `create` made one. It gives `file_exists` for one that is
/// taken.
template <class Create>
PathParts createWithNewName(PathParts const& folder, QString const& prefix, QString const& suffix,
                            char const* operation, Create create) {
    PathParts path = folder;
    path.names.append(QString());
    std::error_code error;
    for (int i = 0; i < 100; ++i) {
        path.names.last() = prefix + randomName() + suffix;
        error = create(requireLocation(path, operation));
        if (error != std::errc::file_exists) break;
    }
    requireSuccess(error, path, operation);
    return path;
}

std::error_code createNewFolder(fs::path const& location) {
    std::error_code error;
    bool const made = fs::create_directory(location, error);
    return made || error ? error : std::make_error_code(std::errc::file_exists);
}

}  // namespace

int PathName::exists() {
    return fs::exists(statusOf(parts_)) ? 1 : 0;
}

int PathName::existsBelow(mzComVariantC const& path) {
    return fs::exists(statusOf(parts_.joined(pathArgument(path, "exists")))) ? 1 : 0;
}

bool PathName::isDirectory() {
    return fs::is_directory(statusOf(parts_));
}

bool PathName::isFile() {
    return fs::is_regular_file(statusOf(parts_));
}

bool PathName::isEmptyDirectory() {
    std::error_code error;
    return isDirectory() && fs::is_empty(requireLocation(parts_, "isEmptyDir"), error) && !error;
}

bool PathName::isEmptyFile() {
    std::error_code error;
    return isFile() && fs::file_size(requireLocation(parts_, "isEmptyFile"), error) == 0 && !error;
}

bool PathName::isReadable() {
    auto const location = locationOf(parts_);
    return location && mayRead(*location);
}

bool PathName::isWritable() {
    auto const location = locationOf(parts_);
    return location && mayWrite(*location);
}

bool PathName::isHidden() {
    auto const location = locationOf(parts_);
    return location && isThere(*location) && velk::core::isHidden(*location);
}

mzComVariantC PathName::fileSize() {
    fs::path const location = requireLocation(parts_, "FileSize");
    if (!isFile()) throwExecuteException("'" + native() + "' is no file", "FileSize", 1);
    std::error_code error;
    auto const size = fs::file_size(location, error);
    requireSuccess(error, parts_, "FileSize");
    mzComVariantC value;
    // What an integer cannot hold becomes floating point.
    value.set(QVariant(static_cast<qulonglong>(size)));
    return value;
}

int PathName::createDirectory() {
    std::error_code error;
    fs::create_directories(requireLocation(parts_, "createDir"), error);
    requireSuccess(error, parts_, "createDir");
    if (!isDirectory()) throwExecuteException("'" + native() + "' is no folder", "createDir", 1);
    return 1;
}

int PathName::createFile() {
    std::error_code error = createNewFile(requireLocation(parts_, "createFile"));
    if (error == std::errc::file_exists && isFile()) return 1;
    requireSuccess(error, parts_, "createFile");
    return 1;
}

mzComPtrT<mzIUnknown> PathName::createTempDirectory(mzComStringC const& prefix) {
    constexpr char const* operation = "createTempDirectoryName";
    requirePartOfName(prefix, operation);
    return newPathName(createWithNewName(folderForTemporaries(parts_), prefix, QString(), operation,
                                         createNewFolder));
}

mzComPtrT<mzIUnknown> PathName::createTempFile(mzComStringC const& prefix,
                                               mzComStringC const& extension) {
    constexpr char const* operation = "createTempFileName";
    QString suffix = extension;
    requirePartOfName(prefix, operation);
    requirePartOfName(suffix, operation);
    if (!suffix.isEmpty() && !suffix.startsWith('.')) suffix.prepend('.');
    return newPathName(
        createWithNewName(folderForTemporaries(parts_), prefix, suffix, operation, createNewFile));
}

int PathName::renameTo(mzComVariantC const& path) {
    constexpr char const* operation = "renameTo";
    fs::path const from = requireLocation(parts_, operation);
    PathParts target = pathArgument(path, operation);
    if (target.names.isEmpty()) throwExecuteException("The new path has no name", operation, 1);
    target = parts_.folder().joined(target);
    fs::path const to = requireLocation(target, operation);
    if (isThere(to)) {
        throwExecuteException("'" + mzComStringC(target.native()) + "' exists", operation, 1);
    }
    std::error_code error;
    fs::rename(from, to, error);
    requireSuccess(error, parts_, operation);
    parts_ = std::move(target);
    return 1;
}

int PathName::setWritable(bool writable) {
    using fs::perms;
    std::error_code error;
    perms const everybody = perms::owner_write | perms::group_write | perms::others_write;
    fs::permissions(requireLocation(parts_, "setWritable"),
                    writable ? perms::owner_write : everybody,
                    writable ? fs::perm_options::add : fs::perm_options::remove, error);
    requireSuccess(error, parts_, "setWritable");
    return 1;
}

int PathName::unlink() {
    std::error_code error;
    bool const removed = fs::remove(requireLocation(parts_, "unlink"), error);
    requireSuccess(error, parts_, "unlink");
    if (!removed) throwExecuteException("'" + native() + "' does not exist", "unlink", 1);
    return 1;
}

int PathName::unlinkContents() {
    requireSuccess(removeBelow(requireFolderToEmpty(parts_, "unlinkContents"), false), parts_,
                   "unlinkContents");
    return 1;
}

int PathName::unlinkFiles() {
    requireSuccess(removeBelow(requireFolderToEmpty(parts_, "unlinkFiles"), true), parts_,
                   "unlinkFiles");
    return 1;
}

int PathName::unlinkRecursive() {
    constexpr char const* operation = "unlinkRecursive";
    fs::path const location = requireLocation(parts_, operation);
    if (!isThere(location)) {
        throwExecuteException("'" + native() + "' does not exist", operation, 1);
    }
    if (absoluteOf(parts_).isRoot()) {
        throwExecuteException("A root is never emptied", operation, 1);
    }
    requireSuccess(removeTree(location), parts_, operation);
    return 1;
}

}  // namespace velk::core
