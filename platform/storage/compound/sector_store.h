/// The sectors of a compound file, and changing them without harm.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <unordered_map>
#include <vector>

#include "platform/storage/compound/chain_survey.h"
#include "platform/storage/compound/file_access.h"

namespace velk::platform::storage {

/// The sectors of one file with the table that links them.
///
/// What the last commit left is never written to: a change takes sectors that
/// are free, and the header, written last and in one piece, makes it count.
/// Until then the file holds the former state, whole. What a change that does
/// not come to count has written to free sectors is put back, and what it has
/// added is cut off. Tables are read when they are first needed; the first
/// change asks a survey of all of them what it must leave alone.
///
/// Every member fails with a Failure. Not thread-safe.
class SectorStore {
  public:
    /// Reads the header. The file must outlive this.
    explicit SectorStore(FileAccess& file);

    Header& header() noexcept { return header_; }
    std::size_t sectorSize() const noexcept { return sectorSize_; }
    /// How many sectors the file can have at most: no chain is longer.
    std::uint64_t sectorLimit() const noexcept { return sectorLimit_; }

    /// What follows a sector in its chain. STG_E_DOCFILECORRUPT for one that
    /// the file does not have.
    SectorId next(SectorId sector);
    void link(SectorId sector, SectorId next);
    /// The same of all sectors, as the last commit left them, in one go.
    std::vector<SectorId> readTable();

    /// A sector that may be written to, the end of a chain.
    SectorId allocate();
    /// Gives up a sector; used again after the next commit at the earliest,
    /// unless it was never committed.
    void release(SectorId sector);
    /// Whether a sector was allocated since the last commit.
    bool isFresh(SectorId sector);

    void read(SectorId sector, std::size_t offset, MutableBytes target);
    /// Writes to a fresh sector.
    void write(SectorId sector, std::size_t offset, Bytes source);

    /// What no change may take or change. Reads all tables the first time.
    Survey const& survey();

    /// Counts what is changed in memory, by the owners of other tables too.
    void touch() noexcept { ++touches_; }
    std::uint64_t touches() const noexcept { return touches_; }

    /// The sectors that hold the tables of sectors and the lists of those.
    std::vector<SectorId> const& tableSectors() const noexcept { return pageSectors_; }
    std::vector<SectorId> const& listSectors() const noexcept { return difatSectors_; }

    /// Whether anything differs from the last commit.
    bool isChanged() const noexcept { return changed_ || !(header_ == committed_); }

    /// Makes all changes count, or fails and leaves the file as it was. After
    /// a failure nothing can be committed before revert(). STG_E_NOTCURRENT
    /// when somebody else has changed the file.
    void commit();

    /// Forgets all changes since the last commit.
    void revert();

    /// Puts the file back to the bytes of the last commit; what is known of it
    /// in memory stays. Does nothing when somebody else has changed it.
    void restoreFile();

  private:
    enum class State : std::uint8_t { settled, fresh, released };
    /// One sector of the table.
    struct Page {
        std::vector<SectorId> next;
        std::vector<State> states;
        bool isDirty = false;
        bool isPlaced = false;
    };

    std::size_t pageEntries() const noexcept { return sectorSize_ / 4; }
    std::uint64_t positionOf(SectorId sector) const noexcept {
        return (std::uint64_t{sector} + 1) * sectorSize_;
    }
    void load();
    static constexpr std::size_t blockSize = 4096;

    void loadTableLocations();
    bool readFromBlock(std::uint64_t from, MutableBytes target);
    Page& page(std::size_t index);
    Page& findPage(std::size_t index);
    Page& pageOf(SectorId sector) { return page(sector / pageEntries()); }
    SectorId reuse();
    SectorId append();
    void set(SectorId sector, SectorId next, State state);
    void placeTables();
    bool placeDirtyPages();
    bool placeDifat();
    std::size_t difatSectorsNeeded() const noexcept;
    void writeTables();
    void writeDifat();
    void settle() noexcept;
    void rollBack(bool headerIsWritten);
    void keepFormerBytes(SectorId sector);
    bool isFree(SectorId sector, Page const& owner);

    FileAccess& file_;
    Header header_;
    Header committed_;
    std::size_t sectorSize_ = 0;
    std::uint64_t sectorLimit_ = 0;
    /// The block of the file that was read last, and where it begins.
    std::vector<std::byte> block_;
    std::optional<std::uint64_t> blockAt_;
    std::vector<SectorId> pageSectors_;
    std::vector<SectorId> difatSectors_;
    std::unordered_map<std::size_t, Page> pages_;
    /// The one that was asked for last.
    Page* lastPage_ = nullptr;
    std::size_t lastPageIndex_ = 0;
    /// Loaded pages that may still have free sectors.
    std::set<std::size_t> pagesToSearch_;
    std::uint64_t appendAt_ = 0;
    std::optional<Survey> survey_;
    std::uint64_t touches_ = 0;
    /// How long the file was at the last commit, and what stood in the sectors
    /// of it that were written to since.
    std::uint64_t formerSize_ = 0;
    std::unordered_map<SectorId, std::vector<std::byte>> former_;
    /// Where the last of what was written since ends; 0 when nothing was.
    std::uint64_t writtenSize_ = 0;
    bool mayReuse_ = true;
    bool changed_ = false;
    bool locationsChanged_ = false;
    bool difatPlaced_ = false;
    bool failed_ = false;
};

}  // namespace velk::platform::storage
