#include "platform/system/module_references.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <mutex>
#include <string_view>
#include <utility>

#include <dlfcn.h>
#include <link.h>
#include <winbase.h>

#include "platform/system/attached_modules.h"
#include "platform/system/elf_file.h"
#include "platform/system/immortal.h"
#include "platform/system/loader_handle.h"
#include "platform/system/loader_names.h"
#include "platform/system/regular_file.h"
#include "platform/system/utf16.h"

namespace velk::platform {
namespace {

/// The references that the layer's callers hold, one loader's handle each.
class References {
  public:
    void add(HMODULE module, LoaderHandle handle) {
        LoaderHandles made;
        made.push_front(std::move(handle));
        std::lock_guard const guard(lock_);
        auto& held = handles_[module];
        held.splice_after(held.before_begin(), made);
    }

    /// One reference, or nothing when there is none.
    LoaderHandles take(HMODULE module) noexcept {
        LoaderHandles taken;
        std::lock_guard const guard(lock_);
        auto const found = handles_.find(module);
        if (found == handles_.end()) return taken;
        taken.splice_after(taken.before_begin(), found->second, found->second.before_begin());
        if (found->second.empty()) handles_.erase(found);
        return taken;
    }

  private:
    std::mutex lock_;
    std::map<HMODULE, LoaderHandles> handles_;
};

References& references() noexcept {
    static Immortal<References> all;
    return *all;
}

/// Whether the dynamic loader's words tell of a lack of memory. It may lack the
/// memory for words at all.
bool tellsOfNoMemory(char const* text) {
    if (text == nullptr) return true;
    std::string_view const words(text);
    for (auto const* phrase : {"out of memory", ": cannot create ", ": cannot allocate "}) {
        if (words.find(phrase) != words.npos) return true;
    }
    return words.find(std::strerror(ENOMEM)) != words.npos;
}

/// Opens an object that is loaded already, which adds a reference to it.
LoaderHandle reopen(LoadedObject const& object, int flags = 0) {
    auto const name = object.isProgram ? std::string() : loaderNameOf(object.loaderName);
    if (!name) return nullptr;
    LoaderHandle handle(
        dlopen(object.isProgram ? nullptr : name->c_str(), RTLD_LAZY | RTLD_NOLOAD | flags));
    // It may be gone since; that has no words.
    char const* const text = handle == nullptr ? dlerror() : nullptr;
    if (text != nullptr && tellsOfNoMemory(text)) throw std::bad_alloc();
    return handle;
}

std::optional<LoadedObject> layerObject() {
    return loadedObjectAround(reinterpret_cast<void const*>(&references));
}

/// The names under which programs know the libraries that the layer stands for.
bool namesTheLayer(std::u16string_view name) {
    constexpr std::u16string_view extension = u".dll";
    if (name.size() > extension.size() &&
        equalNoAsciiCase(name.substr(name.size() - extension.size()), extension)) {
        name.remove_suffix(extension.size());
    }
    for (auto const* own : {u"ole32", u"oleaut32", u"advapi32", u"kernel32"}) {
        if (equalNoAsciiCase(name, own)) return true;
    }
    return false;
}

/// The published error number of what opening a file met.
DWORD errorOfOpening(int error) {
    switch (error) {
        case ENOENT:
        case ENOTDIR:
        case ELOOP:
            return ERROR_MOD_NOT_FOUND;
        case EACCES:
        case EPERM:
            return ERROR_ACCESS_DENIED;
        case ENAMETOOLONG:
            return ERROR_FILENAME_EXCED_RANGE;
        case EMFILE:
        case ENFILE:
            return ERROR_TOO_MANY_OPEN_FILES;
        case ENOMEM:
            return ERROR_NOT_ENOUGH_MEMORY;
        default:
            return ERROR_BAD_EXE_FORMAT;
    }
}

/// The published error number for what the dynamic loader refused, by its name
/// for it. The loader has no numbers, only words.
DWORD errorOfRefusal(std::string const& name) {
    char const* const text = dlerror();
    if (tellsOfNoMemory(text)) return ERROR_NOT_ENOUGH_MEMORY;
    std::string_view const words(text);
    if (words.find("undefined symbol") != words.npos) return ERROR_PROC_NOT_FOUND;
    // Else it is another module that this one needs.
    bool const isThisFile = name.find('/') != name.npos && words.starts_with(name + ": ");
    if (!isThisFile) return ERROR_MOD_NOT_FOUND;
    // Without memory the loader takes a file for missing that is there.
    return words.starts_with(name + ": cannot open") ? ERROR_NOT_ENOUGH_MEMORY
                                                     : ERROR_BAD_EXE_FORMAT;
}

/// Loads by the dynamic loader's own name for a module. ERROR_SUCCESS, or the
/// reason of a null handle.
DWORD loadNamed(std::string const& name, LoaderHandle& handle) {
    handle.reset(dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL));
    return handle != nullptr ? ERROR_SUCCESS : errorOfRefusal(name);
}

/// Loads the very file of a path, or nothing. The loader opens it by its name
/// once more, or the module would not know its own place; so the name is looked
/// at before and after.
DWORD loadFile(std::string const& path, LoaderHandle& handle) {
    RegularFile const file(path);
    if (!file.isOpen()) return errorOfOpening(file.error());
    if (!isWholeSharedObject(file)) return ERROR_BAD_EXE_FORMAT;
    auto const name = loaderNameOf(path);
    if (!name) return ERROR_BAD_PATHNAME;
    DWORD const error = loadNamed(*name, handle);
    return error == ERROR_SUCCESS && !file.isAt(path) ? ERROR_BAD_EXE_FORMAT : error;
}

DWORD load(std::string const& name, LoaderHandle& handle) {
    // The dynamic loader takes an empty name for the program.
    if (name.empty()) return ERROR_MOD_NOT_FOUND;
    // It also looks for a bare name, along its own search path.
    if (name.find('/') == name.npos) return loadNamed(name, handle);
    // The loader remembers the path as given, and it must stay right when the
    // current folder changes.
    return loadFile(std::filesystem::absolute(name).string(), handle);
}

}  // namespace

