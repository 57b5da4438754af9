#include "dictionary_entries.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace velk::core {

namespace {

constexpr std::size_t firstSlots = 16;

// Removed entries are swept out when they outnumber the live ones, which keeps
// removal constant on average, but not in small dictionaries.
constexpr std::size_t leastToSweep = 32;

}  // namespace

std::uint32_t DictionaryEntries::find(DictionaryKey const& key) const noexcept {
    if (slots_.empty()) {
        return none;
    }
    std::size_t const mask = slots_.size() - 1;
    for (std::size_t i = key.hash() & mask; slots_[i].position != none; i = (i + 1) & mask) {
        Slot const& slot = slots_[i];
        if (slot.hash == key.hash() && entries_[slot.position].key.equals(key, compare_)) {
            return slot.position;
        }
    }
    return none;
}

std::uint32_t DictionaryEntries::append(DictionaryKey key, mzComVariantC const& keyValue,
                                        mzComVariantC const& item) {
    makeRoom();
    std::uint32_t const hash = key.hash();
    entries_.push_back(Entry{std::move(key), keyValue, item, lastSerial_ + 1, true});
    ++lastSerial_;
    ++live_;
    auto const position = static_cast<std::uint32_t>(entries_.size() - 1);
    insertSlot(hash, position);
    return position;
}

void DictionaryEntries::rename(std::uint32_t position, DictionaryKey key,
                               mzComVariantC const& keyValue) {
    Entry& entry = entries_[position];
    // A key that is only respelled keeps its place before younger equal ones.
    bool const moves = entry.key.hash() != key.hash();
    if (moves) removeSlot(entry.key.hash(), position);
    entry.key = std::move(key);
    // The old value leaves last, as below.
    mzComVariantC const gone = std::exchange(entry.keyValue, keyValue);
    if (moves) insertSlot(entry.key.hash(), position);
}

void DictionaryEntries::remove(std::uint32_t position) {
    Entry& entry = entries_[position];
    removeSlot(entry.key.hash(), position);
    // The values leave last: the release of an object can run code that looks
    // at this dictionary again.
    Entry const gone = std::exchange(entry, Entry{{}, {}, {}, entry.serial, false});
    --live_;
    compact();
}

void DictionaryEntries::clear() {
    std::vector<Entry> const gone = std::exchange(entries_, {});
    slots_.clear();
    live_ = 0;
}

std::uint32_t DictionaryEntries::after(std::uint64_t serial, std::uint32_t hint) const noexcept {
    auto const start = std::min<std::size_t>(hint, entries_.size());
    auto place = entries_.begin() + static_cast<std::ptrdiff_t>(start);
    if (place != entries_.end() && place->serial == serial) {
        ++place;
    } else {
        place = std::upper_bound(
            entries_.begin(), entries_.end(), serial,
            [](std::uint64_t wanted, Entry const& entry) { return wanted < entry.serial; });
    }
    place = std::find_if(place, entries_.end(), [](Entry const& entry) { return entry.live; });
    return place == entries_.end() ? none : static_cast<std::uint32_t>(place - entries_.begin());
}

void DictionaryEntries::insertSlot(std::uint32_t hash, std::uint32_t position) noexcept {
    std::size_t const mask = slots_.size() - 1;
    std::size_t i = hash & mask;
    while (slots_[i].position != none) {
        i = (i + 1) & mask;
    }
    slots_[i] = {hash, position};
}

// Closes the gap by moving later entries of the same run back. Entries with the
// same hash keep their order, so that the eldest of equal keys stays first.
void DictionaryEntries::removeSlot(std::uint32_t hash, std::uint32_t position) noexcept {
    std::size_t const mask = slots_.size() - 1;
    std::size_t hole = hash & mask;
    while (slots_[hole].position != position) {
        hole = (hole + 1) & mask;
    }
    for (std::size_t i = (hole + 1) & mask; slots_[i].position != none; i = (i + 1) & mask) {
        std::size_t const home = slots_[i].hash & mask;
        if (((i - home) & mask) >= ((i - hole) & mask)) {
            slots_[hole] = slots_[i];
            hole = i;
        }
    }
    slots_[hole] = Slot{};
}

void DictionaryEntries::rebuildIndex(std::size_t slotCount) {
    slots_.assign(slotCount, Slot{});
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (entries_[i].live) {
            insertSlot(entries_[i].key.hash(), static_cast<std::uint32_t>(i));
        }
    }
}

// At most half of the slots are in use, so that probing stays short.
void DictionaryEntries::makeRoom() {
    if (entries_.size() >= none - 1) {
        throw std::length_error("dictionary is full");
    }
    if (slots_.size() < (live_ + std::size_t{1}) * 2) {
        rebuildIndex(std::max(firstSlots, slots_.size() * 2));
    }
}

void DictionaryEntries::compact() {
    std::size_t const removed = entries_.size() - live_;
    if (removed < leastToSweep || removed < live_) {
        return;
    }
    std::erase_if(entries_, [](Entry const& entry) { return !entry.live; });
    rebuildIndex(slots_.size());
}

}  // namespace velk::core
