#include "platform/registry/hive.h"

#include <atomic>
#include <thread>

#include <pthread.h>

#include "platform/registry/transaction.h"
#include "platform/system/trace.h"

namespace velk::platform::registry {
namespace {

// How long a writer waits for others before it fails.
constexpr std::chrono::seconds patience{15};

HiveStamp newStamp() {
    static std::atomic<HiveStamp> last{0};
    return ++last;
}

}  // namespace

/// A forked child finds no hive locked, and none that a thread of its parent is
/// changing.
struct ForkGuard {
    static void prepare() {
        for (auto const name : {HiveName::user, HiveName::machine}) Hive::named(name).lock_.lock();
    }
    static void proceed() {
        for (auto const name : {HiveName::user, HiveName::machine}) {
            Hive::named(name).lock_.unlock();
        }
    }
    static void proceedInChild() {
        for (auto const name : {HiveName::user, HiveName::machine}) {
            Hive::named(name).isBeingChanged_ = false;
        }
        proceed();
    }
};

Hive& Hive::named(HiveName name) {
    static auto& user = *new Hive(HiveName::user);
    static auto& machine = *new Hive(HiveName::machine);
    static bool const isGuarded = [] {
        failIf(pthread_atfork(&ForkGuard::prepare, &ForkGuard::proceed,
                              &ForkGuard::proceedInChild) != 0,
               ERROR_NOT_ENOUGH_MEMORY);
        return true;
    }();
    static_cast<void>(isGuarded);
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
    stamp_ = newStamp();
    damage_ = ERROR_SUCCESS;
    // Before the file is read: if it is replaced meanwhile, the next look tells.
    mark_ = file_.mark();
    try {
        auto [image, reason] = file_.read();
        isRefused_ = !reason.empty();
        database_ = image ? std::make_unique<HiveDatabase>(std::move(*image))
                          : std::make_unique<HiveDatabase>(isMachine_);
        note(reason.empty() ? reason : "does not count: " + reason);
    } catch (RegistryError const& error) {
        damage_ = error.status;
        bool const isHive = error.status != ERROR_BADDB;
        bool const isRead = !isHive || error.status == ERROR_REGISTRY_CORRUPT;
        note(!isRead ? "cannot be read" : isHive ? "is damaged" : "is no registry");
        throw;
    }
}

HiveDatabase& Hive::database() {
    bool const isDamaged = damage_ == ERROR_BADDB || damage_ == ERROR_REGISTRY_CORRUPT;
    bool const isKnown = (database_ != nullptr && !isRefused_) || isDamaged;
    if (!isKnown || file_.mark() != mark_) {
        database_.reset();
        load();
    }
    failIf(damage_ != ERROR_SUCCESS, damage_);
    return *database_;
}

HiveChange::Turn::Turn(Hive& hive, HiveFileLock::Deadline deadline) : hive_(hive) {
    for (;;) {
        {
            std::lock_guard const guard(hive.lock_);
            // Before anything is made on its behalf.
            hive.database();
            failIf(hive.isRefused_ || !hive.file_.canBeReplaced(), ERROR_ACCESS_DENIED);
            if (!hive.isBeingChanged_) {
                hive.isBeingChanged_ = true;
                return;
            }
            if (std::chrono::steady_clock::now() > deadline) {
                hive.note("is being changed by this process");
                fail(ERROR_BUSY);
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

HiveChange::Turn::~Turn() {
    std::lock_guard const guard(hive_.lock_);
    hive_.isBeingChanged_ = false;
}

HiveChange::HiveChange(HiveName name)
    : hive_(Hive::named(name)),
      process_(getpid()),
      deadline_(std::chrono::steady_clock::now() + patience),
      turn_(hive_, deadline_) {
    std::string holder;
    try {
        lock_ = std::make_unique<HiveFileLock>(hive_.file_, deadline_, holder);
    } catch (RegistryError const&) {
        std::lock_guard const guard(hive_.lock_);
        if (!holder.empty()) hive_.note("is being changed by process " + holder);
        throw;
    }
    std::lock_guard const guard(hive_.lock_);
    auto& now = hive_.database();
    failIf(hive_.isRefused_, ERROR_ACCESS_DENIED);
    database_ = std::make_unique<HiveDatabase>(now.copy());
    database_->execute("BEGIN");
    renewStamp();
}

void HiveChange::renewStamp() {
    stamp_ = newStamp();
}

void HiveChange::commit() {
    // In a forked child the turn is the parent's.
    failIf(process_ != getpid(), ERROR_NOT_SUPPORTED);
    failIf(isSpoiled_, ERROR_REGISTRY_IO_FAILED);
    if (!database_->isChanged()) return;
    database_->execute("COMMIT");
    lock_->replace(database_->bytes());
    std::lock_guard const guard(hive_.lock_);
    hive_.database_ = std::move(database_);
    hive_.mark_ = hive_.file_.mark();
    hive_.stamp_ = newStamp();
    hive_.damage_ = ERROR_SUCCESS;
    hive_.note("");
}

HiveSession::HiveSession(HiveName name, Purpose purpose) : hive_(Hive::named(name)) {
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
    isStep_ = toWrite && !own_;
    if (isStep_) database_->execute("SAVEPOINT step");
}

bool HiveSession::isWritable() const {
    return change_ != nullptr || (!hive_.isRefused_ && hive_.file_.canBeReplaced());
}

HiveSession::~HiveSession() {
    if (!isStep_) return;
    try {
        database_->execute("ROLLBACK TO step");
        database_->execute("RELEASE step");
    } catch (...) {
        // Then the transaction cannot be trusted any more.
        change_->spoil();
    }
}

void HiveSession::commit() {
    if (own_) return own_->commit();
    database_->execute("RELEASE step");
    isStep_ = false;
    change_->renewStamp();
}

}  // namespace velk::platform::registry
