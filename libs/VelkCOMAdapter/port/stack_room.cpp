#include "port/stack_room.h"

#include <algorithm>
#include <cstdint>

namespace velk::adapter {
namespace {

// What one more call has to have: a quarter of the smallest usual stack, 1 MB;
// of smaller ones, which their makers meant for less, a quarter as well.
constexpr std::uintptr_t mostNeeded = std::uintptr_t{256} * 1024;
constexpr std::uintptr_t neededPart = 4;
// Where the size of a stack is not known, it may be a small one.
constexpr std::uintptr_t mostNeededOfUnknown = std::uintptr_t{32} * 1024;

std::uintptr_t lowestAllowed(StackRange const& stack) noexcept {
    std::uintptr_t const most = stack.isExact ? mostNeeded : mostNeededOfUnknown;
    return stack.lowest + std::min(most, (stack.end - stack.lowest) / neededPart);
}

struct OwnStack {
    bool asked;
    StackRange range;
    std::uintptr_t allowed;
};
thread_local constinit OwnStack own{};

void askForOwn() noexcept {
    own.range = ownStack();
    own.allowed = lowestAllowed(own.range);
    own.asked = true;
}

// Better a call too many than none on stacks of a kind not known here.
bool hasRoom(StackRange const& stack, std::uintptr_t here) noexcept {
    return !stack.holds(here) || here > lowestAllowed(stack);
}

}  // namespace

bool stackHasRoom() noexcept {
    auto const here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    if (!own.asked) askForOwn();
    if (own.range.holds(here)) return here > own.allowed;
    return hasRoom(rememberedStackAround(here), here) || hasRoom(stackAround(here), here);
}

}  // namespace velk::adapter
