#include "name_table.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <utility>

#include "host/module_singleton.h"

using velk::com::TextView;

namespace {

constexpr DISPID firstId = 100;
constexpr DISPID noId = -1;
constexpr std::size_t mostNames = std::numeric_limits<DISPID>::max() - firstId;
constexpr std::size_t fewestSlots = 64;
constexpr DISPID unused = 0;

std::atomic<unsigned> tableGeneration{1};

std::uint32_t hashOfText(TextView name) {
    std::uint64_t const hash = std::hash<TextView>{}(name);
    return static_cast<std::uint32_t>(hash ^ hash >> 32);
}

/// The first unused place for a hash among `count` slots, one of which is unused.
template <typename Slot>
std::size_t freePlace(Slot const* slots, std::size_t count, std::uint32_t hash) {
    std::size_t place = hash & (count - 1);
    while (slots[place].id != unused) place = (place + 1) & (count - 1);
    return place;
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
    std::uint32_t const hash = hashOfText(name);
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
    TextView const text = textOf(idsByName_[namesById_[static_cast<std::size_t>(id - firstId)]]);
    name = mzComStringC(
        QString(reinterpret_cast<QChar const*>(text.data()), static_cast<int>(text.size())));
    return true;
}

PDspMapData::Slot::Elsewhere PDspMapData::Slot::elsewhere() const noexcept {
    Elsewhere place;
    std::memcpy(&place, text, sizeof place);
    return place;
}

void PDspMapData::Slot::setElsewhere(Elsewhere const& place) noexcept {
    length = storedElsewhere;
    std::memcpy(text, &place, sizeof place);
}

TextView PDspMapData::textOf(Slot const& slot) const noexcept {
    return slot.length == Slot::storedElsewhere ? longNames_.at(slot.elsewhere().reference)
                                                : TextView(slot.text, slot.length);
}

std::uint32_t PDspMapData::hashOf(Slot const& slot) const noexcept {
    return slot.length == Slot::storedElsewhere ? slot.elsewhere().hash
                                                : hashOfText({slot.text, slot.length});
}

bool PDspMapData::holds(Slot const& slot, TextView name, std::uint32_t hash) const noexcept {
    if (name.size() <= Slot::mostCharacters) {
        return slot.length == name.size() && TextView(slot.text, slot.length) == name;
    }
    return slot.length == Slot::storedElsewhere && slot.elsewhere().hash == hash &&
           longNames_.at(slot.elsewhere().reference) == name;
}

DISPID PDspMapData::find(TextView name, std::uint32_t hash) const noexcept {
    if (slotCount_ == 0) return noId;
    std::size_t const mask = slotCount_ - 1;
    for (std::size_t place = hash & mask;; place = (place + 1) & mask) {
        Slot const& slot = idsByName_[place];
        if (slot.id == unused) return noId;
        if (holds(slot, name, hash)) return slot.id;
    }
}

DISPID PDspMapData::add(TextView name, std::uint32_t hash) {
    if (namesById_.size() >= mostNames) throw std::bad_alloc();
    if (isFull()) grow();
    Slot added{firstId + static_cast<DISPID>(namesById_.size()), 0, {}};
    if (name.size() <= Slot::mostCharacters) {
        added.length = static_cast<std::uint16_t>(name.size());
        std::copy(name.begin(), name.end(), added.text);
    } else {
        added.setElsewhere({hash, longNames_.add(name)});
    }
    std::size_t const place = freePlace(idsByName_.get(), slotCount_, hash);
    namesById_.push_back(static_cast<std::uint32_t>(place));
    idsByName_[place] = added;
    return added.id;
}

// At three quarters searches still look at few places.
bool PDspMapData::isFull() const noexcept {
    return (namesById_.size() + 1) * 4 > slotCount_ * 3;
}

void PDspMapData::grow() {
    std::size_t const count = slotCount_ == 0 ? fewestSlots : slotCount_ * 2;
    auto larger = velk::adapter::makeLargeArray<Slot>(count);
    std::fill_n(larger.get(), count, Slot{unused, 0, {}});
    for (std::size_t former = 0; former < slotCount_; ++former) {
        Slot const& slot = idsByName_[former];
        if (slot.id == unused) continue;
        std::size_t const place = freePlace(larger.get(), count, hashOf(slot));
        larger[place] = slot;
        namesById_[static_cast<std::size_t>(slot.id - firstId)] = static_cast<std::uint32_t>(place);
    }
    idsByName_ = std::move(larger);
    slotCount_ = count;
}
