#include "platform/storage/compound/stream_content.h"

#include <algorithm>

#include "platform/system/boundary.h"

namespace velk::platform::storage {
namespace {

/// Calls `each` for the parts of a range: the sector with number `index` from
/// `within` on, which are `part` bytes from `done` on in the range. Sectors that
/// stand one behind the other make one part.
template <typename Each>
void forEachRun(std::vector<SectorId> const& sectors, std::uint64_t offset, std::size_t count,
                Each each) {
    for (std::size_t done = 0; done < count;) {
        std::size_t const within = (offset + done) % miniSectorSize;
        auto index = static_cast<std::size_t>((offset + done) / miniSectorSize);
        SectorId const sector = sectors.at(index);
        std::size_t part = miniSectorSize - within;
        for (SectorId next = sector + 1; part < count - done && sectors.at(++index) == next;
             ++next) {
            part += miniSectorSize;
        }
        part = std::min(part, count - done);
        each(sector, within, done, part);
        done += part;
    }
}

}  // namespace

StreamContent::StreamContent(SectorStore& store, MiniStore& small, SectorId first,
                             std::uint64_t size)
    : store_(store), small_(small), size_(size) {
    if (size >= smallestBigStream) {
        require(size / store.sectorSize() <= store.sectorLimit(), STG_E_DOCFILECORRUPT);
        std::uint64_t const each = store.sectorSize();
        place_.emplace<SectorChain>(store, first, (size + each - 1) / each);
    } else if (size != 0) {
        place_ = small.chain(first, size);
    }
}

SectorId StreamContent::first() const noexcept {
    if (auto const* chain = std::get_if<SectorChain>(&place_)) return chain->first();
    auto const& sectors = std::get<SmallSectors>(place_);
    return sectors.empty() ? endOfChain : sectors.front();
}

void StreamContent::read(std::uint64_t offset, MutableBytes target) {
    if (auto* chain = std::get_if<SectorChain>(&place_)) {
        chain->read(offset, target);
        return;
    }
    forEachRun(std::get<SmallSectors>(place_), offset, target.size(),
               [&](SectorId sector, std::size_t within, std::size_t done, std::size_t part) {
                   small_.read(sector, within, target.subspan(done, part));
               });
}

void StreamContent::write(std::uint64_t offset, Bytes source) {
    if (auto* chain = std::get_if<SectorChain>(&place_)) {
        chain->write(offset, source);
        return;
    }
    forEachRun(std::get<SmallSectors>(place_), offset, source.size(),
               [&](SectorId sector, std::size_t within, std::size_t done, std::size_t part) {
                   small_.write(sector, within, source.subspan(done, part));
               });
}

void StreamContent::resize(std::uint64_t size) {
    if (size == size_) return;
    // The published limit of files whose sizes have 32 bits.
    require(store_.header().hasLargeSizes() || size <= 0x80000000, STG_E_MEDIUMFULL);
    bool const wasBig = std::holds_alternative<SectorChain>(place_);
    if (wasBig != (size >= smallestBigStream)) {
        moveTo(size);
    } else if (wasBig) {
        resizeBig(std::get<SectorChain>(place_), size);
    } else {
        resizeSmall(std::get<SmallSectors>(place_), size);
    }
    size_ = size;
}

void StreamContent::resizeSmall(SmallSectors& sectors, std::uint64_t size) {
    std::array<std::byte, miniSectorSize> const zeros{};
    std::size_t const needed =
        static_cast<std::size_t>((size + miniSectorSize - 1) / miniSectorSize);
    if (std::size_t const rest = size_ % miniSectorSize; size > size_ && rest != 0) {
        small_.write(sectors.back(), rest, Bytes(zeros).first(miniSectorSize - rest));
    }
    while (sectors.size() < needed) {
        SectorId const added = small_.allocate();
        try {
            small_.write(added, 0, zeros);
            if (!sectors.empty()) small_.link(sectors.back(), added);
            sectors.push_back(added);
        } catch (...) {
            small_.release(added);
            throw;
        }
    }
    if (sectors.size() == needed) return;
    for (std::size_t i = needed; i < sectors.size(); ++i) small_.release(sectors[i]);
    sectors.resize(needed);
    if (needed != 0) small_.link(sectors.back(), endOfChain);
}

void StreamContent::resizeBig(SectorChain& chain, std::uint64_t size) {
    std::size_t const each = store_.sectorSize();
    std::uint64_t const needed = (size + each - 1) / each;
    require(needed <= lastSectorId, STG_E_MEDIUMFULL);
    if (size > size_) {
        // A stream that is not all there cannot grow.
        require(chain.length() >= (size_ + each - 1) / each, STG_E_DOCFILECORRUPT);
        if (std::size_t const rest = size_ % each; rest != 0) {
            std::vector<std::byte> const zeros(each - rest);
            chain.write(size_, zeros);
        }
    }
    chain.resize(static_cast<std::size_t>(needed));
}

/// Between the two kinds of places there is never more to copy than 4096 bytes.
void StreamContent::moveTo(std::uint64_t size) {
    std::vector<std::byte> kept(static_cast<std::size_t>(std::min(size, size_)));
    read(0, kept);
    StreamContent moved(store_, small_, endOfChain, 0);
    if (size >= smallestBigStream) moved.place_.emplace<SectorChain>(store_, endOfChain);
    try {
        moved.resize(size);
        moved.write(0, kept);
    } catch (...) {
        moved.giveUp();
        throw;
    }
    giveUp();
    std::swap(place_, moved.place_);
}

void StreamContent::giveUp() {
    if (auto* chain = std::get_if<SectorChain>(&place_)) {
        chain->resize(0);
    } else {
        resizeSmall(std::get<SmallSectors>(place_), 0);
    }
}

}  // namespace velk::platform::storage
