#include "platform/registry/hive_database.h"

#include <cctype>
#include <cerrno>
#include <chrono>
#include <thread>

#include <sys/stat.h>

#include "platform/registry/names.h"

namespace velk::platform::registry {
namespace {

// "VelR", which marks the file as ours, and the version of the tables.
constexpr std::int64_t applicationId = 0x56656C52;
constexpr std::int64_t tablesVersion = 1;

// How long an operation waits for other processes before it fails.
constexpr std::chrono::seconds patience{15};

constexpr char const* createTables[] = {
    "CREATE TABLE keys(id INTEGER PRIMARY KEY AUTOINCREMENT, parent INTEGER NOT NULL,"
    " folded BLOB NOT NULL, name BLOB NOT NULL, class BLOB, depth INTEGER NOT NULL,"
    " written INTEGER NOT NULL, UNIQUE(parent, folded))",
    "CREATE TABLE data(key INTEGER NOT NULL, folded BLOB NOT NULL, name BLOB NOT NULL,"
    " type INTEGER NOT NULL, bytes BLOB NOT NULL, PRIMARY KEY(key, folded)) WITHOUT ROWID",
    "PRAGMA application_id = 1449487442",
    "PRAGMA user_version = 1",
};
static_assert(applicationId == 1449487442 && tablesVersion == 1);

bool exists(std::string const& path) {
    struct stat info;
    if (stat(path.c_str(), &info) == 0) return true;
    // What cannot even be looked at is not known to be missing.
    failIf(errno == EACCES, ERROR_ACCESS_DENIED);
    return false;
}

bool hasContent(std::string const& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0 && info.st_size > 0;
}

/// A path as SQLite takes it in the form "file:...".
std::string unchangingUri(std::string const& path) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string uri = "file:";
    for (char const letter : path) {
        auto const byte = static_cast<unsigned char>(letter);
        bool const plain = letter == '/' || letter == '.' || (std::isalnum(byte) && byte < 0x80);
        if (plain) {
            uri.push_back(letter);
        } else {
            uri.append({'%', digits[byte >> 4], digits[byte & 15]});
        }
    }
    return uri + "?immutable=1";
}

}  // namespace

HiveDatabase::HiveDatabase(std::string const& path, bool isMachine, bool mayMake)
    : isMachine_(isMachine) {
    open(path, mayMake);
}

