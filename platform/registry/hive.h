/// The two hives of the registry and how they are worked on.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/registry/hive_database.h"

namespace velk::platform::registry {

enum class HiveName { user, machine };

/// Tells whether a hive has changed between two looks at it.
struct HiveStamp {
    std::int64_t opened = 0;
    std::int64_t ownChanges = 0;
    std::int64_t foreignChanges = 0;
    bool operator==(HiveStamp const&) const = default;
};

/// One hive of this process: its file, which the first write makes, and the lock under which it is
/// used.
class Hive {
  public:
    explicit Hive(HiveName name);

    /// The hive of this name; made on first use and never destroyed.
    static Hive& named(HiveName name);

  private:
    friend class HiveSession;
    friend struct ForkGuard;

    /// What tells that the file is still the one that was opened.
    struct FileMark {
        std::uint64_t device = 0;
        std::uint64_t number = 0;
        std::int64_t size = 0;
        std::int64_t changed = 0;
    };

    HiveDatabase& database(bool toWrite);
    bool isStillTheSame() const;
    std::optional<FileMark> fileMark() const;
    void makeFolder() const;
    bool canBeMade() const;

    std::mutex lock_;
    std::string const path_;
    bool const isMachine_;
    std::optional<HiveDatabase> database_;
    std::optional<FileMark> mark_;
    std::int64_t opened_ = 0;
    std::int64_t ownChanges_ = 0;
};

/// A turn at a hive: holds its lock and one transaction. A thread holds at
/// most one session at a time, and calls nothing foreign meanwhile.
class HiveSession {
  public:
    enum class Purpose { read, write };

    /// Fails with ERROR_ACCESS_DENIED when a write is meant and not permitted.
    HiveSession(HiveName name, Purpose purpose);
    HiveSession(HiveSession const&) = delete;
    HiveSession& operator=(HiveSession const&) = delete;
    /// Undoes what was not committed.
    ~HiveSession();

    void commit();
    HiveStamp stamp();
    /// Whether the hive may be written to, or may be made for that.
    bool isWritable() const;
    HiveDatabase& database() { return *database_; }

  private:
    Hive& hive_;
    std::unique_lock<std::mutex> guard_;
    HiveDatabase* database_;
};

}  // namespace velk::platform::registry
