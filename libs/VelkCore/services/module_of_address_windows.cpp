#include <windows.h>

#include "services/module_of_address.h"

void const* velk::core::moduleOfAddress(void const* address) noexcept {
    // The system would take null for the program.
    if (!address) return nullptr;
    HMODULE module = nullptr;
    constexpr DWORD flags =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    return GetModuleHandleExW(flags, static_cast<LPCWSTR>(address), &module) ? module : nullptr;
}
