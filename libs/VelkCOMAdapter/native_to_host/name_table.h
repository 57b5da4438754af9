/// The DISPIDs of member names.
#pragma once

#include <deque>
#include <string>
#include <unordered_map>

#include "com/owners.h"
#include "host/com_string.h"
#include "host/read_write_lock.h"

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
    DISPID add(velk::com::TextView name);

    mutable PReadWriteLock tableLock_;
    std::deque<std::basic_string<OLECHAR>> namesById_;  // these stay where they are
    std::unordered_map<velk::com::TextView, DISPID> idsByName_;
};
