#include "module/module_attachment.h"

#include <windows.h>

namespace velk::adapter {

// The loader calls the entry point.
ModuleAttachment::ModuleAttachment() = default;
ModuleAttachment::~ModuleAttachment() = default;

// The system ends the other threads of a process that ends.
void detachWhenProcessEnds(ApplicationStage /*stage*/) {}

void stayLoaded() noexcept {
    constexpr DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN;
    HMODULE module = nullptr;
    GetModuleHandleExW(flags, reinterpret_cast<LPCWSTR>(&stayLoaded), &module);
}

}  // namespace velk::adapter
