/// Looking at the files of hives behind the registry's back.
#pragma once

#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <sqlite3.h>

namespace velk::test {

/// Runs SQL on a hive's file and gives the first column of the last row.
inline std::string runSql(std::filesystem::path const& path, char const* text) {
    sqlite3* database = nullptr;
    std::string result;
    sqlite3_open(path.c_str(), &database);
    sqlite3_busy_timeout(database, 5000);
    auto const keep = [](void* target, int, char** values, char**) {
        *static_cast<std::string*>(target) = values[0] == nullptr ? "" : values[0];
        return 0;
    };
    if (sqlite3_exec(database, text, keep, &result, nullptr) != SQLITE_OK) {
        result = sqlite3_errmsg(database);
    }
    sqlite3_close(database);
    return result;
}

/// A whole hive has sound pages, and neither keys without a parent nor values
/// without a key.
inline void expectWholeHive(std::filesystem::path const& hive) {
    EXPECT_EQ(runSql(hive, "PRAGMA integrity_check"), "ok");
    EXPECT_EQ(runSql(hive,
                     "SELECT count(*) FROM keys WHERE parent <> 0 AND parent NOT IN"
                     " (SELECT id FROM keys)"),
              "0");
    EXPECT_EQ(runSql(hive, "SELECT count(*) FROM data WHERE key NOT IN (SELECT id FROM keys)"),
              "0");
}

}  // namespace velk::test
