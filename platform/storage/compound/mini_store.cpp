#include "platform/storage/compound/mini_store.h"

#include <algorithm>

#include "platform/system/boundary.h"

namespace velk::platform::storage {

MiniStore::MiniStore(SectorStore& store, SectorId container, std::uint64_t size)
    : store_(store),
      bytes_(store, container, sectorsOf(size)),
      table_(store, store.header().firstMiniFatSector()),
      size_(size),
      tableEntries_(table_.length() * (store.sectorSize() / 4)) {}

std::uint64_t MiniStore::sectorsOf(std::uint64_t bytes) const noexcept {
    std::uint64_t const each = store_.sectorSize();
    return bytes / each + (bytes % each != 0);
}

std::vector<SectorId>& MiniStore::page(std::size_t index) {
    auto const known = pages_.find(index);
    if (known != pages_.end()) return known->second;
    std::array<std::byte, 4 * pageEntries> bytes;
    table_.read(index * bytes.size(), bytes);
    return pages_[index] = readSectorIds(bytes);
}

SectorId MiniStore::next(SectorId sector) {
    require(sector < tableEntries_, STG_E_DOCFILECORRUPT);
    return page(sector / pageEntries)[sector % pageEntries];
}

/// Bytes that are in the file, but not in what counts of the container: a
/// change there would take them for nobody's.
void MiniStore::failIfStreamsStandBehind() {
    require(store_.survey().smallEnd <= (size_ + miniSectorSize - 1) / miniSectorSize,
            STG_E_DOCFILECORRUPT);
}

void MiniStore::link(SectorId sector, SectorId next) {
    failIfStreamsStandBehind();
    require(sector < tableEntries_ && !store_.survey().small.shared.contains(sector),
            STG_E_DOCFILECORRUPT);
    store_.touch();
    page(sector / pageEntries)[sector % pageEntries] = next;
    dirtyPages_.insert(sector / pageEntries);
}

std::vector<SectorId> MiniStore::chain(SectorId first, std::uint64_t bytes) {
    std::vector<SectorId> sectors;
    std::uint64_t const needed = (bytes + miniSectorSize - 1) / miniSectorSize;
    require(needed <= tableEntries_, STG_E_DOCFILECORRUPT);
    for (SectorId at = first; sectors.size() < needed; at = next(at)) {
        require(at < tableEntries_, STG_E_DOCFILECORRUPT);
        sectors.push_back(at);
    }
    return sectors;
}

void MiniStore::read(SectorId sector, std::size_t offset, MutableBytes target) {
    bytes_.read(std::uint64_t{sector} * miniSectorSize + offset, target);
}

void MiniStore::write(SectorId sector, std::size_t offset, Bytes source) {
    failIfStreamsStandBehind();
    bytes_.write(std::uint64_t{sector} * miniSectorSize + offset, source);
}

SectorId MiniStore::allocate() {
    failIfStreamsStandBehind();
    auto const& kept = store_.survey().small.kept;
    SectorId sector = searchFrom_;
    while (sector < tableEntries_ && (next(sector) != freeSector || kept.contains(sector))) {
        ++sector;
    }
    while (kept.contains(sector)) ++sector;
    require(sector <= lastSectorId, STG_E_MEDIUMFULL);
    while (sector >= tableEntries_) enlarge();
    require(bytes_.length() >= sectorsOf(size_), STG_E_DOCFILECORRUPT);
    std::uint64_t const end = (std::uint64_t{sector} + 1) * miniSectorSize;
    std::uint64_t const sectors = sectorsOf(end);
    if (bytes_.length() < sectors) bytes_.resize(static_cast<std::size_t>(sectors));
    size_ = std::max(size_, end);
    link(sector, endOfChain);
    searchFrom_ = sector + 1;
    return sector;
}

void MiniStore::enlarge() {
    std::size_t const each = store_.sectorSize() / 4;
    table_.resize(tableEntries_ / each + 1);
    for (std::size_t i = tableEntries_ / pageEntries; i < (tableEntries_ + each) / pageEntries;
         ++i) {
        pages_[i].assign(pageEntries, freeSector);
        dirtyPages_.insert(i);
    }
    tableEntries_ += each;
}

void MiniStore::release(SectorId sector) {
    link(sector, freeSector);
    searchFrom_ = std::min(searchFrom_, sector);
}

void MiniStore::flush() {
    if (dirtyPages_.empty()) return;
    std::array<std::byte, 4 * pageEntries> bytes;
    for (std::size_t const index : dirtyPages_) {
        auto const& entries = page(index);
        for (std::size_t i = 0; i < pageEntries; ++i) writeNumber(bytes, 4 * i, entries[i]);
        table_.write(index * bytes.size(), bytes);
    }
    dirtyPages_.clear();
    store_.header().setMiniFat(table_.first(), static_cast<std::uint32_t>(table_.length()));
}

}  // namespace velk::platform::storage
