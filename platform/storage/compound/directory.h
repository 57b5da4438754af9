/// The elements of a compound file and what contains what.
#pragma once

#include <map>
#include <set>
#include <string>
#include <unordered_map>

#include "platform/storage/compound/sector_chain.h"

namespace velk::platform::storage {

/// The entries of a file, read when they are needed. Every member fails with
/// a StorageError. An EntryId that a member takes is one that it gave before,
/// or the root's.
class Directory {
  public:
    using Children = std::map<std::u16string, EntryId, NameOrder>;

    explicit Directory(SectorStore& store);

    Entry const& at(EntryId entry) { return load(entry); }
    /// The same, to be changed. The name stays as it is: see rename().
    Entry& change(EntryId entry);

    /// The elements in a storage. What a damaged file links to twice is in the
    /// first storage that asks; what it links to wrongly is left out.
    Children const& children(EntryId storage);

    /// noEntry when there is none of the name.
    EntryId find(EntryId storage, std::u16string_view name);

    EntryId add(EntryId storage, std::u16string_view name, EntryType type);
    void rename(EntryId storage, EntryId entry, std::u16string_view name);
    /// Takes an element out of a storage. It must have no elements itself.
    void remove(EntryId storage, EntryId entry);

    /// Writes the changed entries, and where they begin.
    void flush();

  private:
    Entry& load(EntryId entry);
    Children& editChildren(EntryId storage);
    void collect(EntryId storage, Children& into);
    EntryId unusedEntry();
    void linkTree(EntryId storage);
    EntryId linkRange(std::vector<EntryId> const& sorted, std::size_t from, std::size_t to,
                      int depth, int redDepth);
    void setLinks(EntryId entry, EntryId left, EntryId right, bool isBlack);

    SectorStore& store_;
    SectorChain chain_;
    EntryId count_ = 0;
    std::unordered_map<EntryId, Entry> entries_;
    std::set<EntryId> changed_;
    std::unordered_map<EntryId, Children> children_;
    std::set<EntryId> changedTrees_;
    /// Which storage an entry was first found in.
    std::unordered_map<EntryId, EntryId> owners_;
};

}  // namespace velk::platform::storage
