/// A run of bytes that is spread over linked sectors.
#pragma once

#include <vector>

#include "platform/storage/compound/sector_store.h"

namespace velk::platform::storage {

/// One chain of a file. Reads no more of the chain than is asked for. Every
/// member fails with a Failure; STG_E_DOCFILECORRUPT for a chain that
/// ends too early or runs in a circle.
class SectorChain {
  public:
    SectorChain(SectorStore& store, SectorId first) : store_(&store), first_(first) {}

    /// The first `most` sectors of a chain. What it goes on with need not be
    /// its own, and is neither changed nor given up.
    SectorChain(SectorStore& store, SectorId first, std::uint64_t most)
        : store_(&store), first_(most == 0 ? endOfChain : first), most_(most) {}

    /// The first sector, or endOfChain. Changes when that sector is written to.
    SectorId first() const noexcept { return first_; }

    /// How many sectors the whole chain has.
    std::size_t length();

    /// Both stay within the chain.
    void read(std::uint64_t offset, MutableBytes target);
    void write(std::uint64_t offset, Bytes source);

    /// Adds sectors full of zeros, or gives up the last ones.
    void resize(std::size_t sectors);

  private:
    /// Knows the sectors up to `index`; whether there are that many.
    bool reach(std::size_t index);
    SectorId sectorAt(std::size_t index);
    void follow(std::size_t index, SectorId sector);
    void writeSector(std::size_t index, std::size_t offset, Bytes source);

    static constexpr std::uint64_t noLimit = ~std::uint64_t{0};

    SectorStore* store_;
    SectorId first_;
    std::uint64_t most_ = noLimit;
    std::vector<SectorId> known_;
};

}  // namespace velk::platform::storage
