/// The SQLite database that holds one hive, in memory.
///
/// Tables:
///   keys(id, parent, folded, name, class, depth, written): the tree. The root
///     has id 1 and parent 0; ids are never used again. `folded` is the name
///     as names compare, `name` its UTF-16 text, `written` the time of the
///     last change in units of 100 ns since 1601.
///   data(key, folded, name, type, bytes): the values; the default value has
///     the empty name.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include <sqlite3.h>

#include "platform/registry/registry_error.h"

namespace velk::platform::registry {

/// One run of a prepared statement; parameters are bound in their order.
/// What it read stays valid until it goes or steps on.
class Statement {
  public:
    Statement(sqlite3* database, sqlite3_stmt* prepared) noexcept
        : database_(database), prepared_(prepared) {}
    Statement(Statement const&) = delete;
    Statement& operator=(Statement const&) = delete;
    ~Statement();

    Statement& bind(std::int64_t number);
    Statement& bind(std::string_view bytes);
    Statement& bind(std::u16string_view text);

    /// Moves to the next row; false after the last.
    bool step();
    /// Runs a statement that gives no rows.
    void run();

    std::int64_t number(int column) const;
    std::string_view bytes(int column) const;
    std::u16string text(int column) const;

  private:
    sqlite3* database_;
    sqlite3_stmt* prepared_;
    int next_ = 1;
};

/// The bytes of a hive's file, in memory that SQLite may take over.
class HiveImage {
  public:
    /// Room for a file of this size. Fails when it is larger than a hive may be.
    explicit HiveImage(std::uint64_t size);
    HiveImage(unsigned char* taken, std::uint64_t size) noexcept : bytes_(taken), size_(size) {}

    std::span<unsigned char> bytes() const { return {bytes_.get(), size_}; }
    unsigned char* release() { return bytes_.release(); }
    /// Whether the file was kept together with a log beside it.
    bool hasLog() const { return size_ > 19 && bytes_.get()[19] == 2; }

  private:
    struct Free {
        void operator()(unsigned char* bytes) const noexcept { sqlite3_free(bytes); }
    };
    std::unique_ptr<unsigned char, Free> bytes_;
    std::size_t size_;
};

struct CloseDatabase {
    void operator()(sqlite3* database) const noexcept { sqlite3_close_v2(database); }
};
using Connection = std::unique_ptr<sqlite3, CloseDatabase>;

/// The content of a file to which a log beside it belongs, as former versions
/// kept it.
HiveImage imageWithLog(std::string const& path);

/// One connection. Used by one thread at a time.
class HiveDatabase {
  public:
    /// A hive with nothing but the keys that are always there.
    explicit HiveDatabase(bool ofMachine);

    /// Fails with ERROR_BADDB when the bytes are something else than a hive,
    /// with ERROR_REGISTRY_CORRUPT when they are a damaged one.
    explicit HiveDatabase(HiveImage image);

    /// The same content, to be changed.
    HiveDatabase copy() const;

    /// The file that holds this content. Valid until the next use.
    std::span<unsigned char const> bytes() const;

    Statement statement(char const* sql);
    void execute(char const* sql) { statement(sql).run(); }
    std::int64_t lastInsertedId() const { return sqlite3_last_insert_rowid(database_.get()); }
    bool isChanged() const { return sqlite3_total_changes64(database_.get()) != 0; }

  private:
    HiveDatabase() = default;
    void load(HiveImage image);
    void requireOurTables();
    void requireWhole();
    void insertFirstKeys(bool ofMachine);

    struct Finalize {
        void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
    };
    Connection database_;
    std::map<std::string_view, std::unique_ptr<sqlite3_stmt, Finalize>> prepared_;
};

/// The current time as the published file time counts it.
std::int64_t currentFileTime();

/// Fails with the published number for a SQLite result that is no success.
void check(int result);

}  // namespace velk::platform::registry
