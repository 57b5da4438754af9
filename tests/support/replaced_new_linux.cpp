// The operators new and delete, for builds in which a sanitizer has the C heap.

#include <cstdlib>
#include <new>

#include "support/allocation_turn.h"

void* operator new(std::size_t size) {
    void* const block =
        velk::test::isAllocationToFail() ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) throw std::bad_alloc();
    velk::test::countBlocks(1);
    return block;
}

void operator delete(void* block) noexcept {
    if (block != nullptr) velk::test::countBlocks(-1);
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}
