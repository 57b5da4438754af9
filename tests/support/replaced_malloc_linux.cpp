// The C heap of the whole process, with a word of the test's own in it. The
// operators new and delete end here too.

#include <cerrno>
#include <cstddef>

#include "support/allocation_turn.h"

// The same functions under the names that the system's own library keeps.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);
}

namespace {

template <typename Allocate>
void* allocated(Allocate allocate) {
    void* const block = velk::test::isAllocationToFail() ? nullptr : allocate();
    if (block == nullptr) {
        errno = ENOMEM;
    } else {
        velk::test::countBlocks(1);
    }
    return block;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
    return allocated([&] { return __libc_malloc(size); });
}

void free(void* block);

void* calloc(std::size_t count, std::size_t size) {
    return allocated([&] { return __libc_calloc(count, size); });
}

void* realloc(void* block, std::size_t size) {
    if (block == nullptr) return malloc(size);
    if (size == 0) {
        free(block);
        return nullptr;
    }
    return velk::test::isAllocationToFail() ? nullptr : __libc_realloc(block, size);
}

void free(void* block) {
    if (block != nullptr) velk::test::countBlocks(-1);
    __libc_free(block);
}
}
