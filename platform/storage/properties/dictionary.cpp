#include "platform/storage/properties/dictionary.h"

#include <algorithm>

#include "platform/storage/properties/value_writer.h"
#include "platform/system/letter_case.h"

namespace velk::platform::storage {
namespace {

// An id and a length.
constexpr std::size_t leastEntrySize = sizeof(PROPID) + sizeof(ULONG);

std::size_t unitSize(CodePage const& page) {
    return page.isUtf16() ? sizeof(char16_t) : 1;
}

}  // namespace

Dictionary::Dictionary(Bytes bytes, CodePage const& page, bool countsCase)
    : countsCase_(countsCase) {
    ByteReader from(bytes);
    try {
        auto const count = from.read<ULONG>();
        std::size_t const atMost = std::min<std::size_t>(count, from.left() / leastEntrySize);
        entries_.reserve(atMost);
        byId_.reserve(atMost);
        for (ULONG i = 0; i < count; ++i) {
            auto const id = from.read<PROPID>();
            std::size_t const start = from.position();
            auto const length = from.read<ULONG>();
            auto text = page.toText(textOf(from.take(length * unitSize(page))));
            text.resize(std::min(text.find(u'\0'), text.size()));
            add({id, std::move(text), std::pair(start, from.position() - start)});
            if (page.isUtf16()) from.skipPadding(0);
        }
    } catch (Failure const&) {
        // The names up to here are what there is of it.
    }
    Bytes const read = bytes.first(from.position());
    image_.assign(read.begin(), read.end());
}

std::u16string Dictionary::keyOf(std::u16string_view name) const {
    std::u16string key(name);
    if (!countsCase_) std::ranges::transform(key, key.begin(), upperCase);
    return key;
}

void Dictionary::add(Entry entry) {
    // Where an id or a name is there twice, the first one counts.
    if (!byId_.emplace(entry.id, entries_.size()).second) return;
    if (isIndexed_) byName_.emplace(keyOf(entry.name), entries_.size());
    if (entry.id < PID_MIN_READONLY) highestId_ = std::max(highestId_, entry.id);
    entries_.push_back(std::move(entry));
}

std::u16string const* Dictionary::nameOf(PROPID id) const {
    auto const found = byId_.find(id);
    return found == byId_.end() ? nullptr : &entries_[found->second].name;
}

void Dictionary::indexNames() const {
    if (isIndexed_) return;
    byName_.reserve(entries_.size());
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (!entries_[i].isRemoved) byName_.emplace(keyOf(entries_[i].name), i);
    }
    isIndexed_ = true;
}

std::optional<PROPID> Dictionary::idOf(std::u16string_view name) const {
    indexNames();
    auto const found = byName_.find(keyOf(name));
    if (found == byName_.end()) return {};
    return entries_[found->second].id;
}

void Dictionary::put(PROPID id, std::u16string_view name) {
    remove(id);
    add({id, std::u16string(name), {}});
}

void Dictionary::remove(PROPID id) {
    auto const found = byId_.find(id);
    if (found == byId_.end()) return;
    Entry& entry = entries_[found->second];
    if (isIndexed_) {
        auto const named = byName_.find(keyOf(entry.name));
        if (named != byName_.end() && named->second == found->second) byName_.erase(named);
    }
    entry.isRemoved = true;
    byId_.erase(found);
}

std::vector<std::byte> Dictionary::write(CodePage const& page) const {
    ByteWriter to;
    to.write(static_cast<ULONG>(byId_.size()));
    for (Entry const& entry : entries_) {
        if (entry.isRemoved) continue;
        to.write(entry.id);
        if (entry.placeAndSize) {
            auto const [place, size] = *entry.placeAndSize;
            to.write(Bytes(image_).subspan(place, size));
        } else {
            auto const text = pageText(entry.name, page);
            to.write(static_cast<ULONG>(text.size() / unitSize(page)));
            to.write(std::string_view(text));
        }
        if (page.isUtf16()) to.pad();
    }
    to.pad();
    return to.take();
}

}  // namespace velk::platform::storage
