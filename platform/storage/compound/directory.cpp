#include "platform/storage/compound/directory.h"

#include <bit>

#include "platform/storage/storage_error.h"

namespace velk::platform::storage {

Directory::Directory(SectorStore& store)
    : store_(store), chain_(store, store.header().firstDirectorySector()) {
    std::uint64_t const count = std::uint64_t{chain_.length()} * store.sectorSize() / entrySize;
    failIf(count == 0 || count >= noEntry, STG_E_DOCFILECORRUPT);
    count_ = static_cast<EntryId>(count);
    failIf(at(rootEntry).type != EntryType::root, STG_E_DOCFILECORRUPT);
}

Entry& Directory::load(EntryId entry) {
    auto const known = entries_.find(entry);
    if (known != entries_.end()) return known->second;
    failIf(entry >= count_, STG_E_DOCFILECORRUPT);
    std::array<std::byte, entrySize> bytes;
    chain_.read(std::uint64_t{entry} * entrySize, bytes);
    return entries_[entry] = parseEntry(bytes, store_.header().hasLargeSizes());
}

Entry& Directory::change(EntryId entry) {
    Entry& changed = load(entry);
    changed_.insert(entry);
    return changed;
}

Directory::Children const& Directory::children(EntryId storage) {
    auto const known = children_.find(storage);
    if (known != children_.end()) return known->second;
    Children found;
    try {
        collect(storage, found);
        return children_[storage] = std::move(found);
    } catch (...) {
        // The next one who asks shall find them.
        std::erase_if(owners_, [&](auto const& each) { return each.second == storage; });
        throw;
    }
}

void Directory::collect(EntryId storage, Children& into) {
    std::vector<EntryId> open{at(storage).child};
    while (!open.empty()) {
        EntryId const entry = open.back();
        open.pop_back();
        if (entry >= count_ || entry == rootEntry) continue;
        Entry const& found = at(entry);
        bool const isElement = found.type == EntryType::storage || found.type == EntryType::stream;
        if (!isElement || !owners_.try_emplace(entry, storage).second) continue;
        open.push_back(found.left);
        open.push_back(found.right);
        if (!found.name.empty()) into.try_emplace(orderedName(found.name), entry);
    }
}

EntryId Directory::find(EntryId storage, std::u16string_view name) {
    auto const& all = children(storage);
    auto const found = all.find(orderedName(name));
    return found == all.end() ? noEntry : found->second;
}

Directory::Children& Directory::editChildren(EntryId storage) {
    static_cast<void>(children(storage));
    changedTrees_.insert(storage);
    return children_.at(storage);
}

EntryId Directory::unusedEntry() {
    for (EntryId entry = 1; entry < count_; ++entry) {
        if (at(entry).type == EntryType::unused && !owners_.contains(entry)) return entry;
    }
    auto const each = static_cast<EntryId>(store_.sectorSize() / entrySize);
    failIf(count_ > lastSectorId - each, STG_E_MEDIUMFULL);
    chain_.resize(chain_.length() + 1);
    EntryId const first = count_;
    count_ += each;
    for (EntryId entry = first; entry < count_; ++entry) {
        entries_[entry] = Entry();
        changed_.insert(entry);
    }
    return first;
}

EntryId Directory::add(EntryId storage, std::u16string_view name, EntryType type) {
    Children& siblings = editChildren(storage);
    EntryId const entry = unusedEntry();
    siblings.emplace(orderedName(name), entry);
    owners_[entry] = storage;
    Entry& added = change(entry);
    added = Entry();
    added.name = name;
    added.type = type;
    if (type == EntryType::storage) added.firstSector = 0;
    children_[entry] = {};
    return entry;
}

void Directory::rename(EntryId storage, EntryId entry, std::u16string_view name) {
    Children& siblings = editChildren(storage);
    Entry& renamed = change(entry);
    siblings.erase(orderedName(renamed.name));
    renamed.name = name;
    siblings.emplace(orderedName(name), entry);
}

void Directory::remove(EntryId storage, EntryId entry) {
    editChildren(storage).erase(orderedName(at(entry).name));
    change(entry) = Entry();
    children_.erase(entry);
    changedTrees_.erase(entry);
    owners_.erase(entry);
}

/// The elements of a storage as a tree that is as even as can be: all levels
/// full and black, except for the last one, which is red.
void Directory::linkTree(EntryId storage) {
    std::vector<EntryId> sorted;
    for (auto const& [name, entry] : children(storage)) sorted.push_back(entry);
    int const fullLevels = static_cast<int>(std::bit_width(sorted.size() + 1)) - 1;
    EntryId const top = linkRange(sorted, 0, sorted.size(), 0, fullLevels);
    if (at(storage).child != top) change(storage).child = top;
}

EntryId Directory::linkRange(std::vector<EntryId> const& sorted, std::size_t from, std::size_t to,
                             int depth, int redDepth) {
    if (from == to) return noEntry;
    std::size_t const middle = from + (to - from) / 2;
    EntryId const left = linkRange(sorted, from, middle, depth + 1, redDepth);
    EntryId const right = linkRange(sorted, middle + 1, to, depth + 1, redDepth);
    setLinks(sorted[middle], left, right, depth < redDepth);
    return sorted[middle];
}

void Directory::setLinks(EntryId entry, EntryId left, EntryId right, bool isBlack) {
    Entry const& now = at(entry);
    if (now.left == left && now.right == right && now.isBlack == isBlack) return;
    Entry& linked = change(entry);
    linked.left = left;
    linked.right = right;
    linked.isBlack = isBlack;
}

void Directory::flush() {
    for (EntryId const storage : changedTrees_) linkTree(storage);
    changedTrees_.clear();
    std::array<std::byte, entrySize> bytes;
    for (EntryId const entry : changed_) {
        writeEntry(at(entry), bytes);
        chain_.write(std::uint64_t{entry} * entrySize, bytes);
    }
    changed_.clear();
    store_.header().setDirectory(chain_.first(), static_cast<std::uint32_t>(chain_.length()));
}

}  // namespace velk::platform::storage
