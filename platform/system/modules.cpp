/// The published functions about modules.
#include <algorithm>
#include <new>

#include <winbase.h>

#include "platform/system/data_modules.h"
#include "platform/system/module_references.h"
#include "platform/system/utf16.h"

using namespace velk::platform;

namespace {

/// Sets the last error and gives the null of the caller's result.
std::nullptr_t failWith(DWORD error) {
    SetLastError(error);
    return nullptr;
}

/// Runs `work`; what it throws is a lack of memory, and becomes `failure`.
template <typename Work, typename Result>
Result guarded(Result failure, Work work) noexcept {
    try {
        return work();
    } catch (...) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return failure;
    }
}

std::string absolutePathOf(HMODULE module) {
    if (module == nullptr) return programObject().path;
    if (auto const data = dataModule(module)) return data->path;
    auto const object = loadedObject(module);
    return object ? object->path : std::string();
}

HMODULE loadAsData(LPCWSTR path) {
    auto const file = toFileName(path);
    if (!file) return failWith(ERROR_MOD_NOT_FOUND);
    HMODULE const module = openDataModule(*file);
    return module != nullptr ? module : failWith(ERROR_BAD_EXE_FORMAT);
}

}  // namespace

HMODULE LoadLibraryW(LPCWSTR path) {
    return LoadLibraryExW(path, nullptr, 0);
}

HMODULE LoadLibraryExW(LPCWSTR path, HANDLE file, DWORD flags) {
    constexpr DWORD known = LOAD_LIBRARY_AS_DATAFILE | LOAD_WITH_ALTERED_SEARCH_PATH;
    if (path == nullptr || file != nullptr || (flags & ~known) != 0) {
        return failWith(ERROR_INVALID_PARAMETER);
    }
    return guarded<>(HMODULE{}, [&] {
        return (flags & LOAD_LIBRARY_AS_DATAFILE) != 0 ? loadAsData(path) : loadModule(path);
    });
}

BOOL FreeLibrary(HMODULE module) {
    return guarded(BOOL{FALSE}, [&]() -> BOOL {
        if (module == nullptr) {
            SetLastError(ERROR_INVALID_HANDLE);
            return FALSE;
        }
        if (closeDataModule(module) || releaseModule(module)) return TRUE;
        SetLastError(ERROR_MOD_NOT_FOUND);
        return FALSE;
    });
}

HMODULE GetModuleHandleW(LPCWSTR name) {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, name, &module);
    return module;
}

BOOL GetModuleHandleExW(DWORD flags, LPCWSTR nameOrAddress, HMODULE* module) {
    constexpr DWORD pin = GET_MODULE_HANDLE_EX_FLAG_PIN;
    constexpr DWORD unchanged = GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    constexpr DWORD fromAddress = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS;
    if (module == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    *module = nullptr;
    bool const contradicts = (flags & pin) != 0 && (flags & unchanged) != 0;
    bool const nothingToFind = (flags & fromAddress) != 0 && nameOrAddress == nullptr;
    if ((flags & ~(pin | unchanged | fromAddress)) != 0 || contradicts || nothingToFind) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    return guarded(BOOL{FALSE}, [&]() -> BOOL {
        auto const object = (flags & fromAddress) != 0 ? loadedObjectAround(nameOrAddress)
                                                       : findModule(nameOrAddress);
        bool const held =
            object && ((flags & unchanged) != 0 || holdModule(*object, (flags & pin) != 0));
        if (!held) {
            SetLastError(ERROR_MOD_NOT_FOUND);
            return FALSE;
        }
        *module = object->handle;
        return TRUE;
    });
}

DWORD GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD capacity) {
    return guarded(DWORD{0}, [&]() -> DWORD {
        std::u16string const full = toUtf16(absolutePathOf(module));
        if (full.empty()) {
            SetLastError(ERROR_MOD_NOT_FOUND);
            return 0;
        }
        if (path == nullptr || capacity == 0) {
            SetLastError(ERROR_INSUFFICIENT_BUFFER);
            return 0;
        }
        bool const fits = full.size() < capacity;
        std::size_t const length = std::min<std::size_t>(full.size(), capacity - 1);
        std::copy_n(full.begin(), length, path);
        path[length] = 0;
        SetLastError(fits ? ERROR_SUCCESS : ERROR_INSUFFICIENT_BUFFER);
        return fits ? static_cast<DWORD>(length) : capacity;
    });
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
    return guarded(FARPROC{}, [&]() -> FARPROC {
        // Numbers in place of names mean ordinals, which shared objects lack.
        if ((reinterpret_cast<ULONG_PTR>(name) >> 16) == 0) return failWith(ERROR_PROC_NOT_FOUND);
        HMODULE const owner = module != nullptr ? module : programObject().handle;
        if (void* const symbol = moduleSymbol(owner, name)) {
            return reinterpret_cast<FARPROC>(symbol);
        }
        return failWith(loadedObject(owner) ? ERROR_PROC_NOT_FOUND : ERROR_MOD_NOT_FOUND);
    });
}
