#include "platform/registry/hive_database.h"

#include <cstring>

namespace velk::platform::registry {
namespace {

// How large a hive's file may be: twenty thousand classes, and read in a blink.
constexpr std::int64_t largestHive = 32 << 20;
// Of one row: a value with both forms of its name.
constexpr int largestRow = longestValue + 0x20000;
constexpr int longestSql = 1024;

/// All that a hive's schema has, and how it is made.
struct SchemaEntry {
    std::string_view name;
    char const* sql;
};
constexpr SchemaEntry schema[] = {
    {"keys",
     "CREATE TABLE keys(id INTEGER PRIMARY KEY AUTOINCREMENT, parent INTEGER NOT NULL,"
     " folded BLOB NOT NULL, name BLOB NOT NULL, class BLOB, depth INTEGER NOT NULL,"
     " written INTEGER NOT NULL, UNIQUE(parent, folded))"},
    {"sqlite_autoindex_keys_1", ""},
    {"sqlite_sequence", "CREATE TABLE sqlite_sequence(name,seq)"},
    {"data",
     "CREATE TABLE data(key INTEGER NOT NULL, folded BLOB NOT NULL, name BLOB NOT NULL,"
     " type INTEGER NOT NULL, bytes BLOB NOT NULL, PRIMARY KEY(key, folded)) WITHOUT ROWID"},
};

/// Whether the first page is that of a hive, so that SQLite reads no schema of
/// somebody else's making: format, page size, UTF-8, version of the tables, the
/// mark "VelR", and a schema of one page with as many entries as ours.
bool beginsAsHive(std::span<unsigned char const> bytes) {
    using namespace std::string_view_literals;
    auto const has = [&](std::size_t at, std::string_view expected) {
        return std::memcmp(bytes.data() + at, expected.data(), expected.size()) == 0;
    };
    return bytes.size() >= 4096 && has(0, "SQLite format 3\0\x10\x00"sv) &&
           has(56, "\0\0\0\1\0\0\0\1"sv) && has(68, "VelR"sv) && has(100, "\x0D"sv) &&
           has(103, "\0\x04"sv);
}
static_assert(std::size(schema) == 4);

/// Fails for a result that is no success.
void failUnlessOk(int sqliteResult) {
    require(sqliteResult != SQLITE_IOERR_NOMEM, ERROR_NOT_ENOUGH_MEMORY);
    switch (sqliteResult & 0xFF) {
        case SQLITE_OK:
            return;
        case SQLITE_NOTADB:
            fail(ERROR_BADDB);
        case SQLITE_CORRUPT:
            fail(ERROR_REGISTRY_CORRUPT);
        case SQLITE_FULL:
            fail(ERROR_DISK_FULL);
        case SQLITE_NOMEM:
        case SQLITE_TOOBIG:
            fail(ERROR_NOT_ENOUGH_MEMORY);
        default:
            fail(ERROR_REGISTRY_IO_FAILED);
    }
}

/// Memory of SQLite's own; it is null only where there is none left.
HiveImage taken(unsigned char* memory, std::uint64_t size) {
    require(memory != nullptr, ERROR_NOT_ENOUGH_MEMORY);
    return {std::unique_ptr<unsigned char, HiveImage::Free>(memory), size};
}

/// An open connection, in which a damaged file leads nowhere: nothing in it may
/// run or be trusted.
sqlite3* opened(char const* path, int flags) {
    sqlite3* database = nullptr;
    int const result = sqlite3_open_v2(
        path, &database, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_PRIVATECACHE, nullptr);
    if (result != SQLITE_OK) sqlite3_close_v2(database);
    failUnlessOk(result);
    sqlite3_extended_result_codes(database, 1);
    sqlite3_limit(database, SQLITE_LIMIT_LENGTH, largestRow);
    sqlite3_limit(database, SQLITE_LIMIT_SQL_LENGTH, longestSql);
    sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    return database;
}

}  // namespace

Statement::~Statement() {
    sqlite3_reset(prepared_);
    sqlite3_clear_bindings(prepared_);
}

void Statement::bind(std::int64_t number) {
    failUnlessOk(sqlite3_bind_int64(prepared_, next_++, number));
}

void Statement::bind(std::string_view bytes) {
    // A null address would bind a null; an empty block is something else.
    char const* const begin = bytes.empty() ? "" : bytes.data();
    failUnlessOk(sqlite3_bind_blob64(prepared_, next_++, begin, bytes.size(), SQLITE_TRANSIENT));
}

void Statement::bind(std::u16string_view text) {
    bind({reinterpret_cast<char const*>(text.data()), text.size() * sizeof(char16_t)});
}

bool Statement::step() {
    int const result = sqlite3_step(prepared_);
    if (result != SQLITE_ROW && result != SQLITE_DONE) failUnlessOk(result);
    return result == SQLITE_ROW;
}

std::string_view Statement::bytes(int column) const {
    auto const* const begin = static_cast<char const*>(sqlite3_column_blob(prepared_, column));
    auto const size = static_cast<std::size_t>(sqlite3_column_bytes(prepared_, column));
    return begin == nullptr ? std::string_view() : std::string_view(begin, size);
}

HiveImage HiveImage::ofSize(std::uint64_t size) {
    require(size <= largestHive, ERROR_REGISTRY_CORRUPT);
    return taken(static_cast<unsigned char*>(sqlite3_malloc64(size)), size);
}

HiveImage HiveImage::withLog(std::string const& path) {
    auto* const database = opened(path.c_str(), SQLITE_OPEN_READONLY);
    sqlite3_int64 size = 0;
    auto* const bytes = sqlite3_serialize(database, "main", &size, 0);
    int const result = sqlite3_errcode(database);
    sqlite3_close_v2(database);
    if (bytes == nullptr) failUnlessOk(result);
    return taken(bytes, static_cast<std::uint64_t>(size));
}

HiveDatabase::HiveDatabase() {
    load({});
    for (auto const& entry : schema) {
        bool const isMadeByItself = entry.name.starts_with("sqlite_");
        if (!isMadeByItself) run(entry.sql);
    }
    run("PRAGMA application_id = 1449487442");
    run("PRAGMA user_version = 1");
}

HiveDatabase::HiveDatabase(HiveImage image) {
    auto const bytes = image.bytes();
    require(beginsAsHive(bytes), ERROR_BADDB);
    // The log has been read already.
    bytes[18] = bytes[19] = 1;
    load(std::move(image));
    auto entries = query("SELECT name, ifnull(sql, '') FROM sqlite_schema ORDER BY rowid");
    for (auto const& entry : schema) {
        bool const isSame =
            entries.step() && entries.bytes(0) == entry.name && entries.bytes(1) == entry.sql;
        require(isSame, ERROR_BADDB);
    }
    auto check = query("PRAGMA quick_check(1)");
    require(check.step() && check.bytes(0) == "ok", ERROR_REGISTRY_CORRUPT);
    require(query("SELECT 1 FROM keys WHERE id = 1").step(), ERROR_REGISTRY_CORRUPT);
}

std::unique_ptr<HiveDatabase> HiveDatabase::copy() const {
    auto const own = bytes();
    auto image = HiveImage::ofSize(own.size());
    std::memcpy(image.memory.get(), own.data(), own.size());
    return std::unique_ptr<HiveDatabase>(new HiveDatabase(Sound{}, std::move(image)));
}

std::span<unsigned char const> HiveDatabase::bytes() const {
    sqlite3_int64 size = 0;
    auto* const bytes = sqlite3_serialize(database_.get(), "main", &size, SQLITE_SERIALIZE_NOCOPY);
    require(bytes != nullptr, ERROR_NOT_ENOUGH_MEMORY);
    return {bytes, static_cast<std::size_t>(size)};
}

void HiveDatabase::load(HiveImage image) {
    prepared_.clear();
    database_.reset(opened(":memory:", SQLITE_OPEN_READWRITE));
    auto* const database = database_.get();
    auto const size = static_cast<sqlite3_int64>(image.size);
    // Frees the bytes also when it fails, which lacking memory alone makes it do.
    int const result =
        sqlite3_deserialize(database, "main", image.memory.release(), size, size,
                            SQLITE_DESERIALIZE_FREEONCLOSE | SQLITE_DESERIALIZE_RESIZEABLE);
    require(result == SQLITE_OK, ERROR_NOT_ENOUGH_MEMORY);
    auto limit = largestHive;
    sqlite3_file_control(database, "main", SQLITE_FCNTL_SIZE_LIMIT, &limit);
    run("PRAGMA cell_size_check = ON");
}

sqlite3_stmt* HiveDatabase::prepared(char const* sql) {
    auto& prepared = prepared_[sql];
    if (prepared == nullptr) {
        sqlite3_stmt* made = nullptr;
        int const result =
            sqlite3_prepare_v3(database_.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &made, nullptr);
        prepared.reset(made);
        failUnlessOk(result);
    }
    return prepared.get();
}

}  // namespace velk::platform::registry
