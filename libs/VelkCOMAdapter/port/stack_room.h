/// How much stack is left.
#pragma once

#include <cstdint>

namespace velk::adapter {

/// Whether the calling thread has stack left for one more call across the
/// bridge, whatever the two sides do in it. What goes back and forth without
/// end is refused at this point instead of ending the process. Any thread.
bool stackHasRoom() noexcept;

/// Memory that a stack may grow through; empty when nobody knows it.
struct StackRange {
    /// The lowest address that may be used.
    std::uintptr_t lowest = 0;
    /// Behind the highest one.
    std::uintptr_t end = 0;
    /// False when other memory may stand above the stack, or below it, and be
    /// taken for a part of it.
    bool isExact = true;

    bool holds(std::uintptr_t address) const noexcept { return address >= lowest && address < end; }
};

/// The stack that the system gave the calling thread, when that stays the same
/// for as long as the thread lives. Empty where it cannot be told.
StackRange ownStack() noexcept;

/// The stack that holds `address`, whoever made it, for a thread that has left
/// its own: a fiber, a coroutine, a signal handler. Empty when it cannot be
/// told.
StackRange stackAround(std::uintptr_t address) noexcept;

/// The same where looking is slow: what was seen from about there before, when
/// nothing speaks against it.
StackRange rememberedStackAround(std::uintptr_t address) noexcept;

}  // namespace velk::adapter
