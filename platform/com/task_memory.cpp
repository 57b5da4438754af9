/// Memory that one module may allocate and another free.
#include <cstdlib>

#include <objbase.h>

#include "platform/system/live_counts.h"

namespace {

using velk::platform::countLive;

// No machine has this much. Refused here, because allocators that look for
// errors end the program at such a request instead of returning null.
constexpr SIZE_T absurdSize = SIZE_T{1} << 40;

}  // namespace

LPVOID CoTaskMemAlloc(SIZE_T size) {
    if (size >= absurdSize) return nullptr;
    // A block of no bytes is a block all the same, with an address of its own.
    void* const block = std::malloc(size == 0 ? 1 : size);
    if (block != nullptr) countLive(VELK_LIVE_TASK_MEMORY, 1);
    return block;
}

void CoTaskMemFree(LPVOID block) {
    if (block == nullptr) return;
    std::free(block);
    countLive(VELK_LIVE_TASK_MEMORY, -1);
}
