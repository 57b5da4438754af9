/// The small streams of a compound file, 64 bytes a sector.
#pragma once

#include <memory>
#include <set>
#include <vector>

#include "platform/storage/compound/sector_chain.h"

namespace velk::platform::storage {

/// The bytes that small streams share and the table that links their sectors.
/// Every member fails with a Failure.
class MiniStore {
  public:
    /// `container` is the first sector of the shared bytes, as the root entry
    /// has it, and `size` how many of them count: none, no container.
    MiniStore(SectorStore& store, SectorId container, std::uint64_t size);

    SectorId container() const noexcept { return bytes_.first(); }
    std::uint64_t containerSize() const noexcept { return size_; }

    /// The sectors of a chain. Fails when it is shorter than `bytes` bytes
    /// need; what comes after them is not looked at.
    std::vector<SectorId> chain(SectorId first, std::uint64_t bytes);

    void read(SectorId sector, std::size_t offset, MutableBytes target);
    void write(SectorId sector, std::size_t offset, Bytes source);
    SectorId allocate();
    void release(SectorId sector);
    void link(SectorId sector, SectorId next);

    /// Writes the changed parts of the table, and where it begins.
    void flush();

  private:
    static constexpr std::size_t pageEntries = 128;

    std::uint64_t sectorsOf(std::uint64_t bytes) const noexcept;
    std::vector<SectorId>& page(std::size_t index);
    SectorId next(SectorId sector);
    void failIfStreamsStandBehind();
    void enlarge();

    SectorStore& store_;
    SectorChain bytes_;
    SectorChain table_;
    std::uint64_t size_;
    std::size_t tableEntries_;
    std::unordered_map<std::size_t, std::vector<SectorId>> pages_;
    std::set<std::size_t> dirtyPages_;
    /// No sector before this one is free.
    SectorId searchFrom_ = 0;
};

}  // namespace velk::platform::storage
