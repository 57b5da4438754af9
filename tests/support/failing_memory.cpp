#include "support/failing_memory.h"

#include "support/allocation_turn.h"

namespace velk::test {
namespace {

// Read by the functions of the heap, which run before and after main().
constinit long left = -1;
constinit bool isLastingFailure = false, hasFailed = false;
constinit long blocks = 0;

}  // namespace

void failAllocations(long before, bool isLasting) {
    hasFailed = false;
    isLastingFailure = isLasting;
    left = before;
}

bool endFailingAllocations() {
    left = -1;
    return hasFailed;
}

long liveBlocks() {
    return blocks;
}

bool isAllocationToFail() noexcept {
    if (left < 0) return false;
    if (left > 0) {
        --left;
        return false;
    }
    if (!isLastingFailure) left = -1;
    hasFailed = true;
    return true;
}

void countBlocks(long change) noexcept {
    blocks += change;
}

}  // namespace velk::test
