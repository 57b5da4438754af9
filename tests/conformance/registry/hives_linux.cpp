/// The files of the registry: what survives, what is refused, who may write.
#include <csignal>
#include <fstream>
#include <iterator>
#include <thread>

#include "conformance/registry/hive_process.h"
#include "conformance/registry/hive_sql.h"

namespace {

using namespace velk::test;
namespace files = std::filesystem;

constexpr auto const* classPath = OLESTR("Software\\Classes\\Velk.Kept");

std::string contentOf(files::path const& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void writeFile(files::path const& path, std::string const& content) {
    std::ofstream(path, std::ios::binary) << content;
}

LSTATUS setKept(HKEY hive) {
    return setText(created(hive, classPath), nullptr, OLESTR("kept"));
}

LSTATUS keptStatus(HKEY hive) {
    return textAt(hive, classPath, nullptr) == OLESTR("kept") ? ERROR_SUCCESS : ERROR_BADKEY;
}

Statuses setBoth() {
    return {setKept(HKEY_CURRENT_USER), setKept(HKEY_LOCAL_MACHINE)};
}

TEST(Hives, SurviveTheProcess) {
    HiveFolder const folder;
    EXPECT_EQ(inProcess(folder.path / "made", setBoth), (Statuses{0, 0}));
    EXPECT_EQ(
        inProcess(
            folder.path / "made",
            [] {
                return Statuses{keptStatus(HKEY_CURRENT_USER), keptStatus(HKEY_LOCAL_MACHINE)};
            }),
        (Statuses{0, 0}));
    EXPECT_TRUE(files::exists(folder.path / "made" / "user.db"));
    EXPECT_TRUE(files::exists(folder.path / "made" / "machine.db"));
}

TEST(Hives, AreMadeByTheFirstWriteAndNotByReads) {
    HiveFolder const folder;
    auto const place = folder.path / "none";
    auto const body = [&] {
        Statuses statuses;
        Key early;
        for (HKEY const root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE, HKEY_CLASSES_ROOT}) {
            Key opened;
            DWORD keys = 0;
            statuses.push_back(RegOpenKeyExW(root, OLESTR("No"), 0, KEY_READ, opened.target()));
            statuses.push_back(RegQueryInfoKeyW(root, nullptr, nullptr, nullptr, &keys, nullptr,
                                                nullptr, nullptr, nullptr, nullptr, nullptr,
                                                nullptr));
            statuses.push_back(RegDeleteTreeW(root, OLESTR("No")));
        }
        statuses.push_back(RegOpenKeyExW(HKEY_CURRENT_USER, OLESTR("Software"), 0, KEY_ALL_ACCESS,
                                         early.target()));
        statuses.push_back(files::exists(place));
        // What was opened before there was a hive is good for the one that is made.
        statuses.push_back(setText(early, OLESTR("name"), OLESTR("value")));
        statuses.push_back(files::exists(place / "user.db"));
        statuses.push_back(files::exists(place / "machine.db"));
        return statuses;
    };
    Statuses const read = {ERROR_FILE_NOT_FOUND, 0, ERROR_FILE_NOT_FOUND};
    Statuses expected;
    for (int root = 0; root < 3; ++root) {
        expected.insert(expected.end(), read.begin(), read.end());
    }
    expected.insert(expected.end(), {0, 0, 0, 1, 0});
    EXPECT_EQ(inProcess(place, body), expected);
}

TEST(Hives, AreUsedOnBothSidesOfAFork) {
    HiveFolder const folder;
    auto const body = [&] {
        LSTATUS const before = setKept(HKEY_CURRENT_USER);
        Key const open = created(HKEY_CURRENT_USER, OLESTR("Software\\Open"));
        pid_t const child = fork();
        if (child == 0) {
            bool const good = keptStatus(HKEY_CURRENT_USER) == ERROR_SUCCESS &&
                              setNumber(open, OLESTR("child"), 1) == ERROR_SUCCESS;
            _exit(good ? 0 : 1);
        }
        int outcome = 0;
        LSTATUS const meanwhile = setNumber(open, OLESTR("parent"), 1);
        waitpid(child, &outcome, 0);
        auto const values = static_cast<LSTATUS>(valueNames(open).size());
        return Statuses{before, meanwhile, outcome, values};
    };
    EXPECT_EQ(inProcess(folder.path, body), (Statuses{0, 0, 0, 2}));
    expectWholeHive(folder.path / "user.db");
}

TEST(Hives, WhatIsNoRegistryIsRefusedAndLeftAlone) {
    HiveFolder const folder;
    inProcess(folder.path, setBoth);
    std::string const good = contentOf(folder.path / "machine.db");
    ASSERT_GT(good.size(), 8192u);

    runSql(folder.path / "other.db", "CREATE TABLE keys(a); INSERT INTO keys VALUES(1)");
    runSql(folder.path / "newer.db", "PRAGMA application_id = 1449487442; PRAGMA user_version = 2");
    auto const withBrokenPages = [](std::string content) {
        std::fill(content.begin() + 4096, content.end(), '\x5A');
        return content;
    };
    /// The hive, changed by SQL behind the registry's back.
    auto const after = [&](char const* sql) {
        auto const file = folder.path / "changed.db";
        writeFile(file, good);
        runSql(file, sql);
        return contentOf(file);
    };
    auto const renamed = [&](char const* from, char const* to) {
        return after((std::string("PRAGMA writable_schema = ON; UPDATE sqlite_schema SET sql ="
                                  " replace(sql, '") +
                      from + "', '" + to + "')")
                         .c_str());
    };
    struct Case {
        char const* what;
        std::string content;
        LSTATUS expected;
    };
    Case const cases[] = {
        {"text", std::string(5000, 'x'), ERROR_BADDB},
        {"a few bytes", "hello", ERROR_BADDB},
        {"another program's database", contentOf(folder.path / "other.db"), ERROR_BADDB},
        {"a later version", contentOf(folder.path / "newer.db"), ERROR_BADDB},
        {"cut in the middle", good.substr(0, good.size() / 2), ERROR_REGISTRY_CORRUPT},
        {"pages overwritten", withBrokenPages(good), ERROR_REGISTRY_CORRUPT},
        {"without its root", after("DELETE FROM keys WHERE id = 1"), ERROR_REGISTRY_CORRUPT},
        {"too large", good + std::string(33 << 20, 'x'), ERROR_REGISTRY_CORRUPT},
        {"a table more", after("CREATE TABLE more(x)"), ERROR_BADDB},
        {"a view more", after("CREATE VIEW more AS SELECT * FROM keys"), ERROR_BADDB},
        {"a trigger more",
         after("CREATE TRIGGER more AFTER INSERT ON keys BEGIN DELETE FROM data; END"),
         ERROR_BADDB},
        {"tables of a search engine", after("CREATE VIRTUAL TABLE more USING fts5(x)"),
         ERROR_BADDB},
        {"a column that is computed", renamed("class BLOB", "class BLOB AS (zeroblob(1000000000))"),
         ERROR_BADDB},
        {"a condition more", renamed("depth INTEGER", "depth INTEGER CHECK(depth < 9)"),
         ERROR_BADDB},
        {"another table in the place of one",
         after("DROP TABLE data; CREATE VIRTUAL TABLE data USING fts3(x)"), ERROR_BADDB},
    };
    for (auto const& entry : cases) {
        HiveFolder const own;
        auto const file = own.path / "machine.db";
        writeFile(file, entry.content);
        auto const statuses = inProcess(own.path, [] {
            return Statuses{openStatus(HKEY_LOCAL_MACHINE, classPath),
                            openStatus(HKEY_LOCAL_MACHINE, OLESTR("Software"), KEY_ALL_ACCESS),
                            setKept(HKEY_CURRENT_USER)};
        });
        ASSERT_EQ(statuses.size(), 3u) << entry.what;
        EXPECT_EQ(statuses[0], entry.expected) << entry.what;
        EXPECT_EQ(statuses[1], entry.expected) << entry.what;
        EXPECT_EQ(statuses[2], ERROR_SUCCESS) << "the user's hive does not depend on it";
        EXPECT_EQ(contentOf(file) == entry.content, true) << entry.what << ": the file was changed";
    }
}

/// A hive as versions before this one left it: the last changes in a log beside it.
TEST(Hives, AreTakenOverFromTheirLogs) {
    HiveFolder const folder;
    inProcess(folder.path, setBoth);
    auto const hive = folder.path / "machine.db", log = folder.path / "machine.db-wal";
    // Copied while it is open, since its end would tidy it up.
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(hive.c_str(), &database), SQLITE_OK);
    for (auto const* sql : {"PRAGMA journal_mode = WAL",
                            "UPDATE keys SET name = CAST(X'4B00' AS BLOB), folded ="
                            " CAST(X'004B' AS BLOB) WHERE depth = 3 AND parent = 3"}) {
        ASSERT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK);
    }
    HiveFolder const left;
    for (auto const& file : {hive, log}) files::copy(file, left.path / file.filename());
    sqlite3_close(database);
    auto const look = [] {
        return Statuses{openStatus(HKEY_LOCAL_MACHINE, OLESTR("Software\\Classes\\K")),
                        openStatus(HKEY_LOCAL_MACHINE, classPath)};
    };
    EXPECT_EQ(inProcess(left.path, look), (Statuses{0, ERROR_FILE_NOT_FOUND}));
    EXPECT_EQ(inProcess(left.path, [] { return Statuses{setKept(HKEY_LOCAL_MACHINE)}; }),
              Statuses{0});
    EXPECT_EQ(inProcess(left.path, look), (Statuses{0, 0}));
    EXPECT_FALSE(files::exists(left.path / log.filename()));
    expectWholeHive(left.path / "machine.db");
}

