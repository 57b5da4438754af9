#include <cstdlib>

#include <windows.h>

#include "support/expected_difference.h"

namespace velk::test {

// Wine announces itself by an export that Windows does not have.
System runningSystem() noexcept {
    HMODULE const ntdll = GetModuleHandleW(L"ntdll.dll");
    auto const version = reinterpret_cast<char const* (*)()>(
        reinterpret_cast<void*>(GetProcAddress(ntdll, "wine_get_version")));
    if (version == nullptr) return System::windows;
    return std::atoi(version()) < 10 ? System::wine8 : System::wine10;
}

}  // namespace velk::test
