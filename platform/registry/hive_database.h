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

#include "platform/registry/names.h"
#include "platform/system/boundary.h"

namespace velk::platform::registry {

/// One run of a prepared statement, with its parameters in their order. What it
/// read stays valid until it goes or steps on.
class Statement {
  public:
    template <typename... Values>
    explicit Statement(sqlite3_stmt* prepared, Values const&... values) : prepared_(prepared) {
        (bind(values), ...);
    }
    Statement(Statement const&) = delete;
    Statement& operator=(Statement const&) = delete;
    ~Statement();

    /// Moves to the next row; false after the last.
    bool step();

    std::int64_t number(int column) const { return sqlite3_column_int64(prepared_, column); }
    std::string_view bytes(int column) const;
    std::u16string text(int column) const { return textOf(bytes(column)); }

  private:
    void bind(std::int64_t number);
    void bind(std::string_view bytes);
    void bind(std::u16string_view text);

    sqlite3_stmt* prepared_;
    int next_ = 1;
};

/// The bytes of a hive's file, in memory that SQLite may take over.
struct HiveImage {
    struct Free {
        void operator()(unsigned char* bytes) const noexcept { sqlite3_free(bytes); }
    };
    std::unique_ptr<unsigned char, Free> memory;
    std::size_t size = 0;

    /// Room for a file of this size. Fails when it is larger than a hive may be.
    static HiveImage ofSize(std::uint64_t size);
    /// The content of a file to which a log beside it belongs.
    static HiveImage withLog(std::string const& path);

    std::span<unsigned char> bytes() const { return {memory.get(), size}; }
    /// Whether the file was kept with a log, as former versions did.
    bool hasLog() const { return size > 19 && memory.get()[19] == 2; }
};

/// One connection. Used by one thread at a time.
class HiveDatabase {
  public:
    /// With empty tables, to become a hive.
    HiveDatabase();
    /// Fails with ERROR_BADDB when the bytes are something else than a hive,
    /// with ERROR_REGISTRY_CORRUPT when they are a damaged one.
    explicit HiveDatabase(HiveImage image);

    /// The same content, to be changed.
    std::unique_ptr<HiveDatabase> copy() const;
    /// The file that holds this content. Valid until the next use.
    std::span<unsigned char const> bytes() const;

    template <typename... Values>
    Statement query(char const* sql, Values const&... values) {
        return Statement(prepared(sql), values...);
    }
    template <typename... Values>
    void run(char const* sql, Values const&... values) {
        Statement statement(prepared(sql), values...);
        while (statement.step()) {
        }
    }
    std::int64_t lastInsertedId() const { return sqlite3_last_insert_rowid(database_.get()); }
    bool isInTransaction() const { return sqlite3_get_autocommit(database_.get()) == 0; }
    /// How many rows have been changed.
    std::uint64_t changes() const {
        return static_cast<std::uint64_t>(sqlite3_total_changes64(database_.get()));
    }

  private:
    struct Sound {};
    HiveDatabase(Sound, HiveImage image) { load(std::move(image)); }
    void load(HiveImage image);
    sqlite3_stmt* prepared(char const* sql);

    struct Close {
        void operator()(sqlite3* database) const noexcept { sqlite3_close_v2(database); }
    };
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
    };
    std::unique_ptr<sqlite3, Close> database_;
    std::map<std::string_view, std::unique_ptr<sqlite3_stmt, Finalize>> prepared_;
};

}  // namespace velk::platform::registry
