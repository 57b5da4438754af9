/// What the replaced functions of the heap ask and tell. For one thread.
#pragma once

namespace velk::test {

/// Whether the allocation that is about to be made fails.
bool isAllocationToFail() noexcept;
void countBlocks(long change) noexcept;

}  // namespace velk::test
