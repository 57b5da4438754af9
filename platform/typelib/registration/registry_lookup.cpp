// Registered libraries found by identifier, version and language.

#include <algorithm>
#include <optional>

#include "platform/typelib/loading/library_source.h"
#include "platform/typelib/registration/registry_key.h"
#include "platform/typelib/registration/registry_layout.h"
#include "winbase.h"

namespace velk::typelib {
namespace {

struct Version {
    unsigned major = 0;
    unsigned minor = 0;
    std::u16string name;
};

std::optional<unsigned> hexadecimal(std::u16string_view text) {
    if (text.empty() || text.size() > 8) return std::nullopt;
    unsigned value = 0;
    for (char16_t const c : text) {
        unsigned digit = 0;
        if (c >= u'0' && c <= u'9') {
            digit = c - u'0';
        } else if (c >= u'a' && c <= u'f') {
            digit = c - u'a' + 10;
        } else if (c >= u'A' && c <= u'F') {
            digit = c - u'A' + 10;
        } else {
            return std::nullopt;
        }
        value = value << 4 | digit;
    }
    return value;
}

std::optional<Version> parseVersion(std::u16string const& name) {
    std::size_t const dot = name.find(u'.');
    if (dot == std::u16string::npos) return std::nullopt;
    auto const major = hexadecimal(std::u16string_view(name).substr(0, dot));
    auto const minor = hexadecimal(std::u16string_view(name).substr(dot + 1));
    if (!major || !minor) return std::nullopt;
    return Version{*major, *minor, name};
}

// Both numbers with this value ask for whatever version there is.
constexpr WORD anyVersion = 0xffff;

// Versions that may stand in for the one asked for, the best one first: that
// very version, then the newest of the same major version that is no older.
std::vector<Version> fittingVersions(RegistryKey const& library, WORD major, WORD minor) {
    bool const any = major == anyVersion && minor == anyVersion;
    std::vector<Version> versions;
    for (auto const& name : library.subKeys()) {
        auto const version = parseVersion(name);
        if (!version) continue;
        if (any || (version->major == major && version->minor >= minor)) {
            versions.push_back(*version);
        }
    }
    auto const rank = [&](Version const& version) {
        bool const exact = version.major == major && version.minor == minor;
        return std::tuple(exact, version.major, version.minor);
    };
    std::sort(versions.begin(), versions.end(),
              [&](auto const& a, auto const& b) { return rank(a) > rank(b); });
    return versions;
}

LCID concrete(LCID lcid) {
    if (lcid == LOCALE_USER_DEFAULT) return GetUserDefaultLCID();
    if (lcid == LOCALE_SYSTEM_DEFAULT) return GetSystemDefaultLCID();
    return lcid;
}

// The language asked for, its primary language, the neutral one, those of the
// user and the system; at last whatever the library is there in, because a
// library in a foreign language still has the same members.
std::vector<std::u16string> fittingLanguages(RegistryKey const& version, LCID lcid) {
    LCID const exact = concrete(lcid);
    std::vector<std::u16string> names;
    for (LCID const candidate : {exact, static_cast<LCID>(PRIMARYLANGID(exact)), LCID{0},
                                 GetUserDefaultLCID(), GetSystemDefaultLCID()}) {
        names.push_back(hexadecimalText(candidate));
    }
    for (auto const& name : version.subKeys()) {
        if (hexadecimal(name)) names.push_back(name);
    }
    return names;
}

std::optional<std::u16string> pathBelow(RegistryKey const& version, std::u16string const& lcid) {
    for (SYSKIND const system : {SYS_WIN64, SYS_WIN32}) {
        auto const key = RegistryKey::open(version.get(), lcid + u"\\" + systemText(system));
        auto path = key.text();
        if (path && !path->empty()) return path;
    }
    return std::nullopt;
}

std::u16string registeredPath(REFGUID id, WORD major, WORD minor, LCID lcid) {
    auto const library = RegistryKey::open(HKEY_CLASSES_ROOT, libraryKeyName(id));
    for (auto const& version : fittingVersions(library, major, minor)) {
        auto const key = RegistryKey::open(library.get(), version.name);
        for (auto const& language : fittingLanguages(key, lcid)) {
            if (auto path = pathBelow(key, language)) return *path;
        }
    }
    fail(TYPE_E_LIBNOTREGISTERED);
}

}  // namespace

Reference<TypeLibrary> loadRegisteredLibrary(REFGUID id, WORD major, WORD minor, LCID lcid) {
    try {
        auto const path = registeredPath(id, major, minor, lcid);
        // The folder that is current has no say in what a library is.
        require(isAbsolutePath(path), TYPE_E_CANTLOADLIBRARY);
        return loadLibraryFile(path);
    } catch (platform::Failure const&) {
        // A system's own registration goes first, and its absence does no harm.
        if (id != standardTypesId) throw;
    }
    return standardTypes();
}

}  // namespace velk::typelib

HRESULT LoadRegTypeLib(REFGUID id, WORD major, WORD minor, LCID lcid, ITypeLib** library) {
    using namespace velk::typelib;
    if (!library) return E_INVALIDARG;
    *library = nullptr;
    return guarded([&] { *library = loadRegisteredLibrary(id, major, minor, lcid).release(); });
}