std::optional<LoadedObject> findModule(LPCWSTR name) {
    if (name == nullptr) return programObject();
    if (namesTheLayer(name)) return layerObject();
    auto const file = toFileName(name);
    return file ? loadedObjectNamed(*file) : std::nullopt;
}

HMODULE loadModule(LPCWSTR name) {
    if (namesTheLayer(name)) return layerObject().value().handle;
    LoaderHandle handle;
    auto const file = toFileName(name);
    DWORD const error = file ? load(*file, handle) : DWORD{ERROR_MOD_NOT_FOUND};
    link_map* map = nullptr;
    if (error == ERROR_SUCCESS) dlinfo(handle.get(), RTLD_DI_LINKMAP, &map);
    auto const object = map != nullptr ? loadedObjectAround(map->l_ld) : std::nullopt;
    if (!object) {
        SetLastError(error != ERROR_SUCCESS ? error : DWORD{ERROR_MOD_NOT_FOUND});
        return nullptr;
    }
    references().add(object->handle, std::move(handle));
    return object->handle;
}

bool holdModule(LoadedObject const& object, bool forEver) {
    auto handle = reopen(object, forEver ? RTLD_NODELETE : 0);
    if (handle == nullptr) return false;
    if (!forEver) references().add(object.handle, std::move(handle));
    return true;
}

bool releaseModule(HMODULE module) {
    if (auto taken = references().take(module); !taken.empty()) {
        closeAfterEntries(module, std::move(taken));
        return true;
    }
    // Loaded without us: its references are not ours to give back.
    return loadedObject(module).has_value();
}

void* moduleSymbol(HMODULE module, char const* name) {
    auto const object = loadedObject(module);
    auto const handle = object ? reopen(*object) : nullptr;
    if (handle == nullptr) return nullptr;
    void* const symbol = dlsym(handle.get(), name);
    if (symbol == nullptr && tellsOfNoMemory(dlerror())) throw std::bad_alloc();
    // The loader also looks into what the module depends on.
    auto const owner = symbol != nullptr ? loadedObjectAround(symbol) : std::nullopt;
    return owner && owner->handle == module ? symbol : nullptr;
}

}  // namespace velk::platform
