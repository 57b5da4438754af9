#include "stack_room.h"

#include <cstdint>

#include "stack_limit.h"

namespace velk::adapter {
namespace {

// A quarter of the smallest usual stack, 1 MB.
constexpr std::uintptr_t needed = std::uintptr_t{256} * 1024;

thread_local constinit std::uintptr_t lowestAllowed = 0;

}  // namespace

bool stackHasRoom() noexcept {
    if (lowestAllowed == 0) lowestAllowed = lowestStackAddress() + needed;
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) > lowestAllowed;
}

}  // namespace velk::adapter
