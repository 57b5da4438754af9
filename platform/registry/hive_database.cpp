#include "platform/registry/hive_database.h"

#include <cstring>

#include "platform/registry/names.h"

namespace velk::platform::registry {
namespace {

// How large a hive's file may be: twenty thousand classes, and read in a blink.
constexpr std::int64_t largestHive = 32 << 20;
// Of one row: a value with both forms of its name.
constexpr int largestRow = longestValue + 0x20000;
constexpr int longestSql = 1024;

constexpr char const* keysTable =
    "CREATE TABLE keys(id INTEGER PRIMARY KEY AUTOINCREMENT, parent INTEGER NOT NULL,"
    " folded BLOB NOT NULL, name BLOB NOT NULL, class BLOB, depth INTEGER NOT NULL,"
    " written INTEGER NOT NULL, UNIQUE(parent, folded))";
constexpr char const* dataTable =
    "CREATE TABLE data(key INTEGER NOT NULL, folded BLOB NOT NULL, name BLOB NOT NULL,"
    " type INTEGER NOT NULL, bytes BLOB NOT NULL, PRIMARY KEY(key, folded)) WITHOUT ROWID";

/// All that a hive's schema has.
struct SchemaEntry {
    char const* name;
    char const* sql;
};
constexpr SchemaEntry schema[] = {
    {"keys", keysTable},
    {"sqlite_autoindex_keys_1", ""},
    {"sqlite_sequence", "CREATE TABLE sqlite_sequence(name,seq)"},
    {"data", dataTable},
};

/// Whether the first page is that of a hive, so that SQLite reads no schema of
/// somebody else's making: format, page size, UTF-8, version of the tables, the
/// mark "VelR", and a schema of one page with as many entries as ours.
bool beginsAsHive(std::span<unsigned char const> bytes) {
    constexpr std::size_t pageSize = 4096;
    if (bytes.size() < pageSize) return false;
    auto const has = [&](std::size_t at, std::string_view expected) {
        return std::memcmp(bytes.data() + at, expected.data(), expected.size()) == 0;
    };
    using namespace std::string_view_literals;
    return has(0, "SQLite format 3\0\x10\x00"sv) && has(56, "\0\0\0\1\0\0\0\1"sv) &&
           has(68, "VelR"sv) && has(100, "\x0D"sv) && has(103, "\0\x04"sv);
}
static_assert(std::size(schema) == 4);

Connection connection(char const* path, int flags) {
    sqlite3* opened = nullptr;
    int const result = sqlite3_open_v2(
        path, &opened, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_PRIVATECACHE, nullptr);
    Connection database(opened);
    check(result);
    sqlite3_extended_result_codes(opened, 1);
    sqlite3_limit(opened, SQLITE_LIMIT_LENGTH, largestRow);
    sqlite3_limit(opened, SQLITE_LIMIT_SQL_LENGTH, longestSql);
    // A damaged file must not lead anywhere: nothing in it may run or be trusted.
    sqlite3_db_config(opened, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    return database;
}

HiveImage imageOf(sqlite3* database) {
    sqlite3_int64 size = 0;
    auto* const bytes = sqlite3_serialize(database, "main", &size, 0);
    if (bytes == nullptr) check(sqlite3_extended_errcode(database));
    failIf(bytes == nullptr, ERROR_NOT_ENOUGH_MEMORY);
    return {bytes, static_cast<std::uint64_t>(size)};
}

}  // namespace

HiveImage imageWithLog(std::string const& path) {
    return imageOf(connection(path.c_str(), SQLITE_OPEN_READONLY).get());
}

HiveImage::HiveImage(std::uint64_t size) : size_(size) {
    failIf(size > largestHive, ERROR_REGISTRY_CORRUPT);
    bytes_.reset(static_cast<unsigned char*>(sqlite3_malloc64(size)));
    failIf(bytes_ == nullptr && size != 0, ERROR_NOT_ENOUGH_MEMORY);
}

HiveDatabase::HiveDatabase(bool ofMachine) {
    database_ = connection(":memory:", SQLITE_OPEN_READWRITE);
    for (auto const* sql :
         {keysTable, dataTable, "PRAGMA application_id = 0x56656C52", "PRAGMA user_version = 1"}) {
        execute(sql);
    }
    insertFirstKeys(ofMachine);
    load(imageOf(database_.get()));
}

HiveDatabase::HiveDatabase(HiveImage image) {
    auto const bytes = image.bytes();
    failIf(!beginsAsHive(bytes), ERROR_BADDB);
    // The log that former versions kept has been read already.
    bytes[18] = bytes[19] = 1;
    load(std::move(image));
    requireOurTables();
    requireWhole();
}

HiveDatabase HiveDatabase::copy() const {
    auto const own = bytes();
    HiveImage image(own.size());
    std::memcpy(image.bytes().data(), own.data(), own.size());
    HiveDatabase result;
    result.load(std::move(image));
    return result;
}

std::span<unsigned char const> HiveDatabase::bytes() const {
    sqlite3_int64 size = 0;
    auto* const bytes = sqlite3_serialize(database_.get(), "main", &size, SQLITE_SERIALIZE_NOCOPY);
    failIf(bytes == nullptr, ERROR_NOT_ENOUGH_MEMORY);
    return {bytes, static_cast<std::size_t>(size)};
}

void HiveDatabase::load(HiveImage image) {
    prepared_.clear();
    database_ = connection(":memory:", SQLITE_OPEN_READWRITE);
    auto* const database = database_.get();
    auto const size = static_cast<sqlite3_int64>(image.bytes().size());
    // Frees the bytes also when it fails, which lacking memory alone makes it do.
    int const result =
        sqlite3_deserialize(database, "main", image.release(), size, size,
                            SQLITE_DESERIALIZE_FREEONCLOSE | SQLITE_DESERIALIZE_RESIZEABLE);
    failIf(result != SQLITE_OK, ERROR_NOT_ENOUGH_MEMORY);
    auto limit = largestHive;
    sqlite3_file_control(database, "main", SQLITE_FCNTL_SIZE_LIMIT, &limit);
    execute("PRAGMA cell_size_check = ON");
}

Statement HiveDatabase::statement(char const* sql) {
    auto& prepared = prepared_[sql];
    if (prepared == nullptr) {
        sqlite3_stmt* made = nullptr;
        int const result =
            sqlite3_prepare_v3(database_.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &made, nullptr);
        prepared.reset(made);
        check(result);
    }
    return {database_.get(), prepared.get()};
}

void HiveDatabase::requireOurTables() {
    auto query = statement("SELECT name, ifnull(sql, '') FROM sqlite_schema ORDER BY rowid");
    for (auto const& entry : schema) {
        bool const same =
            query.step() && query.bytes(0) == entry.name && query.bytes(1) == entry.sql;
        failIf(!same, ERROR_BADDB);
    }
}

void HiveDatabase::requireWhole() {
    auto query = statement("PRAGMA quick_check(1)");
    failIf(!query.step() || query.bytes(0) != "ok", ERROR_REGISTRY_CORRUPT);
    failIf(!statement("SELECT 1 FROM keys WHERE id = 1").step(), ERROR_REGISTRY_CORRUPT);
}

void HiveDatabase::insertFirstKeys(bool ofMachine) {
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
    for (auto const& key : std::span(keys).first(ofMachine ? std::size(keys) : ofUser)) {
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
