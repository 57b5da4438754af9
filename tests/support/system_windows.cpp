#include <windows.h>

#include "support/expected_difference.h"

namespace velk::test {

// Wine announces itself by an export that Windows does not have.
System runningSystem() noexcept {
    HMODULE const ntdll = GetModuleHandleW(L"ntdll.dll");
    bool const isWine = ntdll && GetProcAddress(ntdll, "wine_get_version");
    return isWine ? System::wine : System::windows;
}

}  // namespace velk::test
