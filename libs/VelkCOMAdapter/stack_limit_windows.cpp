#include <windows.h>

#include "stack_limit.h"

namespace velk::adapter {

std::uintptr_t lowestStackAddress() noexcept {
    // The whole reservation around a local, whose lowest part the system keeps.
    MEMORY_BASIC_INFORMATION region{};
    char here = 0;
    if (VirtualQuery(&here, &region, sizeof region) == 0) return 0;
    return reinterpret_cast<std::uintptr_t>(region.AllocationBase);
}

}  // namespace velk::adapter
