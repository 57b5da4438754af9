#include "platform/storage/compound/directory.h"

#include <algorithm>
#include <bit>

#include "platform/system/boundary.h"

namespace velk::platform::storage {

Directory::Directory(SectorStore& store)
    : store_(store), chain_(store, store.header().firstDirectorySector()) {
    std::uint64_t const count = std::uint64_t{chain_.length()} * store.sectorSize() / entrySize;
    require(count != 0 && count < noEntry, STG_E_DOCFILECORRUPT);
    count_ = static_cast<EntryId>(count);
    require(at(rootEntry).type == EntryType::root, STG_E_DOCFILECORRUPT);
}

Entry& Directory::load(EntryId entry) {
    auto const known = entries_.find(entry);
    if (known != entries_.end()) return known->second;
    require(entry < count_, STG_E_DOCFILECORRUPT);
    std::array<std::byte, entrySize> bytes;
    chain_.read(std::uint64_t{entry} * entrySize, bytes);
    return entries_[entry] = parseEntry(bytes, store_.header().hasLargeSizes());
}

Entry& Directory::change(EntryId entry) {
    Entry& changed = load(entry);
    store_.touch();
    changed_.insert(entry);
    return changed;
}

Directory::Contents const& Directory::contents(EntryId storage) {
    auto const known = contents_.find(storage);
    if (known != contents_.end()) return known->second;
    Contents found;
    try {
        collect(storage, found);
        return contents_[storage] = std::move(found);
    } catch (...) {
        // The next one who asks shall find them.
        std::erase_if(owners_, [&](auto const& each) { return each.second == storage; });
        throw;
    }
}

void Directory::collect(EntryId storage, Contents& into) {
    struct Place {
        EntryId entry;
        bool isLeftDone;
    };
    std::vector<Place> open{{at(storage).child, false}};
    while (!open.empty()) {
        auto const [entry, isLeftDone] = open.back();
        open.pop_back();
        if (isLeftDone) {
            into.all.push_back(entry);
            continue;
        }
        if (entry >= count_ || entry == rootEntry) continue;
        Entry const& found = at(entry);
        if (!owners_.try_emplace(entry, storage).second) continue;
        open.insert(open.end(), {{found.right, false}, {entry, true}, {found.left, false}});
        bool const isElement = found.type == EntryType::storage || found.type == EntryType::stream;
        if (isElement && !found.name.empty()) {
            into.named.try_emplace(orderedName(found.name), entry);
        }
    }
}

/// Knows all that is linked anywhere.
void Directory::collectAll() {
    if (hasAllOwners_) return;
    std::vector<EntryId> open{rootEntry};
    while (!open.empty()) {
        EntryId const storage = open.back();
        open.pop_back();
        for (EntryId const entry : everythingIn(storage)) {
            if (at(entry).type == EntryType::storage) open.push_back(entry);
        }
    }
    hasAllOwners_ = true;
}

EntryId Directory::find(EntryId storage, std::u16string_view name) {
    auto const& all = children(storage);
    auto const found = all.find(orderedName(name));
    return found == all.end() ? noEntry : found->second;
}

Directory::Contents& Directory::editContents(EntryId storage) {
    static_cast<void>(contents(storage));
    store_.touch();
    changedTrees_.insert(storage);
    return contents_.at(storage);
}

/// Another may have the name.
void Directory::unname(Contents& siblings, EntryId entry) {
    auto const named = siblings.named.find(orderedName(at(entry).name));
    if (named != siblings.named.end() && named->second == entry) siblings.named.erase(named);
}

EntryId Directory::unusedEntry() {
    collectAll();
    for (EntryId entry = 1; entry < count_; ++entry) {
        if (at(entry).type == EntryType::unused && !owners_.contains(entry)) return entry;
    }
    auto const each = static_cast<EntryId>(store_.sectorSize() / entrySize);
    require(count_ <= lastSectorId - each, STG_E_MEDIUMFULL);
    chain_.resize(chain_.length() + 1);
    EntryId const first = count_;
    count_ += each;
    for (EntryId entry = first; entry < count_; ++entry) {
        entries_[entry] = Entry();
        changed_.insert(entry);
        renewed_.insert(entry);
    }
    return first;
}

EntryId Directory::add(EntryId storage, std::u16string_view name, EntryType type) {
    Contents& siblings = editContents(storage);
    EntryId const entry = unusedEntry();
    siblings.named.emplace(orderedName(name), entry);
    siblings.all.push_back(entry);
    owners_[entry] = storage;
    Entry& added = change(entry);
    added = Entry();
    added.name = added.storedName = name;
    added.type = type;
    if (type == EntryType::storage) added.firstSector = 0;
    renewed_.insert(entry);
    contents_[entry] = {};
    return entry;
}

void Directory::rename(EntryId storage, EntryId entry, std::u16string_view name) {
    Contents& siblings = editContents(storage);
    Entry& renamed = change(entry);
    unname(siblings, entry);
    renamed.name = renamed.storedName = name;
    siblings.named.emplace(orderedName(name), entry);
}

void Directory::remove(EntryId storage, EntryId entry) {
    Contents& siblings = editContents(storage);
    unname(siblings, entry);
    std::erase(siblings.all, entry);
    change(entry) = Entry();
    renewed_.insert(entry);
    contents_.erase(entry);
    changedTrees_.erase(entry);
    owners_.erase(entry);
}

/// What is in a storage as a tree that is as even as can be: all levels full
/// and black, except for the last one, which is red.
void Directory::linkTree(EntryId storage) {
    std::vector<EntryId> sorted = everythingIn(storage);
    std::unordered_map<EntryId, std::u16string> keys;
    for (EntryId const entry : sorted) keys[entry] = orderedName(at(entry).storedName);
    std::stable_sort(sorted.begin(), sorted.end(), [&](EntryId one, EntryId other) {
        return NameOrder()(keys[one], keys[other]);
    });
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
    if (changed_.empty()) return;
    std::array<std::byte, entrySize> bytes;
    for (EntryId const entry : changed_) {
        std::uint64_t const place = std::uint64_t{entry} * entrySize;
        if (renewed_.contains(entry)) {
            writeEntry(at(entry), bytes);
        } else {
            chain_.read(place, bytes);
            updateEntry(at(entry), bytes, store_.header().hasLargeSizes());
        }
        chain_.write(place, bytes);
    }
    changed_.clear();
    renewed_.clear();
    store_.header().setDirectory(chain_.first(), static_cast<std::uint32_t>(chain_.length()));
}

}  // namespace velk::platform::storage
