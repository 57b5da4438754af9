/// How changed tables get their places, and how a change comes to count.
#include <algorithm>

#include "platform/storage/compound/sector_store.h"
#include "platform/system/boundary.h"

namespace velk::platform::storage {

void SectorStore::commit() {
    require(!failed_, STG_E_WRITEFAULT);
    if (!isChanged()) return;
    std::array<std::byte, headerSize> now;
    file_.read(0, now);
    require(now == committed_.bytes(), STG_E_NOTCURRENT);
    bool headerIsWritten = false;
    try {
        placeTables();
        writeTables();
        file_.sync();
        headerIsWritten = true;
        file_.write(0, header_.bytes());
        file_.sync();
    } catch (...) {
        rollBack(headerIsWritten);
        throw;
    }
    settle();
}

/// As long as the new header may be on the medium, what it leads to must stay.
void SectorStore::rollBack(bool headerIsWritten) {
    try {
        if (headerIsWritten) {
            file_.write(0, committed_.bytes());
            file_.sync();
            // Somebody may have opened the file while the new header was there.
            if (file_.hasReaders()) writtenSize_ = 0;
        }
        restoreFile();
    } catch (...) {
        // The failure that led here is the one to tell. Whoever reverts tries
        // again to put the file back.
        failed_ = headerIsWritten;
        if (headerIsWritten) writtenSize_ = 0;
    }
}

/// Placing a table changes tables, until all that changed have new places.
void SectorStore::placeTables() {
    while (placeDirtyPages() || placeDifat()) {
    }
}

bool SectorStore::placeDirtyPages() {
    std::vector<std::size_t> dirty;
    for (auto const& [index, candidate] : pages_) {
        if (candidate.isDirty && !candidate.isPlaced) dirty.push_back(index);
    }
    std::sort(dirty.begin(), dirty.end());
    for (std::size_t const index : dirty) {
        SectorId const place = allocate();
        link(place, fatSector);
        SectorId const former = pageSectors_[index];
        if (former != freeSector) release(former);
        pageSectors_[index] = place;
        pages_.at(index).isPlaced = true;
        locationsChanged_ = locationsChanged_ || index >= headerDifatEntries;
    }
    return !dirty.empty();
}

std::size_t SectorStore::difatSectorsNeeded() const noexcept {
    if (pageSectors_.size() <= headerDifatEntries) return 0;
    std::size_t const each = pageEntries() - 1;
    return (pageSectors_.size() - headerDifatEntries + each - 1) / each;
}

/// Each sector of the list names the next one, so that they move together.
bool SectorStore::placeDifat() {
    std::size_t const needed = difatSectorsNeeded();
    bool const isUnchanged = !locationsChanged_ && difatSectors_.size() == needed;
    if (isUnchanged || (difatPlaced_ && difatSectors_.size() >= needed)) return false;
    if (!difatPlaced_) {
        for (SectorId const former : difatSectors_) release(former);
        difatSectors_.clear();
        difatPlaced_ = true;
    }
    while (difatSectors_.size() < needed) {
        SectorId const place = allocate();
        link(place, difatSector);
        difatSectors_.push_back(place);
    }
    return true;
}

void SectorStore::writeTables() {
    std::vector<std::byte> bytes(sectorSize_);
    for (auto const& [index, written] : pages_) {
        if (!written.isDirty) continue;
        for (std::size_t i = 0; i < pageEntries(); ++i) writeNumber(bytes, 4 * i, written.next[i]);
        write(pageSectors_[index], 0, bytes);
    }
    if (difatPlaced_) writeDifat();
    header_.setFatSectors(static_cast<std::uint32_t>(pageSectors_.size()));
    for (std::size_t i = 0; i < std::min(pageSectors_.size(), headerDifatEntries); ++i) {
        header_.setDifat(i, pageSectors_[i]);
    }
}

void SectorStore::writeDifat() {
    std::vector<std::byte> bytes(sectorSize_);
    std::size_t const each = pageEntries() - 1;
    for (std::size_t k = 0; k < difatSectors_.size(); ++k) {
        for (std::size_t i = 0; i < each; ++i) {
            std::size_t const index = headerDifatEntries + k * each + i;
            writeNumber(bytes, 4 * i,
                        index < pageSectors_.size() ? pageSectors_[index] : freeSector);
        }
        bool const isLast = k + 1 == difatSectors_.size();
        writeNumber(bytes, 4 * each, isLast ? endOfChain : difatSectors_[k + 1]);
        write(difatSectors_[k], 0, bytes);
    }
    header_.setDifatChain(difatSectors_.empty() ? endOfChain : difatSectors_.front(),
                          static_cast<std::uint32_t>(difatSectors_.size()));
}

/// What was fresh is the committed state now, what was given up is free. The
/// commit counts already: nothing here may fail it.
void SectorStore::settle() noexcept {
    committed_ = header_;
    formerSize_ = std::max(formerSize_, writtenSize_);
    former_.clear();
    writtenSize_ = 0;
    changed_ = locationsChanged_ = difatPlaced_ = false;
    for (auto& [index, settled] : pages_) {
        if (settled.isDirty) {
            std::fill(settled.states.begin(), settled.states.end(), State::settled);
        }
        settled.isDirty = settled.isPlaced = false;
    }
    try {
        for (auto const& [index, settled] : pages_) pagesToSearch_.insert(index);
        mayReuse_ = !file_.hasReaders();
    } catch (...) {
        mayReuse_ = false;
    }
}

}  // namespace velk::platform::storage
