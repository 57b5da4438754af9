/// Code that runs on stacks of chosen kinds and sizes.
#pragma once

#include <cstddef>
#include <functional>

namespace velk::test {

/// Whether small stacks, and stacks that a program switches to by itself, work
/// in this build.
bool canChooseStacks();

/// Runs `action` on a new thread with a stack of `size` bytes.
void runOnThread(std::size_t size, std::function<void()> const& action);

/// Runs `action` on this thread, on a stack of `size` bytes that it switches
/// to: a coroutine or fiber. On Linux memory of `above` bytes stands above it,
/// with nothing between.
void runOnOwnStack(std::size_t size, std::size_t above, std::function<void()> const& action);

}  // namespace velk::test
