/// Many short texts in little memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include <windows.h>

#include "large_memory.h"

namespace velk::adapter {

/// Texts that are only ever added and are freed together.
///
/// They lie one behind the other in large blocks, and a reference of 32 bits
/// finds one again: a stored text costs its characters and four bytes.
/// Reading is safe on many threads as long as nobody adds.
class NameStore {
  public:
    using Reference = std::uint32_t;

    /// Copies `text`. Throws std::bad_alloc, also when all references are in
    /// use; nothing is stored then.
    Reference add(std::basic_string_view<OLECHAR> text);

    /// The text behind a reference that `add` gave; valid as long as the store.
    std::basic_string_view<OLECHAR> at(Reference reference) const noexcept;

  private:
    // A reference is the block's index and the place in the block; places
    // count units of four bytes, and a full block is one large page.
    using Unit = std::uint32_t;
    static constexpr unsigned placeBits = 19;
    static constexpr std::size_t blockUnits = std::size_t{1} << placeBits;
    static constexpr std::size_t mostBlocks = std::size_t{1} << (32 - placeBits);
    static_assert(blockUnits * sizeof(Unit) == largePageBytes);
    // Most processes know few names: the first block is small.
    static constexpr std::size_t firstBlockUnits = 0x1000;
    // A text above this has a block of its own, so that at most an eighth of
    // a block is left unused at its end.
    static constexpr std::size_t largeUnits = blockUnits / 8;

    void addBlock(std::size_t units);
    void startBlock(std::size_t atLeast);

    std::vector<LargeArray<Unit>> blocks_;
    std::size_t current_ = 0;   // the block that texts go to
    std::size_t capacity_ = 0;  // units in that block
    std::size_t used_ = 0;      // units used in it
};

}  // namespace velk::adapter
