#include <dlfcn.h>

#include "services/module_of_address.h"

void const* velk::core::moduleOfAddress(void const* address) noexcept {
    Dl_info info{};
    return dladdr(address, &info) != 0 ? info.dli_fbase : nullptr;
}
