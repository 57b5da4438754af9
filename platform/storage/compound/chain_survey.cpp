#include "platform/storage/compound/chain_survey.h"

#include <algorithm>

#include "platform/storage/compound/sector_chain.h"
#include "platform/system/boundary.h"

namespace velk::platform::storage {
namespace {

constexpr std::uint64_t toTheEnd = ~std::uint64_t{0};

/// Gives `otherwise` for what the file does not have.
template <typename Result, typename Body>
Result orIfDamaged(Result otherwise, Body body) {
    try {
        return body();
    } catch (Failure const& error) {
        if (error.code != STG_E_DOCFILECORRUPT) throw;
        return otherwise;
    }
}

/// The sectors of one table while they are followed. `next` gives what a sector
/// leads to: freeSector for one that the table marks free or does not have.
template <typename Next>
class Walk {
  public:
    Walk(std::uint64_t limit, LedTo& found, Next next)
        : seen_(static_cast<std::size_t>(limit)), found_(found), next_(next) {}

    /// The first `most` sectors of a chain that somebody owns.
    void follow(SectorId first, std::uint64_t most) {
        follow(first, most, [&](SectorId again) { return found_.shared.insert(again).second; });
    }
    /// The same for what nobody reaches: it stays, but is in nobody's way.
    void followLoose(SectorId first, std::uint64_t most) {
        follow(first, most, [](SectorId) { return false; });
    }
    /// Behind the last sector that was met.
    std::uint64_t end() const {
        auto const last = std::find(seen_.rbegin(), seen_.rend(), true);
        return static_cast<std::uint64_t>(seen_.rend() - last);
    }

  private:
    /// Ends where `meetAgain` says so of a sector that was met before.
    template <typename MeetAgain>
    void follow(SectorId at, std::uint64_t most, MeetAgain meetAgain) {
        for (; most > 0 && at <= lastSectorId; --most) {
            if (at >= seen_.size()) {
                found_.kept.insert(at);
                return;
            }
            if (seen_[at] && !meetAgain(at)) return;
            seen_[at] = true;
            SectorId const next = next_(at);
            if (next == freeSector) found_.kept.insert(at);
            at = next;
        }
    }

    std::vector<bool> seen_;
    LedTo& found_;
    Next next_;
};

/// Where chains of sectors begin, and how many sectors of each count.
struct Start {
    SectorId first;
    std::uint64_t most;
};

/// Whether no sector is led to from two places, and none that is marked free
/// or not there. Asked of the table as a whole, which is much faster than to
/// follow every chain; what stands behind the end of a stream counts here too.
bool fitsTogether(SectorStore& store, std::vector<Start> const& starts) {
    auto const table = orIfDamaged(std::vector<SectorId>(), [&] { return store.readTable(); });
    auto const limit = static_cast<std::size_t>(store.sectorLimit());
    if (table.size() < limit) return false;
    std::vector<std::uint8_t> isLedTo(limit);
    auto const leadTo = [&](SectorId sector) {
        if (sector > lastSectorId) return true;
        if (sector >= limit || isLedTo[sector] != 0 || table[sector] == freeSector) return false;
        isLedTo[sector] = 1;
        return true;
    };
    return std::all_of(table.begin(), table.begin() + static_cast<std::ptrdiff_t>(limit), leadTo) &&
           std::ranges::all_of(starts, [&](Start const& start) { return leadTo(start.first); });
}

std::vector<Entry> readEntries(SectorStore& store) {
    SectorChain chain(store, store.header().firstDirectorySector());
    std::size_t const each = store.sectorSize();
    std::vector<Entry> entries;
    std::vector<std::byte> sector(each);
    std::size_t const length = chain.length();
    for (std::size_t i = 0; i < length; ++i) {
        chain.read(std::uint64_t{i} * each, sector);
        for (std::size_t at = 0; at < each; at += entrySize) {
            entries.push_back(
                parseEntry(Bytes(sector).subspan(at, entrySize), store.header().hasLargeSizes()));
        }
    }
    return entries;
}

std::vector<bool> linkedEntries(std::vector<Entry> const& entries) {
    std::vector<bool> linked(entries.size());
    std::vector<EntryId> open{rootEntry};
    while (!open.empty()) {
        EntryId const entry = open.back();
        open.pop_back();
        if (entry >= entries.size() || linked[entry]) continue;
        linked[entry] = true;
        open.insert(open.end(), {entries[entry].left, entries[entry].right, entries[entry].child});
    }
    return linked;
}

std::vector<SectorId> readSmallTable(SectorStore& store) {
    return orIfDamaged(std::vector<SectorId>(), [&] {
        SectorChain table(store, store.header().firstMiniFatSector());
        std::vector<std::byte> bytes(table.length() * store.sectorSize());
        table.read(0, bytes);
        return readSectorIds(bytes);
    });
}

std::uint64_t partsOf(std::uint64_t size, std::uint64_t each) {
    return size / each + (size % each != 0);
}

}  // namespace

Survey surveyChains(SectorStore& store) {
    Survey survey;
    auto const smallTable = readSmallTable(store);
    auto const entries = readEntries(store);
    auto const linked = linkedEntries(entries);
    Walk small(smallTable.size(), survey.small,
               [&](SectorId sector) { return smallTable[sector]; });
    std::vector<Start> owned{{store.header().firstDirectorySector(), toTheEnd},
                             {store.header().firstMiniFatSector(), toTheEnd}};
    for (SectorId const table : store.tableSectors()) owned.push_back({table, 1});
    for (SectorId const list : store.listSectors()) owned.push_back({list, 1});
    std::vector<Start> loose;
    for (bool const isLinked : {true, false}) {
        if (!isLinked) survey.smallEnd = small.end();
        for (EntryId id = 0; id < entries.size(); ++id) {
            Entry const& entry = entries[id];
            bool const hasBytes = entry.size != 0 && entry.type != EntryType::unused &&
                                  entry.type != EntryType::storage;
            if (linked[id] != isLinked || !hasBytes) continue;
            SectorId const first = entry.firstSector;
            if (id == rootEntry || entry.size >= smallestBigStream) {
                (isLinked ? owned : loose)
                    .push_back({first, partsOf(entry.size, store.sectorSize())});
            } else if (isLinked) {
                small.follow(first, partsOf(entry.size, miniSectorSize));
            } else {
                small.followLoose(first, partsOf(entry.size, miniSectorSize));
            }
        }
    }
    auto all = owned;
    all.insert(all.end(), loose.begin(), loose.end());
    if (fitsTogether(store, all)) return survey;
    Walk big(store.sectorLimit(), survey.sectors, [&](SectorId sector) {
        return orIfDamaged(freeSector, [&] { return store.next(sector); });
    });
    for (auto const& [first, most] : owned) big.follow(first, most);
    for (auto const& [first, most] : loose) big.followLoose(first, most);
    return survey;
}

}  // namespace velk::platform::storage
