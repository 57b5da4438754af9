/// The two hives of the registry and how they are worked on.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include <sys/types.h>

#include "platform/registry/hive_file.h"

namespace velk::platform::registry {

/// Another number whenever a hive may have changed.
using HiveStamp = std::uint64_t;

/// One hive of this process: what its file last held. Readers use it under a
/// lock of this process and look whether the file's name shows another one.
class Hive {
  public:
    explicit Hive(HiveName name) : file_(name), isMachine_(name == HiveName::machine) {}

    /// The hive of this name; made on first use and never destroyed.
    static Hive& named(HiveName name);

    /// Why the file does not count or could not be used when this process last
    /// needed it, with its path; empty when all was well.
    std::string problem();

  private:
    friend class HiveChange;
    friend class HiveSession;
    friend struct ForkGuard;

    HiveDatabase& database();
    void load();
    void note(std::string const& problem);

    std::mutex lock_;
    HiveFile const file_;
    bool const isMachine_;
    std::unique_ptr<HiveDatabase> database_;
    std::optional<FileMark> mark_;
    HiveStamp stamp_ = 0;
    /// Of a file that is damaged, as long as it shows.
    LSTATUS damage_ = ERROR_SUCCESS;
    /// The file is not believed, and the database in its place is empty.
    bool isRefused_ = false;
    bool isBeingChanged_ = false;
    std::string problem_;
};

/// One change of a hive: a copy that takes the place of the file when it is
/// committed. Others who want to change the hive wait meanwhile.
class HiveChange {
  public:
    /// Fails with ERROR_ACCESS_DENIED when it is not permitted, with ERROR_BUSY
    /// when it is somebody else's turn for too long.
    explicit HiveChange(HiveName name);

    HiveDatabase& database() { return *database_; }
    HiveStamp stamp() const { return stamp_; }
    void renewStamp();
    /// A step of it could not be undone: it will not be committed.
    void spoil() { isSpoiled_ = true; }
    void commit();

  private:
    /// The turn among the threads of this process.
    class Turn {
      public:
        Turn(Hive& hive, HiveFileLock::Deadline deadline);
        Turn(Turn const&) = delete;
        Turn& operator=(Turn const&) = delete;
        ~Turn();

      private:
        Hive& hive_;
    };

    Hive& hive_;
    pid_t const process_;
    HiveFileLock::Deadline const deadline_;
    Turn const turn_;
    std::unique_ptr<HiveFileLock> lock_;
    std::unique_ptr<HiveDatabase> database_;
    HiveStamp stamp_ = 0;
    bool isSpoiled_ = false;
};

/// A turn at a hive, to read or to make one change. In a transaction of the
/// thread it works on what that will commit. A thread holds at most one session
/// at a time, and calls nothing foreign meanwhile.
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
    HiveStamp stamp() const { return change_ != nullptr ? change_->stamp() : hive_.stamp_; }
    /// Whether the hive may be written to, or may be made for that.
    bool isWritable() const;
    HiveDatabase& database() { return *database_; }

  private:
    Hive& hive_;
    std::unique_lock<std::mutex> guard_;
    std::unique_ptr<HiveChange> own_;
    /// The change that the session works on; null when it reads the file.
    HiveChange* change_ = nullptr;
    bool isStep_ = false;
    HiveDatabase* database_ = nullptr;
};

}  // namespace velk::platform::registry