TEST(Hives, AnEmptyFileBecomesAHive) {
    HiveFolder const folder;
    writeFile(folder.path / "user.db", "");
    EXPECT_EQ(inProcess(folder.path, [] { return Statuses{setKept(HKEY_CURRENT_USER)}; }),
              Statuses{0});
}

/// What someone without rights may do with hives that others wrote.
Statuses asGuest() {
    Key key;
    LSTATUS const write =
        RegCreateKeyExW(HKEY_LOCAL_MACHINE, OLESTR("Software\\Classes\\Velk.Guest"), 0, nullptr, 0,
                        KEY_ALL_ACCESS, nullptr, key.target(), nullptr);
    return {keptStatus(HKEY_LOCAL_MACHINE),
            textAt(HKEY_CLASSES_ROOT, OLESTR("Velk.Kept"), nullptr) == OLESTR("kept")
                ? ERROR_SUCCESS
                : ERROR_BADKEY,
            write,
            openStatus(HKEY_LOCAL_MACHINE, classPath, KEY_WRITE),
            RegDeleteTreeW(HKEY_LOCAL_MACHINE, classPath),
            openStatus(HKEY_LOCAL_MACHINE, classPath, MAXIMUM_ALLOWED)};
}
Statuses const guestMayRead = {0, 0, ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED, ERROR_ACCESS_DENIED,
                               0};

