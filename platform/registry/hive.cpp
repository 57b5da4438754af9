#include "platform/registry/hive.h"

#include <atomic>
#include <cerrno>

#include <pthread.h>
#include <velk_registry.h>

#include "platform/system/environment.h"
#include "platform/system/trace.h"

namespace velk::platform::registry {
namespace {

// How long a writer waits for others before it fails.
constexpr std::chrono::seconds patience{15};
// Of the files in which former versions kept changes.
constexpr char const* logEndings[] = {"-wal", "-shm"};
constexpr HiveName bothHives[] = {HiveName::user, HiveName::machine};

HiveStamp newStamp() {
    // Between them there is room for the steps of a change.
    static std::atomic<HiveStamp> last{0};
    return last += HiveStamp{1} << 32;
}

/// Programs that run with more rights than their user have no user's hive.
std::string folderOf(HiveName name) {
    if (auto chosen = pathVariable("VELK_REGISTRY_DIR"); !chosen.empty()) return chosen;
    if (name == HiveName::machine) return "/var/lib/velkcomadapter";
    if (isPrivileged()) return {};
    auto const data = pathVariable("XDG_DATA_HOME");
    return (data.empty() ? homeFolder() + "/.local/share" : data) + "/velkcomadapter";
}

[[noreturn]] void failWithErrno(int number) {
    switch (number) {
        case EBUSY:
            fail(ERROR_BUSY);
        case ENODATA:
            fail(ERROR_REGISTRY_CORRUPT);
        case ENOSPC:
        case EDQUOT:
            fail(ERROR_DISK_FULL);
        case ENOMEM:
            fail(ERROR_NOT_ENOUGH_MEMORY);
        case EMFILE:
        case EIO:
            fail(ERROR_REGISTRY_IO_FAILED);
        default:
            fail(ERROR_ACCESS_DENIED);
    }
}

/// Runs what works on files, and gives its failures their published numbers.
template <typename Work>
auto onFiles(Work work) {
    try {
        return work();
    } catch (SystemFailure const& failure) {
        failWithErrno(failure.number);
    }
}

}  // namespace

Hive::Hive(HiveName name)
    : file_(name == HiveName::machine ? OwnedFile(folderOf(name), "machine.db", 0644, 0755)
                                      : OwnedFile(folderOf(name), "user.db", 0600, 0700)),
      isMachine_(name == HiveName::machine) {}

Hive& Hive::named(HiveName name) {
    static auto& user = *new Hive(HiveName::user);
    static auto& machine = *new Hive(HiveName::machine);
    // A forked child finds no hive locked, and none that a thread of its parent
    // is changing.
    static int const failure = pthread_atfork([] { user.lock_.lock(), machine.lock_.lock(); },
                                              [] { user.lock_.unlock(), machine.lock_.unlock(); },
                                              [] {
                                                  for (auto* hive : {&user, &machine}) {
                                                      hive->isBeingChanged_ = false;
                                                      hive->lock_.unlock();
                                                  }
                                              });
    require(failure == 0, ERROR_NOT_ENOUGH_MEMORY);
    return name == HiveName::user ? user : machine;
}

std::string Hive::problem() {
    std::lock_guard const guard(lock_);
    return problem_;
}

void Hive::note(std::string const& problem) {
    auto text = problem.empty() ? problem : file_.path() + ' ' + problem;
    if (text == problem_) return;
    problem_ = std::move(text);
    if (!problem_.empty()) trace(problem_);
}

void Hive::load() {
    auto const opened = onFiles([&] { return file_.open(); });
    auto const& [file, reason] = opened;
    isRefused_ = !reason.empty();
    auto const size = file < 0 ? 0 : onFiles([&] { return sizeOf(opened.first); });
    if (size == 0) {
        database_ = std::make_unique<HiveDatabase>();
        HiveStore(database_.get()).addFirstKeys(isMachine_);
    } else {
        auto image = HiveImage::ofSize(size);
        onFiles([&] { readAll(opened.first, image.bytes()); });
        auto const log = file_.path() + "-wal";
        bool const hasLog = image.hasLog() && access(log.c_str(), F_OK) == 0;
        if (hasLog) image = HiveImage::withLog(file_.path());
        database_ = std::make_unique<HiveDatabase>(std::move(image));
    }
    note(isRefused_ ? "does not count: " + reason : "");
}

HiveDatabase& Hive::database() {
    auto const now = file_.mark();
    bool const isKnown = (database_ != nullptr && !isRefused_) || damage_ != ERROR_SUCCESS;
    if (!isKnown || now != mark_) {
        database_.reset();
        damage_ = ERROR_SUCCESS;
        // Taken before the file is read: if it is replaced meanwhile, the next
        // look tells.
        mark_ = now;
        stamp_ = newStamp();
        try {
            load();
        } catch (Failure const& failure) {
            bool const isForeign = failure.code == ERROR_BADDB;
            bool const isDamaged = failure.code == ERROR_REGISTRY_CORRUPT;
            if (isForeign || isDamaged) damage_ = failure.code;
            note(isForeign ? "is no registry" : isDamaged ? "is damaged" : "cannot be read");
            throw;
        }
    }
    require(damage_ == ERROR_SUCCESS, damage_);
    return *database_;
}

HiveChange::Turn HiveChange::turnAt(Hive& hive, OwnedFileTurn::Deadline deadline) {
    bool const isOurs = tryUntil(deadline, [&] {
        std::lock_guard const guard(hive.lock_);
        // Before anything is made on its behalf.
        hive.database();
        require(hive.isWritable(), ERROR_ACCESS_DENIED);
        return !std::exchange(hive.isBeingChanged_, true);
    });
    if (isOurs) return Turn(&hive);
    std::lock_guard const guard(hive.lock_);
    hive.note("is being changed by this process");
    fail(ERROR_BUSY);
}

void HiveChange::EndTurn::operator()(Hive* hive) const noexcept {
    std::lock_guard const guard(hive->lock_);
    hive->isBeingChanged_ = false;
}

HiveChange::HiveChange(HiveName name)
    : deadline_(std::chrono::steady_clock::now() + patience),
      hive_(turnAt(Hive::named(name), deadline_)) {
    std::string holder;
    try {
        fileTurn_ = onFiles(
            [&] { return std::make_unique<OwnedFileTurn>(hive_->file_, deadline_, holder); });
    } catch (Failure const&) {
        std::lock_guard const guard(hive_->lock_);
        if (!holder.empty()) hive_->note("is being changed by process " + holder);
        throw;
    }
    std::lock_guard const guard(hive_->lock_);
    auto const& now = hive_->database();
    require(!hive_->isRefused_, ERROR_ACCESS_DENIED);
    database_ = now.copy();
    database_->run("BEGIN");
    stamp_ = newStamp();
}

void HiveChange::commit() {
    // In a forked child the turn is the parent's.
    require(process_ == getpid(), ERROR_NOT_SUPPORTED);
    // Nothing but a lack of memory takes more back than a step.
    require(!isSpoiled_ && database_->isInTransaction(), ERROR_NOT_ENOUGH_MEMORY);
    if (database_->changes() == 0) return;
    database_->run("COMMIT");
    onFiles([&] { fileTurn_->replace(database_->bytes(), logEndings); });
    std::lock_guard const guard(hive_->lock_);
    hive_->database_ = std::move(database_);
    hive_->mark_ = hive_->file_.mark();
    hive_->stamp_ = newStamp();
    hive_->damage_ = ERROR_SUCCESS;
    hive_->note("");
}

HiveSession::HiveSession(HiveName name, Purpose purpose)
    : HiveStore(nullptr), hive_(Hive::named(name)) {
    bool const toWrite = purpose == Purpose::write;
    if (auto* const transaction = Transaction::ofThread()) {
        change_ = transaction->change(name, toWrite);
    } else if (toWrite) {
        own_ = std::make_unique<HiveChange>(name);
        change_ = own_.get();
    }
    if (change_ == nullptr) {
        guard_ = std::unique_lock(hive_.lock_);
        database_ = &hive_.database();
        return;
    }
    database_ = &change_->database();
    if (toWrite && !own_) database_->run("SAVEPOINT step");
    isStep_ = toWrite && !own_;
}

HiveSession::~HiveSession() {
    if (!isStep_) return;
    try {
        database_->run("ROLLBACK TO step");
        database_->run("RELEASE step");
    } catch (...) {
        change_->spoil();
    }
}

void HiveSession::commit() {
    if (own_) return own_->commit();
    database_->run("RELEASE step");
    isStep_ = false;
}

}  // namespace velk::platform::registry

using namespace velk::platform;
using namespace velk::platform::registry;

DWORD VelkRegistryProblems(char* text, DWORD capacity) {
    std::string lines;
    answer([&] {
        for (auto const name : bothHives) {
            auto const problem = Hive::named(name).problem();
            if (!problem.empty()) lines += problem + '\n';
        }
    });
    if (capacity != 0) text[lines.copy(text, capacity - 1)] = '\0';
    return static_cast<DWORD>(lines.size());
}
