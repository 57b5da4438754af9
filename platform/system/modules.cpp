/// The published functions about modules.
#include <algorithm>

#include "platform/system/boundary.h"
#include "platform/system/data_modules.h"
#include "platform/system/module_references.h"
#include "platform/system/utf16.h"

using namespace velk::platform;

namespace {

std::string absolutePathOf(HMODULE module) {
    if (module == nullptr) return programObject().path;
    if (auto const data = dataModule(module)) return data->path;
    auto const object = loadedObject(module);
    return object ? object->path : std::string();
}

HMODULE loadAsData(LPCWSTR path) {
    auto const file = toFileName(path);
    require(file.has_value(), ERROR_MOD_NOT_FOUND);
    HMODULE const module = openDataModule(*file);
    require(module != nullptr, ERROR_BAD_EXE_FORMAT);
    return module;
}

}  // namespace

HMODULE LoadLibraryW(LPCWSTR path) {
    return LoadLibraryExW(path, nullptr, 0);
}

HMODULE LoadLibraryExW(LPCWSTR path, HANDLE file, DWORD flags) {
    constexpr DWORD known = LOAD_LIBRARY_AS_DATAFILE | LOAD_WITH_ALTERED_SEARCH_PATH;
    return orLastError(HMODULE{}, [&] {
        require(path != nullptr && file == nullptr && (flags & ~known) == 0,
                ERROR_INVALID_PARAMETER);
        return (flags & LOAD_LIBRARY_AS_DATAFILE) != 0 ? loadAsData(path) : loadModule(path);
    });
}

BOOL FreeLibrary(HMODULE module) {
    return orLastError(FALSE, [&] {
        require(module != nullptr, ERROR_INVALID_HANDLE);
        require(closeDataModule(module) || releaseModule(module), ERROR_MOD_NOT_FOUND);
        return TRUE;
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
    bool const pins = (flags & pin) != 0, keepsCount = (flags & unchanged) != 0;
    bool const byAddress = (flags & fromAddress) != 0;
    return orLastError(FALSE, [&] {
        require(module != nullptr, ERROR_INVALID_PARAMETER);
        *module = nullptr;
        bool const isSense = (flags & ~(pin | unchanged | fromAddress)) == 0 &&
                             !(pins && keepsCount) && !(byAddress && nameOrAddress == nullptr);
        require(isSense, ERROR_INVALID_PARAMETER);
        auto const object =
            byAddress ? loadedObjectAround(nameOrAddress) : findModule(nameOrAddress);
        require(object && (keepsCount || holdModule(*object, pins)), ERROR_MOD_NOT_FOUND);
        *module = object->handle;
        return TRUE;
    });
}

DWORD GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD capacity) {
    return orLastError(DWORD{0}, [&] {
        std::u16string const full = toUtf16(absolutePathOf(module));
        require(!full.empty(), ERROR_MOD_NOT_FOUND);
        require(path != nullptr && capacity != 0, ERROR_INSUFFICIENT_BUFFER);
        bool const fits = full.size() < capacity;
        std::size_t const length = std::min<std::size_t>(full.size(), capacity - 1);
        std::copy_n(full.begin(), length, path);
        path[length] = 0;
        SetLastError(fits ? ERROR_SUCCESS : ERROR_INSUFFICIENT_BUFFER);
        return fits ? static_cast<DWORD>(length) : capacity;
    });
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
    return orLastError(FARPROC{}, [&] {
        // Numbers in place of names mean ordinals, which shared objects lack.
        require((reinterpret_cast<ULONG_PTR>(name) >> 16) != 0, ERROR_PROC_NOT_FOUND);
        HMODULE const owner = module != nullptr ? module : programObject().handle;
        void* const symbol = moduleSymbol(owner, name);
        require(symbol != nullptr,
                loadedObject(owner) ? ERROR_PROC_NOT_FOUND : ERROR_MOD_NOT_FOUND);
        return reinterpret_cast<FARPROC>(symbol);
    });
}
