/// The SQLite database that holds one hive.
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
    Statement& bindNothing();

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

/// Who may do what with the file.
enum class HiveAccess {
    writable,
    readOnly,
    /// Read-only, and nobody else can be noticed writing to it.
    unchanging,
    /// There is no file, and none was made: empty and in memory only.
    absent
};

/// One connection. Used by one thread at a time.
class HiveDatabase {
  public:
    /// Opens the file, makes it when it is missing and `mayMake`, and checks
    /// that it is a registry. Fails with ERROR_BADDB when it is something else;
    /// then the file is as it was.
    HiveDatabase(std::string const& path, bool isMachine, bool mayMake);

    HiveAccess access() const { return access_; }
    Statement statement(char const* sql);
    void execute(char const* sql) { statement(sql).run(); }
    std::int64_t lastInsertedId() const { return sqlite3_last_insert_rowid(database_.get()); }
    bool isInTransaction() const { return sqlite3_get_autocommit(database_.get()) == 0; }
    /// A number that changes when another connection has changed the file.
    std::int64_t foreignChanges();

  private:
    void open(std::string const& path, bool mayMake);
    bool tryOpen(std::string const& path, int flags, HiveAccess access);
    void openInMemory();
    void prepareConnection();
    bool isRegistry();
    bool isRegistryAtOneTime();
    bool isInWriteAheadMode();
    void checkWhole();
    void switchToWriteAheadLog();
    void createContent();
    void insertFirstKeys();

    struct Close {
        void operator()(sqlite3* database) const noexcept { sqlite3_close_v2(database); }
    };
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
    };
    std::unique_ptr<sqlite3, Close> database_;
    std::map<std::string_view, std::unique_ptr<sqlite3_stmt, Finalize>> prepared_;
    HiveAccess access_ = HiveAccess::absent;
    bool const isMachine_;
};

/// Fails with the published number for a SQLite result that is no success.
[[noreturn]] void failWithSqlite(int result);

/// The current time as the published file time counts it.
std::int64_t currentFileTime();

}  // namespace velk::platform::registry
