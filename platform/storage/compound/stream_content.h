/// The bytes of one stream.
#pragma once

#include <variant>
#include <vector>

#include "platform/storage/compound/mini_store.h"

namespace velk::platform::storage {

/// Keeps a stream where its size asks for: among the small ones below 4096
/// bytes, in sectors of its own from there on. Every member fails with a
/// Failure; reading and writing stay within the stream.
class StreamContent {
  public:
    StreamContent(SectorStore& store, MiniStore& small, SectorId first, std::uint64_t size);

    std::uint64_t size() const noexcept { return size_; }
    /// Where the entry of the stream has it begin.
    SectorId first() const noexcept;

    void read(std::uint64_t offset, MutableBytes target);
    void write(std::uint64_t offset, Bytes source);
    /// What is added is zero.
    void resize(std::uint64_t size);

  private:
    using SmallSectors = std::vector<SectorId>;

    void resizeSmall(SmallSectors& sectors, std::uint64_t size);
    void resizeBig(SectorChain& chain, std::uint64_t size);
    void moveTo(std::uint64_t size);
    void giveUp();

    SectorStore& store_;
    MiniStore& small_;
    std::uint64_t size_;
    std::variant<SmallSectors, SectorChain> place_;
};

}  // namespace velk::platform::storage
