#pragma once

#include <cstdint>
#include <vector>

#include "dictionary_key.h"

namespace velk::core {

/// The entries of a dictionary in the order in which they were added, with an
/// index by key. Looking up, adding and removing take constant time on average.
///
/// An entry is addressed by its position. A position stays valid until the next
/// change; `serial` names an entry for good and grows with the position.
/// Equal keys may stand more than once: a look-up finds the eldest.
class DictionaryEntries {
  public:
    static constexpr std::uint32_t none = UINT32_MAX;

    struct Entry {
        DictionaryKey key;
        mzComVariantC keyValue;
        mzComVariantC item;
        std::uint64_t serial = 0;  ///< grows along the entries, removed ones included
        bool live = false;
    };

    std::uint32_t size() const noexcept { return live_; }
    KeyCompare compare() const noexcept { return compare_; }

    /// Only for an empty dictionary: kept keys would have to be merged.
    void setCompare(KeyCompare compare) noexcept { compare_ = compare; }

    /// Position of the eldest entry with this key, or `none`.
    std::uint32_t find(DictionaryKey const& key) const noexcept;

    /// Adds at the end, whether or not the key is there already; its position.
    std::uint32_t append(DictionaryKey key, mzComVariantC const& keyValue,
                         mzComVariantC const& item);

    Entry& at(std::uint32_t position) noexcept { return entries_[position]; }
    Entry const& at(std::uint32_t position) const noexcept { return entries_[position]; }

    /// Gives an entry another key; it keeps its place in the order.
    void rename(std::uint32_t position, DictionaryKey key, mzComVariantC const& keyValue);

    void remove(std::uint32_t position);
    void clear();

    /// Position of the first entry whose serial is greater than `serial`, or
    /// `none`. `hint` is a position to try before the search.
    std::uint32_t after(std::uint64_t serial, std::uint32_t hint) const noexcept;

    template <typename Visitor>
    void forEach(Visitor visit) const {
        for (Entry const& entry : entries_) {
            if (entry.live) {
                visit(entry);
            }
        }
    }

  private:
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t position = none;
    };

    void insertSlot(std::uint32_t hash, std::uint32_t position) noexcept;
    void removeSlot(std::uint32_t hash, std::uint32_t position) noexcept;
    void rebuildIndex(std::size_t slotCount);
    void makeRoom();
    void compact();

    std::vector<Entry> entries_;
    std::vector<Slot> slots_;  // a power of two, linear probing; empty at first
    std::uint64_t lastSerial_ = 0;
    std::uint32_t live_ = 0;
    KeyCompare compare_ = KeyCompare::binary;
};

}  // namespace velk::core
