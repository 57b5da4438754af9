#include "module/type_library.h"

#include <cstdio>
#include <cstring>
#include <optional>

#include "com/module.h"

namespace velk::adapter {
namespace {

using Text = std::basic_string<OLECHAR>;

// The operations for one user, which are younger than the library that has
// them and are therefore looked up when they are needed.
using RegisterForUser = HRESULT(STDAPICALLTYPE*)(ITypeLib*, LPOLESTR, LPOLESTR);
using UnregisterForUser = HRESULT(STDAPICALLTYPE*)(REFGUID, WORD, WORD, LCID, SYSKIND);

/// A function of the automation library; null when this system's has none.
template <typename Function>
Function findAutomationFunction(char const* name) {
    HMODULE const automation = GetModuleHandleW(OLESTR("OLEAUT32.DLL"));
    if (!automation) return nullptr;
    // Through a plain function type: the two differ in all but their address.
    return reinterpret_cast<Function>(
        reinterpret_cast<void (*)()>(GetProcAddress(automation, name)));
}

/// The folder of the library's help file; none when it has no help file.
std::optional<Text> helpFolder(ITypeLib& library) {
    com::Bstr file;
    com::throwIfFailed(library.GetDocumentation(-1, nullptr, nullptr, nullptr, file.put()),
                       "reading the type library's description");
    Text folder(com::viewBstr(file).substr(0, MAX_PATH));
    if (folder.empty()) return std::nullopt;
    std::size_t const last = folder.find_last_of(OLESTR("\\/:"));
    folder.resize(last == Text::npos ? 0 : last + 1);
    return folder;
}

/// Whether the library's language and system stand in the hive that is meant.
bool isRegistered(TLIBATTR const& about, bool perUser) {
    constexpr int guidCapacity = 39;
    OLECHAR id[guidCapacity];
    StringFromGUID2(about.guid, id, guidCapacity);
    char numbers[32];
    std::snprintf(numbers, sizeof numbers, "\\%x.%x\\%x", unsigned{about.wMajorVerNum},
                  unsigned{about.wMinorVerNum}, static_cast<unsigned>(about.lcid));
    Text const key =
        OLESTR("Software\\Classes\\TypeLib\\") + Text(id) + Text(numbers, std::strchr(numbers, 0));
    com::RegistryKey open;
    return RegOpenKeyExW(perUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_READ,
                         open.put()) != ERROR_FILE_NOT_FOUND;
}

}  // namespace

Text withLibraryExtension(Text path) {
    std::size_t const folderEnd = path.find_last_of(OLESTR("\\/"));
    std::size_t const dot = path.find_last_of(OLESTR('.'));
    bool const hasExtension = dot != Text::npos && (folderEnd == Text::npos || dot > folderEnd);
    if (hasExtension) path.resize(dot);
    path += OLESTR(".tlb");
    if (path.size() >= MAX_PATH) com::throwIfFailed(E_FAIL, "the type library's path is too long");
    return path;
}

LoadedTypeLibrary loadTypeLibrary() {
    LoadedTypeLibrary loaded;
    Text path = com::modulePath(com::moduleHandle());
    if (FAILED(LoadTypeLib(path.c_str(), loaded.library.put()))) {
        path = withLibraryExtension(std::move(path));
        com::throwIfFailed(LoadTypeLib(path.c_str(), loaded.library.put()),
                           "loading the type library");
    }
    loaded.path = com::makeBstr(path);
    return loaded;
}

HRESULT registerTypeLibrary(bool perUser) {
    LoadedTypeLibrary loaded = loadTypeLibrary();
    std::optional<Text> help = helpFolder(*loaded.library);
    OLECHAR* const helpText = help ? help->data() : nullptr;
    if (perUser) {
        if (auto* forUser = findAutomationFunction<RegisterForUser>("RegisterTypeLibForUser")) {
            return com::throwIfFailed(forUser(loaded.library.get(), loaded.path.get(), helpText),
                                      "registering the type library for the user");
        }
    }
    return com::throwIfFailed(RegisterTypeLib(loaded.library.get(), loaded.path.get(), helpText),
                              "registering the type library");
}

HRESULT unregisterTypeLibrary(bool perUser) {
    LoadedTypeLibrary const loaded = loadTypeLibrary();
    com::LibraryAttributes attributes(loaded.library.get());
    com::throwIfFailed(loaded.library->GetLibAttr(attributes.put()),
                       "reading the type library's attributes");
    auto const& about = *attributes.get();
    auto* const forUser =
        perUser ? findAutomationFunction<UnregisterForUser>("UnRegisterTypeLibForUser") : nullptr;
    auto* const unregister = forUser != nullptr ? forUser : &UnRegisterTypeLib;
    HRESULT const result =
        unregister(about.guid, about.wMajorVerNum, about.wMinorVerNum, about.lcid, about.syskind);
    // The systems have no code of their own for what was never there.
    if (FAILED(result) && !isRegistered(about, perUser)) return S_OK;
    return com::throwIfFailed(result, "unregistering the type library");
}

}  // namespace velk::adapter