TEST(Hives, CanBeReadByThoseWhoMayNotWrite) {
    if (getuid() != 0) GTEST_SKIP() << "becoming another user needs rights";
    HiveFolder const folder;
    inProcess(folder.path, setBoth);
    files::permissions(folder.path, files::perms(0755));
    files::permissions(folder.path / "user.db", files::perms(0644));
    EXPECT_EQ(inProcess(folder.path, asGuest, nobody), guestMayRead);
}

TEST(Hives, AWriterIsSeenByAReaderWithoutRights) {
    if (getuid() != 0) GTEST_SKIP() << "becoming another user needs rights";
    HiveFolder const folder;
    inProcess(folder.path, setBoth);
    files::permissions(folder.path, files::perms(0755));
    auto const body = [&] {
        LSTATUS const before = keptStatus(HKEY_LOCAL_MACHINE);
        for (int time = 0; time < 500; ++time) {
            if (openStatus(HKEY_LOCAL_MACHINE, OLESTR("Software\\Later")) == ERROR_SUCCESS) {
                return Statuses{before, ERROR_SUCCESS};
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return Statuses{before, ERROR_FILE_NOT_FOUND};
    };
    HiveProcess reader(folder.path, body, nobody);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    inProcess(folder.path, [] {
        created(HKEY_LOCAL_MACHINE, OLESTR("Software\\Later"));
        return Statuses{};
    });
    EXPECT_EQ(reader.statuses(), (Statuses{0, 0}));
}

TEST(Hives, AFolderThatCannotBeMadeIsAnEmptyRegistry) {
    if (getuid() != 0) GTEST_SKIP() << "becoming another user needs rights";
    HiveFolder const folder;
    files::permissions(folder.path, files::perms(0755));
    EXPECT_EQ(inProcess(
                  folder.path / "below",
                  [] {
                      return Statuses{openStatus(HKEY_LOCAL_MACHINE, OLESTR("Software\\Classes")),
                                      openStatus(HKEY_CLASSES_ROOT, OLESTR("Velk.Kept")),
                                      openStatus(HKEY_CURRENT_USER, OLESTR("Software"), KEY_WRITE)};
                  },
                  nobody),
              (Statuses{0, ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED}));
}

}  // namespace
