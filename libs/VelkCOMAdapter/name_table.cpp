#include "name_table.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <limits>
#include <new>
#include <utility>

#include "host/module_singleton.h"

using velk::adapter::NameStore;
using velk::com::TextView;

namespace {

constexpr DISPID firstId = 100;
constexpr DISPID noId = -1;
constexpr std::size_t mostNames = std::numeric_limits<DISPID>::max() - firstId;
constexpr std::size_t fewestSlots = 64;
// No entry has it: a text never lies at the very end of the last block.
constexpr NameStore::Reference noReference = 0xffffffff;

std::atomic<unsigned> tableGeneration{1};

std::uint32_t hashOf(TextView name) {
    std::uint64_t const hash = std::hash<TextView>{}(name);
    return static_cast<std::uint32_t>(hash ^ hash >> 32);
}

}  // namespace

PDspMapData& PDspMapData::instance() {
    return mzModuleSingletonT<PDspMapData, 0>::instance();
}

unsigned PDspMapData::generation() noexcept {
    return tableGeneration;
}

PDspMapData::~PDspMapData() {
    ++tableGeneration;
}

DISPID PDspMapData::idOf(TextView name) {
    std::uint32_t const hash = hashOf(name);
    {
        mzSharedHolderT<PReadWriteLock> const reading(tableLock_);
        DISPID const known = find(name, hash);
        if (known != noId) return known;
    }
    mzExclusiveHolderT<PReadWriteLock> const writing(tableLock_);
    // Another thread may have added it between the two locks.
    DISPID const known = find(name, hash);
    return known != noId ? known : add(name, hash);
}

bool PDspMapData::nameOf(DISPID id, mzComStringC& name) const {
    mzSharedHolderT<PReadWriteLock> const reading(tableLock_);
    if (id < firstId || static_cast<std::size_t>(id - firstId) >= namesById_.size()) return false;
    TextView const text = names_.at(namesById_[static_cast<std::size_t>(id - firstId)]).text;
    name = mzComStringC(
        QString(reinterpret_cast<QChar const*>(text.data()), static_cast<int>(text.size())));
    return true;
}

DISPID PDspMapData::find(TextView name, std::uint32_t hash) const noexcept {
    if (slotCount_ == 0) return noId;
    std::size_t const mask = slotCount_ - 1;
    for (std::size_t place = hash & mask;; place = (place + 1) & mask) {
        Slot const& slot = idsByName_[place];
        if (slot.reference == noReference) return noId;
        if (slot.hash != hash) continue;
        NameStore::Entry const entry = names_.at(slot.reference);
        if (entry.text == name) return entry.number;
    }
}

DISPID PDspMapData::add(TextView name, std::uint32_t hash) {
    if (namesById_.size() >= mostNames) throw std::bad_alloc();
    if (isFull()) grow();
    DISPID const id = firstId + static_cast<DISPID>(namesById_.size());
    NameStore::Reference const reference = names_.add(id, name);
    namesById_.push_back(reference);
    std::size_t const mask = slotCount_ - 1;
    std::size_t place = hash & mask;
    while (idsByName_[place].reference != noReference) place = (place + 1) & mask;
    idsByName_[place] = {hash, reference};
    return id;
}

// At three quarters searches still look at few places.
bool PDspMapData::isFull() const noexcept {
    return (namesById_.size() + 1) * 4 > slotCount_ * 3;
}

void PDspMapData::grow() {
    std::size_t const count = slotCount_ == 0 ? fewestSlots : slotCount_ * 2;
    auto larger = velk::adapter::makeLargeArray<Slot>(count);
    std::fill_n(larger.get(), count, Slot{0, noReference});
    for (std::size_t former = 0; former < slotCount_; ++former) {
        Slot const& slot = idsByName_[former];
        if (slot.reference == noReference) continue;
        std::size_t place = slot.hash & (count - 1);
        while (larger[place].reference != noReference) place = (place + 1) & (count - 1);
        larger[place] = slot;
    }
    idsByName_ = std::move(larger);
    slotCount_ = count;
}