void HiveDatabase::open(std::string const& path, bool mayMake) {
    bool const there = exists(path);
    if (!there && !mayMake) {
        openInMemory();
        return;
    }
    int const flags = SQLITE_OPEN_READWRITE | (mayMake ? SQLITE_OPEN_CREATE : 0);
    if (!tryOpen(path, flags, HiveAccess::writable)) {
        failIf(there, ERROR_ACCESS_DENIED);
        openInMemory();
        return;
    }
    if (sqlite3_db_readonly(database_.get(), "main") == 1) access_ = HiveAccess::readOnly;
    bool registry = false;
    try {
        registry = isRegistryAtOneTime();
    } catch (RegistryError const& error) {
        // A file that nobody may write to lacks the companions that tell of
        // writers; without writers it can be read as it stands.
        bool const noCompanions = access_ == HiveAccess::readOnly && error.status != ERROR_BADDB &&
                                  error.status != ERROR_REGISTRY_CORRUPT &&
                                  !hasContent(path + "-wal");
        if (!noCompanions) throw;
        failIf(!tryOpen(unchangingUri(path), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI,
                        HiveAccess::unchanging),
               ERROR_ACCESS_DENIED);
        registry = isRegistry();
    }
    if (access_ != HiveAccess::writable) {
        if (!registry) openInMemory();
        return;
    }
    if (!isInWriteAheadMode()) {
        // Switching writes to the file, which a damaged one must not suffer.
        if (registry) checkWhole();
        switchToWriteAheadLog();
    }
    execute("PRAGMA synchronous = NORMAL");
    if (!registry) createContent();
    // From here on the file is known to be ours, and may be tidied on closing.
    sqlite3_db_config(database_.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
}

bool HiveDatabase::tryOpen(std::string const& path, int flags, HiveAccess access) {
    prepared_.clear();
    sqlite3* opened = nullptr;
    int const result = sqlite3_open_v2(
        path.c_str(), &opened, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_PRIVATECACHE, nullptr);
    database_.reset(opened);
    failIf(result == SQLITE_NOMEM, ERROR_NOT_ENOUGH_MEMORY);
    if (result != SQLITE_OK) return false;
    access_ = access;
    prepareConnection();
    return true;
}

void HiveDatabase::openInMemory() {
    if (!tryOpen(":memory:", SQLITE_OPEN_READWRITE, HiveAccess::absent)) fail(ERROR_CANTOPEN);
    createContent();
}

void HiveDatabase::prepareConnection() {
    auto* const database = database_.get();
    sqlite3_extended_result_codes(database, 1);
    sqlite3_busy_timeout(database, static_cast<int>(std::chrono::milliseconds(patience).count()));
    // The file may come from anyone: nothing in it may run or be trusted.
    sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    // The companions of the file stay when the last writer goes, so that those
    // who may not make files in the folder can read.
    int persist = 1;
    sqlite3_file_control(database, "main", SQLITE_FCNTL_PERSIST_WAL, &persist);
    execute("PRAGMA cell_size_check = ON");
}

Statement HiveDatabase::statement(char const* sql) {
    auto& prepared = prepared_[sql];
    if (prepared == nullptr) {
        sqlite3_stmt* made = nullptr;
        int const result =
            sqlite3_prepare_v3(database_.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &made, nullptr);
        prepared.reset(made);
        if (result != SQLITE_OK) failWithSqlite(result);
    }
    return {database_.get(), prepared.get()};
}

std::int64_t HiveDatabase::foreignChanges() {
    auto pragma = statement("PRAGMA data_version");
    return pragma.step() ? pragma.number(0) : 0;
}

bool HiveDatabase::isRegistry() {
    auto const single = [&](char const* sql) {
        auto query = statement(sql);
        return query.step() ? query.number(0) : 0;
    };
    std::int64_t const id = single("PRAGMA application_id");
    std::int64_t const version = single("PRAGMA user_version");
    if (id == applicationId && version == tablesVersion) return true;
    bool const fresh = id == 0 && version == 0 && single("SELECT count(*) FROM sqlite_schema") == 0;
    failIf(!fresh, ERROR_BADDB);
    return false;
}

bool HiveDatabase::isRegistryAtOneTime() {
    // Another process may be creating the content between two of the questions.
    execute("BEGIN");
    bool const registry = isRegistry();
    execute("COMMIT");
    return registry;
}

bool HiveDatabase::isInWriteAheadMode() {
    auto query = statement("PRAGMA journal_mode");
    return query.step() && query.bytes(0) == "wal";
}

void HiveDatabase::checkWhole() {
    auto query = statement("PRAGMA quick_check(1)");
    failIf(!query.step() || query.bytes(0) != "ok", ERROR_REGISTRY_CORRUPT);
}

void HiveDatabase::switchToWriteAheadLog() {
    // Switching needs the file for itself, and does not wait for that.
    auto const end = std::chrono::steady_clock::now() + patience;
    for (;;) {
        int const result =
            sqlite3_exec(database_.get(), "PRAGMA journal_mode = WAL", nullptr, nullptr, nullptr);
        if (result == SQLITE_OK) return;
        bool const busy = (result & 0xFF) == SQLITE_BUSY || (result & 0xFF) == SQLITE_LOCKED;
        if (!busy || std::chrono::steady_clock::now() > end) failWithSqlite(result);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

void HiveDatabase::createContent() {
    execute("BEGIN IMMEDIATE");
    // Somebody else may have been first.
    if (!isRegistry()) {
        for (auto const* sql : createTables) {
            if (sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
                failWithSqlite(sqlite3_extended_errcode(database_.get()));
            }
        }
        insertFirstKeys();
    }
    execute("COMMIT");
}

void HiveDatabase::insertFirstKeys() {
    struct FirstKey {
        char16_t const* name;
        std::int64_t parent;
        int depth;
    };
    // The ids are those of a fresh table: 1 for the first, and so on.
    static constexpr FirstKey keys[] = {
        {u"", 0, 0},       {u"Software", 1, 1},          {u"Classes", 2, 2},
        {u"System", 1, 1}, {u"CurrentControlSet", 4, 2}, {u"Hardware Profiles", 5, 3},
        {u"Current", 6, 4}};
    constexpr std::size_t ofUser = 3;
    std::size_t const count = isMachine_ ? std::size(keys) : ofUser;
    for (auto const& key : std::span(keys).first(count)) {
        statement("INSERT INTO keys(parent, folded, name, depth, written) VALUES(?,?,?,?,?)")
            .bind(key.parent)
            .bind(std::string_view(Name(key.name).folded))
            .bind(std::u16string_view(key.name))
            .bind(std::int64_t{key.depth})
            .bind(currentFileTime())
            .run();
    }
}

}  // namespace velk::platform::registry
