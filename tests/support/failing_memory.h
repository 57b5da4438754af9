/// A heap that can be told to run out of memory.
#pragma once

namespace velk::test {

/// Has the allocation fail before which there are `before` others, counted
/// from now on, and all that come after it when `isLasting`.
void failAllocations(long before, bool isLasting);

/// No allocation fails any more. Whether one did.
bool endFailingAllocations();

/// Blocks of memory that were allocated and not given back yet.
long liveBlocks();

}  // namespace velk::test
