// The library stays once it is loaded, and with it the libraries that it
// stands on: modules come and go, but both leave work behind for the ends of
// threads and of the process. A linker option does the same on Linux.

#include <windows.h>

namespace {

bool stayLoaded() noexcept {
    static int const addressInLibrary = 0;
    constexpr DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN;
    HMODULE library = nullptr;
    return GetModuleHandleExW(flags, reinterpret_cast<LPCWSTR>(&addressInLibrary), &library);
}

[[maybe_unused]] bool const stays = stayLoaded();

}  // namespace
