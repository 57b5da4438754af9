#include "platform/storage/properties/dictionary.h"

#include <algorithm>

#include "platform/storage/properties/value_writer.h"
#include "platform/system/letter_case.h"

namespace velk::platform::storage {
namespace {

std::size_t unitSize(CodePage const& page) {
    return page.isUtf16() ? sizeof(char16_t) : 1;
}

}  // namespace

Dictionary::Dictionary(Bytes bytes, CodePage const& page, bool countsCase)
    : countsCase_(countsCase) {
    ByteReader from(bytes);
    try {
        auto const count = from.read<ULONG>();
        for (ULONG i = 0; i < count; ++i) {
            auto const id = from.read<PROPID>();
            std::size_t const start = from.position();
            auto const length = from.read<ULONG>();
            auto text = page.toText(textOf(from.take(length * unitSize(page))));
            text.resize(std::min(text.find(u'\0'), text.size()));
            auto const raw = bytes.subspan(start, from.position() - start);
            add({id, std::move(text), std::vector<std::byte>(raw.begin(), raw.end())});
            if (page.isUtf16()) from.skipPadding(0);
        }
    } catch (StorageError const&) {
        // The names up to here are what there is of it.
    }
}

std::u16string Dictionary::keyOf(std::u16string_view name) const {
    std::u16string key(name);
    if (!countsCase_) std::ranges::transform(key, key.begin(), upperCase);
    return key;
}

void Dictionary::add(Entry entry) {
    // Where an id or a name is there twice, the first one counts.
    if (!byId_.emplace(entry.id, entries_.size()).second) return;
    byName_.emplace(keyOf(entry.name), entries_.size());
    if (entry.id < PID_MIN_READONLY) highestId_ = std::max(highestId_, entry.id);
    entries_.push_back(std::move(entry));
}

std::u16string const* Dictionary::nameOf(PROPID id) const {
    auto const found = byId_.find(id);
    return found == byId_.end() ? nullptr : &entries_[found->second].name;
}

std::optional<PROPID> Dictionary::idOf(std::u16string_view name) const {
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
    auto const named = byName_.find(keyOf(entry.name));
    if (named != byName_.end() && named->second == found->second) byName_.erase(named);
    entry.isRemoved = true;
    byId_.erase(found);
}

std::vector<std::byte> Dictionary::write(CodePage const& page) const {
    ByteWriter to;
    to.write(static_cast<ULONG>(byId_.size()));
    for (Entry const& entry : entries_) {
        if (entry.isRemoved) continue;
        to.write(entry.id);
        if (entry.bytes) {
            to.write(Bytes(*entry.bytes));
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
