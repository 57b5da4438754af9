/// The elements of a compound file and what contains what.
#pragma once

#include <map>
#include <set>
#include <string>
#include <unordered_map>

#include "platform/storage/compound/sector_chain.h"

namespace velk::platform::storage {

/// The entries of a file, read when they are needed. Every member fails with
/// a Failure. An EntryId that a member takes is one that it gave before,
/// or the root's.
class Directory {
  public:
    using Children = std::map<std::u16string, EntryId, NameOrder>;

    explicit Directory(SectorStore& store);

    Entry const& at(EntryId entry) { return load(entry); }
    /// The same, to be changed. The name stays as it is: see rename().
    Entry& change(EntryId entry);

    /// The elements in a storage that have a name of their own. What a damaged
    /// file links to twice is in the first storage that asks.
    Children const& children(EntryId storage) { return contents(storage).named; }

    /// All that is linked in a storage. What no name reaches is among it: names
    /// that are empty or another's but for the case, entries of unknown types.
    std::vector<EntryId> const& everythingIn(EntryId storage) { return contents(storage).all; }

    /// noEntry when there is none of the name.
    EntryId find(EntryId storage, std::u16string_view name);

    EntryId add(EntryId storage, std::u16string_view name, EntryType type);
    void rename(EntryId storage, EntryId entry, std::u16string_view name);
    /// Takes an element out of a storage. It must have no elements itself.
    void remove(EntryId storage, EntryId entry);

    /// Writes the changed entries, and where they begin.
    void flush();

  private:
    struct Contents {
        Children named;
        /// In the order of the tree.
        std::vector<EntryId> all;
    };

    Entry& load(EntryId entry);
    Contents const& contents(EntryId storage);
    Contents& editContents(EntryId storage);
    void collect(EntryId storage, Contents& into);
    void collectAll();
    void unname(Contents& siblings, EntryId entry);
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
    /// Those of the changed ones of which nothing is kept.
    std::set<EntryId> renewed_;
    std::unordered_map<EntryId, Contents> contents_;
    std::set<EntryId> changedTrees_;
    /// Which storage an entry was first found in.
    std::unordered_map<EntryId, EntryId> owners_;
    bool hasAllOwners_ = false;
};

}  // namespace velk::platform::storage
