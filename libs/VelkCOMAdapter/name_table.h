/// The DISPIDs of member names.
#pragma once

#include <vector>

#include "com/owners.h"
#include "host/com_string.h"
#include "host/read_write_lock.h"
#include "name_store.h"

/// The names that native clients asked for, all facades of the process
/// together: the first one is 100, each new one the next number. Names are
/// compared code unit by code unit and never forgotten, as long as the table
/// lives. Thread-safe.
class PDspMapData {
  public:
    /// The table of this module, made on first use. The runtime's global
    /// clean-up destroys it; the next use makes a new, empty one.
    static PDspMapData& instance();

    /// Changes whenever a table is destroyed: what was learnt from a table is
    /// good as long as this stays the same. Thread-safe.
    static unsigned generation() noexcept;

    PDspMapData() = default;
    ~PDspMapData();
    PDspMapData(PDspMapData const&) = delete;
    PDspMapData& operator=(PDspMapData const&) = delete;

    /// The number of `name`, a new one when it has none. Takes the same time
    /// however many names there are. Throws std::bad_alloc, also when there
    /// are no numbers left; the table is unchanged then.
    DISPID idOf(velk::com::TextView name);

    /// Copies the name behind a number; false for a number not given out. The
    /// copy shares nothing with the table or with other copies, so that calls
    /// on different threads do not touch common memory.
    bool nameOf(DISPID id, mzComStringC& name) const;

  private:
    // Open addressing: a name's place follows from its hash, later places are
    // tried in order. Names of usual length stand in the slot itself, so that
    // a lookup among very many names costs one read of distant memory.
    struct Slot {
        static constexpr std::size_t mostCharacters = 13;
        static constexpr std::uint16_t storedElsewhere = 0xffff;

        struct Elsewhere {
            std::uint32_t hash;
            velk::adapter::NameStore::Reference reference;
        };

        DISPID id;             // 0 in an unused slot
        std::uint16_t length;  // in characters, or storedElsewhere
        OLECHAR text[mostCharacters];

        Elsewhere elsewhere() const noexcept;
        void setElsewhere(Elsewhere const& place) noexcept;
    };
    static_assert(sizeof(Slot) == 32);

    velk::com::TextView textOf(Slot const& slot) const noexcept;
    std::uint32_t hashOf(Slot const& slot) const noexcept;
    bool holds(Slot const& slot, velk::com::TextView name, std::uint32_t hash) const noexcept;
    DISPID find(velk::com::TextView name, std::uint32_t hash) const noexcept;
    DISPID add(velk::com::TextView name, std::uint32_t hash);
    bool isFull() const noexcept;
    void grow();

    mutable PReadWriteLock tableLock_;
    velk::adapter::NameStore longNames_;
    std::vector<std::uint32_t> namesById_;  // the slot of each number
    velk::adapter::LargeArray<Slot> idsByName_;
    std::size_t slotCount_ = 0;  // a power of two, or 0 before the first name
};
