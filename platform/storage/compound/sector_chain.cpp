#include "platform/storage/compound/sector_chain.h"

#include <algorithm>
#include <limits>

#include "platform/system/boundary.h"

namespace velk::platform::storage {

bool SectorChain::reach(std::size_t index) {
    while (known_.size() <= index) {
        if (known_.size() >= most_) return false;
        SectorId const next = known_.empty() ? first_ : store_->next(known_.back());
        // One that the table marks free leads nowhere, but is in the chain.
        bool const isLast = next == freeSector && !known_.empty();
        if (next == endOfChain || isLast) return false;
        // No chain has more sectors than the file, unless it runs in a circle.
        require(next < store_->sectorLimit() && known_.size() < store_->sectorLimit(),
                STG_E_DOCFILECORRUPT);
        known_.push_back(next);
    }
    return true;
}

std::size_t SectorChain::length() {
    reach(std::numeric_limits<std::size_t>::max());
    return known_.size();
}

SectorId SectorChain::sectorAt(std::size_t index) {
    require(reach(index), STG_E_DOCFILECORRUPT);
    return known_[index];
}

void SectorChain::read(std::uint64_t offset, MutableBytes target) {
    std::size_t const size = store_->sectorSize();
    while (!target.empty()) {
        auto index = static_cast<std::size_t>(offset / size);
        std::size_t const within = offset % size;
        SectorId const start = sectorAt(index);
        // Sectors that stand one behind the other are read at once.
        std::size_t count = size - within;
        while (count < target.size() && sectorAt(++index) == start + (count + within) / size) {
            count += size;
        }
        count = std::min(count, target.size());
        store_->read(start, within, target.first(count));
        target = target.subspan(count);
        offset += count;
    }
}

void SectorChain::write(std::uint64_t offset, Bytes source) {
    std::size_t const size = store_->sectorSize();
    while (!source.empty()) {
        std::size_t const within = offset % size;
        std::size_t const count = std::min(size - within, source.size());
        writeSector(static_cast<std::size_t>(offset / size), within, source.first(count));
        source = source.subspan(count);
        offset += count;
    }
}

void SectorChain::writeSector(std::size_t index, std::size_t offset, Bytes source) {
    SectorId const former = sectorAt(index);
    if (store_->isFresh(former)) {
        store_->write(former, offset, source);
        return;
    }
    std::vector<std::byte> whole(store_->sectorSize());
    if (source.size() < whole.size()) store_->read(former, 0, whole);
    std::copy(source.begin(), source.end(), whole.begin() + static_cast<std::ptrdiff_t>(offset));
    SectorId next = store_->next(former);
    // The last one leads nowhere, whatever a damaged table says of it.
    if (index + 1 == most_ || next == freeSector) next = endOfChain;
    SectorId const place = store_->allocate();
    try {
        store_->write(place, 0, whole);
        store_->link(place, next);
        follow(index, place);
    } catch (...) {
        store_->release(place);
        throw;
    }
    store_->release(former);
}

/// Has the chain come to `sector` at a place that it reaches already.
void SectorChain::follow(std::size_t index, SectorId sector) {
    if (index == 0) {
        first_ = sector;
    } else {
        store_->link(known_[index - 1], sector);
    }
    known_[index] = sector;
}

void SectorChain::resize(std::size_t sectors) {
    std::vector<std::byte> const zeros(store_->sectorSize());
    while (!reach(sectors == 0 ? 0 : sectors - 1) && known_.size() < sectors) {
        SectorId const place = store_->allocate();
        try {
            store_->write(place, 0, zeros);
            if (known_.empty()) {
                known_.push_back(place);
                first_ = place;
            } else {
                known_.push_back(place);
                store_->link(known_[known_.size() - 2], place);
            }
        } catch (...) {
            store_->release(place);
            throw;
        }
    }
    std::size_t const length = this->length();
    if (most_ != noLimit) most_ = sectors;
    if (length <= sectors) return;
    for (std::size_t i = sectors; i < length; ++i) store_->release(known_[i]);
    known_.resize(sectors);
    if (sectors == 0) {
        first_ = endOfChain;
    } else {
        store_->link(known_.back(), endOfChain);
    }
}

}  // namespace velk::platform::storage
