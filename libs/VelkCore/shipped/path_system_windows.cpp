#include "path_system.h"

#include <array>
#include <vector>

#include <windows.h>

namespace velk::core {

namespace fs = std::filesystem;

namespace {

/// The registry's list of what this computer shares.
constexpr wchar_t const* sharesKey = L"SYSTEM\\CurrentControlSet\\Services\\LanmanServer\\Shares";

bool isThisComputer(QString const& name) {
    std::array<wchar_t, MAX_COMPUTERNAME_LENGTH + 1> own{};
    auto size = static_cast<DWORD>(own.size());
    bool const known = GetComputerNameW(own.data(), &size) != 0;
    return name == "." || name == "127.0.0.1" ||
           name.compare("localhost", Qt::CaseInsensitive) == 0 ||
           (known && name.compare(QString::fromWCharArray(own.data()), Qt::CaseInsensitive) == 0);
}

/// Each text of the entry is a setting, `Path=C:\folder` among them.
QString sharedFolder(QString const& share) {
    std::vector<wchar_t> texts(1 << 15);
    auto size = static_cast<DWORD>(texts.size() * sizeof(wchar_t));
    if (RegGetValueW(HKEY_LOCAL_MACHINE, sharesKey, share.toStdWString().c_str(),
                     RRF_RT_REG_MULTI_SZ, nullptr, texts.data(), &size) != ERROR_SUCCESS) {
        return {};
    }
    for (wchar_t const* text = texts.data(); *text != 0; text += std::wcslen(text) + 1) {
        QString const setting = QString::fromWCharArray(text);
        if (setting.startsWith("Path=", Qt::CaseInsensitive)) return setting.mid(5);
    }
    return {};
}

/// The drives themselves are shared as `C$`.
QString sharedDrive(QString const& share) {
    bool const drive = share.size() == 2 && share[0].isLetter() && share[1] == '$';
    return drive ? share.left(1) + ":\\" : QString();
}

DWORD attributesOf(fs::path const& location) {
    return GetFileAttributesW(location.c_str());
}

bool hasAttribute(fs::path const& location, DWORD attribute) {
    DWORD const attributes = attributesOf(location);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & attribute) != 0;
}

bool mayOpen(fs::path const& location, DWORD access) {
    HANDLE const file = CreateFileW(location.c_str(), access,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) return GetLastError() == ERROR_SHARING_VIOLATION;
    CloseHandle(file);
    return true;
}

}  // namespace

bool rootIsAbsolute() {
    return false;
}

std::optional<fs::path> locationOf(PathParts const& path) {
    if (path.isNull()) return std::nullopt;
    return fs::path(path.native().toStdWString());
}

QString textOf(fs::path const& location) {
    return QString::fromStdWString(location.native());
}

PathParts absoluteOf(PathParts const& path) {
    std::error_code error;
    auto const location = locationOf(path.cleaned());
    fs::path const absolute = location ? fs::absolute(*location, error) : fs::current_path(error);
    return error ? path.cleaned() : PathParts::parse(textOf(absolute)).cleaned();
}

std::optional<PathParts> canonicalOf(PathParts const& path) {
    std::error_code error;
    auto const location = locationOf(absoluteOf(path));
    if (!location) return std::nullopt;
    fs::path const canonical = fs::weakly_canonical(*location, error);
    if (error) return std::nullopt;
    return PathParts::parse(textOf(canonical));
}

PathParts localPathOf(PathParts const& path) {
    if (!isThisComputer(path.computer)) return {};
    QString folder = sharedFolder(path.share);
    if (folder.isEmpty()) folder = sharedDrive(path.share);
    if (folder.isEmpty()) return {};
    PathParts local = PathParts::parse(folder);
    local.names.append(path.cleaned().names);
    return local;
}

bool isHidden(fs::path const& location) {
    return hasAttribute(location, FILE_ATTRIBUTE_HIDDEN);
}

bool mayRead(fs::path const& location) {
    return mayOpen(location, GENERIC_READ);
}

bool mayWrite(fs::path const& location) {
    bool const folder = hasAttribute(location, FILE_ATTRIBUTE_DIRECTORY);
    if (!folder && hasAttribute(location, FILE_ATTRIBUTE_READONLY)) return false;
    return mayOpen(location, folder ? FILE_ADD_FILE : GENERIC_WRITE);
}

bool isLink(fs::path const& location) {
    return hasAttribute(location, FILE_ATTRIBUTE_REPARSE_POINT);
}

std::error_code createNewFile(fs::path const& location) {
    HANDLE const file = CreateFileW(location.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return {static_cast<int>(GetLastError()), std::system_category()};
    }
    CloseHandle(file);
    return {};
}

}  // namespace velk::core
