/// The two hives of the registry and how they are worked on.
#pragma once

#include <array>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include <winbase.h>
#include <winreg.h>

#include "platform/registry/hive_store.h"
#include "platform/system/owned_file.h"

namespace velk::platform::registry {

enum class HiveName { user, machine };

/// Runs the body of a published function, and gives the status for what it throws.
template <typename Body>
LSTATUS answer(Body&& body) noexcept {
    return guarded<ERROR_NOT_ENOUGH_MEMORY, ERROR_REGISTRY_IO_FAILED>(body);
}

/// Another number whenever a hive may have changed.
using HiveStamp = std::uint64_t;

/// One hive of this process: what its file last held. Readers use it under a
/// lock of this process and look whether the file's name shows another one.
class Hive {
  public:
    explicit Hive(HiveName name);

    /// The hive of this name; made on first use and never destroyed.
    static Hive& named(HiveName name);

    /// Why the file does not count or could not be used when this process last
    /// needed it, with its path; empty when all was well.
    std::string problem();

  private:
    friend class HiveChange;
    friend class HiveSession;

    HiveDatabase& database();
    void load();
    void note(std::string const& problem);
    bool isWritable() const { return !isRefused_ && file_.canBeReplaced(); }

    std::mutex lock_;
    OwnedFile const file_;
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
    HiveStamp stamp() const { return stamp_ + database_->changes(); }
    /// A step of it could not be undone: it will not be committed.
    void spoil() { isSpoiled_ = true; }
    void commit();

  private:
    struct EndTurn {
        void operator()(Hive* hive) const noexcept;
    };
    /// The turn among the threads of this process.
    using Turn = std::unique_ptr<Hive, EndTurn>;
    static Turn turnAt(Hive& hive, OwnedFileTurn::Deadline deadline);

    OwnedFileTurn::Deadline const deadline_;
    Turn const hive_;
    pid_t const process_ = getpid();
    std::unique_ptr<OwnedFileTurn> fileTurn_;
    std::unique_ptr<HiveDatabase> database_;
    HiveStamp stamp_ = 0;
    bool isSpoiled_ = false;
};

/// Changes of the hives that are made together. Belongs to the thread that makes it.
class Transaction {
  public:
    /// The one that the calling thread works in, or null.
    static Transaction* ofThread();

    /// The change of a hive, begun now if it is to be written to; null when the
    /// hive is only read and was not changed yet.
    HiveChange* change(HiveName name, bool toWrite);

    bool isOfThisThread() const { return thread_ == GetCurrentThreadId(); }
    bool hasEnded() const { return hasEnded_; }
    /// Fails with ERROR_TRANSACTION_NOT_ACTIVE when it has ended before.
    void end(bool commits);

  private:
    std::array<std::unique_ptr<HiveChange>, 2> changes_;
    DWORD const thread_ = GetCurrentThreadId();
    bool hasEnded_ = false;
};

enum class Purpose { read, write };

/// A turn at a hive, to read or to make one change. In a transaction of the
/// thread it works on what that will commit. A thread holds at most one session
/// at a time, and calls nothing foreign meanwhile.
class HiveSession : public HiveStore {
  public:
    /// Fails with ERROR_ACCESS_DENIED when a write is meant and not permitted.
    HiveSession(HiveName name, Purpose purpose);
    HiveSession(HiveSession const&) = delete;
    HiveSession& operator=(HiveSession const&) = delete;
    /// Undoes what was not committed.
    ~HiveSession();

    void commit();
    HiveStamp stamp() const { return change_ != nullptr ? change_->stamp() : hive_.stamp_; }
    /// Whether the hive may be written to, or may be made for that.
    bool isWritable() const { return change_ != nullptr || hive_.isWritable(); }

  private:
    Hive& hive_;
    std::unique_lock<std::mutex> guard_;
    std::unique_ptr<HiveChange> own_;
    /// The change that the session works on; null when it reads the file.
    HiveChange* change_ = nullptr;
    bool isStep_ = false;
};

}  // namespace velk::platform::registry
