#include <windows.h>

#include "port/stack_room.h"

namespace velk::adapter {

// A thread that becomes a fiber changes what the system calls its stack.
StackRange ownStack() noexcept {
    return {};
}

StackRange stackAround(std::uintptr_t address) noexcept {
    ULONG_PTR lowest = 0;
    ULONG_PTR end = 0;
    GetCurrentThreadStackLimits(&lowest, &end);
    StackRange const current{lowest, end};
    if (current.holds(address)) return current;
    // A stack that the system was not told of: the reservation around it, as
    // far as its pages are used alike.
    MEMORY_BASIC_INFORMATION region{};
    if (VirtualQuery(reinterpret_cast<void const*>(address), &region, sizeof region) == 0) {
        return {};
    }
    return {reinterpret_cast<std::uintptr_t>(region.AllocationBase),
            reinterpret_cast<std::uintptr_t>(region.BaseAddress) + region.RegionSize, false};
}

StackRange rememberedStackAround(std::uintptr_t address) noexcept {
    return stackAround(address);
}

}  // namespace velk::adapter
