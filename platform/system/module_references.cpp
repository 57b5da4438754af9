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
#include <unistd.h>
#include <winbase.h>

#include "platform/system/attached_modules.h"
#include "platform/system/immortal.h"
#include "platform/system/loader_handle.h"
#include "platform/system/regular_file.h"
#include "platform/system/resource_section.h"
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
    char const* const name = object.isProgram ? nullptr : object.loaderName.c_str();
    LoaderHandle handle(dlopen(name, RTLD_LAZY | RTLD_NOLOAD | flags));
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

/// The published error number for a file that the dynamic loader refused.
DWORD errorOfRefusedFile(std::string const& path) {
    char const* const text = dlerror();
    if (tellsOfNoMemory(text)) return ERROR_NOT_ENOUGH_MEMORY;
    bool const symbolMissing = std::strstr(text, "undefined symbol") != nullptr;
    if (path.find('/') != std::string::npos) {
        if (access(path.c_str(), F_OK) != 0) return ERROR_MOD_NOT_FOUND;
        if (access(path.c_str(), R_OK) != 0) return ERROR_ACCESS_DENIED;
        if (!isSharedObjectFile(path)) return ERROR_BAD_EXE_FORMAT;
        // Without memory the loader takes a file for missing that is there.
        if (std::string_view(text).starts_with(path + ": cannot open")) {
            return ERROR_NOT_ENOUGH_MEMORY;
        }
    }
    return symbolMissing ? ERROR_PROC_NOT_FOUND : ERROR_MOD_NOT_FOUND;
}

}  // namespace

std::optional<LoadedObject> findModule(LPCWSTR name) {
    if (name == nullptr) return programObject();
    if (namesTheLayer(name)) return layerObject();
    return loadedObjectNamed(toBytes(name));
}

HMODULE loadModule(LPCWSTR name) {
    if (namesTheLayer(name)) return layerObject().value().handle;
    std::string path = toBytes(name);
    // The dynamic loader takes an empty name for the program.
    if (path.empty()) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    // The loader remembers the path as given, and it must stay right when the
    // current folder changes.
    if (path.find('/') != std::string::npos) {
        path = std::filesystem::absolute(path).string();
        // The dynamic loader would wait for the other end of a pipe.
        if (isOtherThanRegularFile(path)) {
            SetLastError(ERROR_BAD_EXE_FORMAT);
            return nullptr;
        }
    }
    LoaderHandle handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
    link_map* map = nullptr;
    if (handle != nullptr) dlinfo(handle.get(), RTLD_DI_LINKMAP, &map);
    auto const object = map != nullptr ? loadedObjectAround(map->l_ld) : std::nullopt;
    if (!object) {
        SetLastError(errorOfRefusedFile(path));
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
