/// Memory for large tables that are read at random places.
#pragma once

#include <cstddef>
#include <memory>
#include <new>

namespace velk::adapter {

/// What the processor's address translation covers with one entry at best.
inline constexpr std::size_t largePageBytes = std::size_t{2} << 20;

/// What the processor fetches at once.
inline constexpr std::size_t cacheLineBytes = 64;

/// Tells the system that a block, aligned to large pages, is worth them: a
/// read at a random place of a large table then costs one miss less. Only
/// advice; without effect where the system has no such means.
void preferLargePages(void* memory, std::size_t bytes) noexcept;

struct LargeDelete {
    std::align_val_t alignment{1};

    template <typename Item>
    void operator()(Item* items) const noexcept {
        ::operator delete(items, alignment);
    }
};

/// An array of plain items whose bytes are not set; on large pages when it
/// fills one. Throws std::bad_alloc.
template <typename Item>
using LargeArray = std::unique_ptr<Item[], LargeDelete>;

template <typename Item>
LargeArray<Item> makeLargeArray(std::size_t count) {
    std::size_t const bytes = count * sizeof(Item);
    bool const isLarge = bytes >= largePageBytes;
    std::align_val_t const alignment{isLarge ? largePageBytes : cacheLineBytes};
    void* const memory = ::operator new(bytes, alignment);
    if (isLarge) preferLargePages(memory, bytes);
    return LargeArray<Item>(static_cast<Item*>(memory), LargeDelete{alignment});
}

}  // namespace velk::adapter
