#include "platform/storage/compound/sector_store.h"

#include <algorithm>
#include <span>
#include <unordered_set>

#include "platform/system/boundary.h"

namespace velk::platform::storage {
namespace {

Header readHeader(FileAccess& file) {
    std::array<std::byte, headerSize> bytes, again;
    // A writer may be replacing it at this very moment, which is done at once
    // on the medium, but not for those who read meanwhile.
    file.read(0, again);
    do {
        bytes = again;
        file.read(0, again);
    } while (bytes != again);
    return Header::parse(bytes);
}

}  // namespace

SectorStore::SectorStore(FileAccess& file)
    : file_(file), header_(readHeader(file)), committed_(header_) {
    load();
}

void SectorStore::load() {
    blockAt_.reset();
    sectorSize_ = header_.sectorSize();
    std::uint64_t const size = file_.size();
    // The last sector may be cut short.
    std::uint64_t const sectors = (size + sectorSize_ - 1) / sectorSize_;
    sectorLimit_ = sectors == 0 ? 0 : sectors - 1;
    pages_.clear();
    lastPage_ = nullptr;
    pagesToSearch_.clear();
    survey_.reset();
    formerSize_ = size;
    former_.clear();
    writtenSize_ = 0;
    changed_ = locationsChanged_ = difatPlaced_ = false;
    loadTableLocations();
    mayReuse_ = !file_.hasReaders();
    std::uint64_t const covered = std::uint64_t{pageSectors_.size()} * pageEntries();
    appendAt_ = mayReuse_ ? std::min(sectorLimit_, covered) : sectorLimit_;
}

void SectorStore::loadTableLocations() {
    pageSectors_.clear();
    difatSectors_.clear();
    std::uint64_t const count = header_.fatSectors();
    require(count <= sectorLimit_ + 1, STG_E_DOCFILECORRUPT);
    for (std::size_t i = 0; i < std::min<std::uint64_t>(count, headerDifatEntries); ++i) {
        pageSectors_.push_back(header_.difat(i));
    }
    std::unordered_set<SectorId> seen;
    std::vector<std::byte> sector(sectorSize_);
    SectorId at = header_.firstDifatSector();
    while (pageSectors_.size() < count && at <= lastSectorId) {
        require(at < sectorLimit_ && seen.insert(at).second, STG_E_DOCFILECORRUPT);
        difatSectors_.push_back(at);
        read(at, 0, sector);
        for (std::size_t i = 0; i + 1 < pageEntries() && pageSectors_.size() < count; ++i) {
            pageSectors_.push_back(readNumber<std::uint32_t>(sector, 4 * i));
        }
        at = readNumber<std::uint32_t>(sector, sectorSize_ - 4);
    }
    require(pageSectors_.size() >= count, STG_E_DOCFILECORRUPT);
}

SectorStore::Page& SectorStore::page(std::size_t index) {
    // Chains are followed through one part of the table after the other.
    if (lastPage_ == nullptr || lastPageIndex_ != index) {
        lastPage_ = &findPage(index);
        lastPageIndex_ = index;
    }
    return *lastPage_;
}

SectorStore::Page& SectorStore::findPage(std::size_t index) {
    auto const known = pages_.find(index);
    if (known != pages_.end()) return known->second;
    require(index < pageSectors_.size(), STG_E_DOCFILECORRUPT);
    SectorId const sector = pageSectors_[index];
    require(sector < sectorLimit_, STG_E_DOCFILECORRUPT);
    std::vector<std::byte> bytes(sectorSize_);
    read(sector, 0, bytes);
    Page loaded;
    loaded.next = readSectorIds(bytes);
    loaded.states.assign(pageEntries(), State::settled);
    auto& kept = pages_[index] = std::move(loaded);
    if (std::ranges::find(kept.next, freeSector) != kept.next.end()) pagesToSearch_.insert(index);
    return kept;
}

SectorId SectorStore::next(SectorId sector) {
    require(sector < sectorLimit_, STG_E_DOCFILECORRUPT);
    return pageOf(sector).next[sector % pageEntries()];
}

std::vector<SectorId> SectorStore::readTable() {
    std::vector<SectorId> table(pageSectors_.size() * pageEntries());
    auto const bytes = std::as_writable_bytes(std::span(table));
    std::size_t count = 0;
    // Those that stand side by side at once.
    for (std::size_t first = 0; first < pageSectors_.size(); first += count) {
        SectorId const sector = pageSectors_[first];
        count = 1;
        while (first + count < pageSectors_.size() &&
               pageSectors_[first + count] == sector + count) {
            ++count;
        }
        require(sector + std::uint64_t{count} <= sectorLimit_, STG_E_DOCFILECORRUPT);
        read(sector, 0, bytes.subspan(first * sectorSize_, count * sectorSize_));
    }
    return table;
}

void SectorStore::set(SectorId sector, SectorId next, State state) {
    require(!survey().sectors.shared.contains(sector), STG_E_DOCFILECORRUPT);
    Page& owner = pageOf(sector);
    touch();
    owner.next[sector % pageEntries()] = next;
    owner.states[sector % pageEntries()] = state;
    owner.isDirty = true;
    changed_ = true;
}

void SectorStore::link(SectorId sector, SectorId next) {
    set(sector, next, pageOf(sector).states[sector % pageEntries()]);
}

Survey const& SectorStore::survey() {
    if (!survey_) survey_ = surveyChains(*this);
    return *survey_;
}

bool SectorStore::isFree(SectorId sector, Page const& owner) {
    std::size_t const place = sector % pageEntries();
    return owner.next[place] == freeSector && owner.states[place] == State::settled &&
           !survey().sectors.kept.contains(sector);
}

SectorId SectorStore::allocate() {
    require(!failed_, STG_E_WRITEFAULT);
    static_cast<void>(survey());
    SectorId const found = mayReuse_ ? reuse() : freeSector;
    SectorId const sector = found != freeSector ? found : append();
    set(sector, endOfChain, State::fresh);
    return sector;
}

SectorId SectorStore::reuse() {
    if (!pageSectors_.empty()) page(pageSectors_.size() - 1);
    while (!pagesToSearch_.empty()) {
        std::size_t const index = *pagesToSearch_.begin();
        Page const& candidate = pages_.at(index);
        for (std::size_t i = 0; i < pageEntries(); ++i) {
            std::uint64_t const sector = index * std::uint64_t{pageEntries()} + i;
            if (sector >= appendAt_) break;
            auto const id = static_cast<SectorId>(sector);
            if (isFree(id, candidate)) return id;
        }
        pagesToSearch_.erase(index);
    }
    return freeSector;
}

SectorId SectorStore::append() {
    for (;; ++appendAt_) {
        require(appendAt_ <= lastSectorId, STG_E_MEDIUMFULL);
        std::size_t const index = static_cast<std::size_t>(appendAt_ / pageEntries());
        while (index >= pageSectors_.size()) {
            Page added;
            added.next.assign(pageEntries(), freeSector);
            added.states.assign(pageEntries(), State::settled);
            added.isDirty = true;
            pages_[pageSectors_.size()] = std::move(added);
            pageSectors_.push_back(freeSector);
            locationsChanged_ = true;
        }
        auto const sector = static_cast<SectorId>(appendAt_);
        if (isFree(sector, pageOf(sector))) {
            ++appendAt_;
            sectorLimit_ = std::max(sectorLimit_, appendAt_);
            return sector;
        }
    }
}

void SectorStore::release(SectorId sector) {
    bool const wasFresh = isFresh(sector);
    set(sector, freeSector, wasFresh ? State::settled : State::released);
    if (wasFresh) pagesToSearch_.insert(sector / pageEntries());
}

bool SectorStore::isFresh(SectorId sector) {
    require(sector < sectorLimit_, STG_E_DOCFILECORRUPT);
    return pageOf(sector).states[sector % pageEntries()] == State::fresh;
}

void SectorStore::read(SectorId sector, std::size_t offset, MutableBytes target) {
    require(sector < sectorLimit_, STG_E_DOCFILECORRUPT);
    std::uint64_t const from = positionOf(sector) + offset;
    if (target.size() >= blockSize || !readFromBlock(from, target)) file_.read(from, target);
}

/// What is small is read with what stands around it: entries, tables and small
/// streams stand close together. False when that is impossible.
bool SectorStore::readFromBlock(std::uint64_t from, MutableBytes target) {
    std::uint64_t const start = from / blockSize * blockSize;
    auto const within = static_cast<std::size_t>(from - start);
    if (within + target.size() > blockSize) return false;
    if (blockAt_ != start) {
        blockAt_.reset();
        block_.resize(blockSize);
        try {
            file_.read(start, block_);
        } catch (Failure const&) {
            // There may be something wrong with what nobody asked for.
            return false;
        }
        blockAt_ = start;
    }
    std::copy_n(block_.begin() + static_cast<std::ptrdiff_t>(within), target.size(),
                target.begin());
    return true;
}

void SectorStore::write(SectorId sector, std::size_t offset, Bytes source) {
    std::uint64_t const to = positionOf(sector) + offset;
    if (blockAt_ && to < *blockAt_ + blockSize && to + source.size() > *blockAt_) blockAt_.reset();
    keepFormerBytes(sector);
    touch();
    writtenSize_ = std::max<std::uint64_t>(writtenSize_, to + source.size());
    file_.write(to, source);
}

void SectorStore::keepFormerBytes(SectorId sector) {
    std::uint64_t const from = positionOf(sector);
    if (from >= formerSize_ || former_.contains(sector)) return;
    std::vector<std::byte> bytes(
        static_cast<std::size_t>(std::min<std::uint64_t>(sectorSize_, formerSize_ - from)));
    file_.read(from, bytes);
    former_.emplace(sector, std::move(bytes));
}

void SectorStore::restoreFile() {
    if (writtenSize_ == 0) return;
    std::array<std::byte, headerSize> now;
    file_.read(0, now);
    if (now != committed_.bytes()) return;
    blockAt_.reset();
    for (auto const& [sector, bytes] : former_) file_.write(positionOf(sector), bytes);
    if (file_.size() > formerSize_) file_.truncate(formerSize_);
    writtenSize_ = 0;
}

void SectorStore::revert() {
    restoreFile();
    header_ = readHeader(file_);
    committed_ = header_;
    load();
}

}  // namespace velk::platform::storage
