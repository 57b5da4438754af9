/// The names of properties.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <propidl.h>

#include "platform/storage/properties/bytes.h"
#include "platform/system/code_page.h"

namespace velk::platform::storage {

/// Names by id and ids by name. Names that are not changed keep the bytes that
/// they were read from. One thread at a time may use it.
class Dictionary {
  public:
    /// An empty one. `countsCase`: whether names differ by the case of letters.
    explicit Dictionary(bool countsCase) : countsCase_(countsCase) {}

    /// Reads what is whole of a dictionary, from its number of entries on.
    Dictionary(Bytes bytes, CodePage const& page, bool countsCase);

    bool isEmpty() const noexcept { return byId_.empty(); }
    /// Null for a property without a name.
    std::u16string const* nameOf(PROPID id) const;
    std::optional<PROPID> idOf(std::u16string_view name) const;
    /// The highest id below the reserved ones that has had a name; 0 for none.
    PROPID highestId() const noexcept { return highestId_; }

    /// Gives a property a name instead of what it had.
    void put(PROPID id, std::u16string_view name);
    void remove(PROPID id);

    /// The dictionary in the page's characters, with its padding. Fails with
    /// noSuchCharacter.
    std::vector<std::byte> write(CodePage const& page) const;

  private:
    struct Entry {
        PROPID id;
        std::u16string name;
        /// Where it was read, with its length; nothing when the name is new.
        std::optional<std::pair<std::size_t, std::size_t>> placeAndSize;
        bool isRemoved = false;
    };

    std::u16string keyOf(std::u16string_view name) const;
    void add(Entry entry);
    void indexNames() const;

    bool countsCase_;
    /// What was read.
    std::vector<std::byte> image_;
    std::vector<Entry> entries_;
    std::unordered_map<PROPID, std::size_t> byId_;
    /// Made for the first who looks for a name: many only list them.
    mutable std::unordered_map<std::u16string, std::size_t> byName_;
    mutable bool isIndexed_ = false;
    PROPID highestId_ = 0;
};

}  // namespace velk::platform::storage
