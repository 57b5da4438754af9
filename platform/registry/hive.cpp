#include "platform/registry/hive.h"

#include <cstdlib>
#include <filesystem>

#include <pthread.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velk::platform::registry {
namespace {

/// An environment variable; empty when unset, and in programs that run with
/// more rights than their user.
std::string environment(char const* name) {
    char const* const value = secure_getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

std::string homeFolder() {
    if (auto home = environment("HOME"); !home.empty()) return home;
    passwd const* const user = getpwuid(getuid());
    return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "/";
}

std::string userFolder() {
    auto const data = environment("XDG_DATA_HOME");
    return (data.empty() ? homeFolder() + "/.local/share" : data) + "/velkcomadapter";
}

std::string hivePath(HiveName name) {
    auto const chosen = environment("VELK_REGISTRY_DIR");
    bool const user = name == HiveName::user;
    auto const usual = user ? userFolder() : std::string("/var/lib/velkcomadapter");
    return (chosen.empty() ? usual : chosen) + (user ? "/user.db" : "/machine.db");
}

}  // namespace

/// SQLite must not be carried into a forked child: neither side would notice
/// the other's locks. Both sides open their files anew.
struct ForkGuard {
    static void prepare() {
        for (auto const name : {HiveName::user, HiveName::machine}) {
            Hive& hive = Hive::named(name);
            hive.lock_.lock();
            hive.database_.reset();
        }
    }
    static void proceed() {
        for (auto const name : {HiveName::machine, HiveName::user}) {
            Hive::named(name).lock_.unlock();
        }
    }
};

Hive::Hive(HiveName name) : path_(hivePath(name)), isMachine_(name == HiveName::machine) {}

Hive& Hive::named(HiveName name) {
    static auto& user = *new Hive(HiveName::user);
    static auto& machine = *new Hive(HiveName::machine);
    static bool const isGuarded = [] {
        failIf(pthread_atfork(&ForkGuard::prepare, &ForkGuard::proceed, &ForkGuard::proceed) != 0,
               ERROR_NOT_ENOUGH_MEMORY);
        return true;
    }();
    static_cast<void>(isGuarded);
    return name == HiveName::user ? user : machine;
}

std::optional<Hive::FileMark> Hive::fileMark() const {
    struct stat info;
    if (stat(path_.c_str(), &info) != 0) return std::nullopt;
    return FileMark{info.st_dev, info.st_ino, info.st_size,
                    info.st_mtim.tv_sec * 1'000'000'000 + info.st_mtim.tv_nsec};
}

bool Hive::isStillTheSame() const {
    auto const now = fileMark();
    if (now.has_value() != mark_.has_value()) return false;
    if (!now) return true;
    if (now->device != mark_->device || now->number != mark_->number) return false;
    // Where writers cannot be noticed otherwise, the file itself tells.
    bool const noticed = database_->access() != HiveAccess::unchanging;
    return noticed || (now->size == mark_->size && now->changed == mark_->changed);
}

void Hive::makeFolder() const {
    auto const folder = std::filesystem::path(path_).parent_path();
    std::error_code error;
    if (!std::filesystem::create_directories(folder, error)) return;
    using std::filesystem::perms;
    // The machine's classes are everyone's to see, the user's are their own.
    constexpr perms seen = perms::owner_all | perms::group_read | perms::group_exec |
                           perms::others_read | perms::others_exec;
    std::filesystem::permissions(folder, isMachine_ ? seen : perms::owner_all, error);
}

bool Hive::canBeMade() const {
    auto folder = std::filesystem::path(path_).parent_path();
    std::error_code error;
    while (folder.has_relative_path() && !std::filesystem::exists(folder, error)) {
        folder = folder.parent_path();
    }
    return eaccess(folder.empty() ? "." : folder.c_str(), W_OK | X_OK) == 0;
}

HiveDatabase& Hive::database(bool toWrite) {
    // A file that could not be written to when it was opened may allow it now.
    bool const useless = database_ && toWrite && database_->access() != HiveAccess::writable;
    if (database_ && !useless && isStillTheSame()) return *database_;
    database_.reset();
    if (toWrite) makeFolder();
    database_.emplace(path_, isMachine_, toWrite);
    mark_ = fileMark();
    ++opened_;
    return *database_;
}

HiveSession::HiveSession(HiveName name, Purpose purpose)
    : hive_(Hive::named(name)),
      guard_(hive_.lock_),
      database_(&hive_.database(purpose == Purpose::write)) {
    if (purpose == Purpose::read) {
        database_->execute("BEGIN");
        return;
    }
    failIf(database_->access() != HiveAccess::writable, ERROR_ACCESS_DENIED);
    database_->execute("BEGIN IMMEDIATE");
}

bool HiveSession::isWritable() const {
    auto const access = database_->access();
    return access == HiveAccess::writable || (access == HiveAccess::absent && hive_.canBeMade());
}

HiveSession::~HiveSession() {
    if (!database_->isInTransaction()) return;
    try {
        database_->execute("ROLLBACK");
    } catch (...) {
        // Then the connection is beyond use, and closing it undoes the same; the
        // next turn opens a new one.
        hive_.database_.reset();
    }
}

void HiveSession::commit() {
    database_->execute("COMMIT");
    ++hive_.ownChanges_;
}

HiveStamp HiveSession::stamp() {
    return {hive_.opened_, hive_.ownChanges_, database_->foreignChanges()};
}

}  // namespace velk::platform::registry
