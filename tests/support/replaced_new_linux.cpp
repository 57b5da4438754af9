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

// The sanitizer's own would hand out blocks that the delete below cannot take.
void* operator new(std::size_t size, std::nothrow_t const&) noexcept {
    try {
        return operator new(size);
    } catch (std::bad_alloc const&) {
        return nullptr;
    }
}

void operator delete(void* block) noexcept {
    if (block != nullptr) velk::test::countBlocks(-1);
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}
