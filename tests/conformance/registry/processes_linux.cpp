/// Several processes at work on one hive, and processes that end in the middle.
#include <chrono>
#include <csignal>
#include <thread>

#include "conformance/registry/hive_process.h"
#include "conformance/registry/hive_sql.h"

namespace {

using namespace velk::test;

constexpr auto const* fought = OLESTR("Software\\Fought");

/// Makes, lists and deletes one subtree again and again; tells how often each
/// step had an outcome that the other's work does not explain.
Statuses fight() {
    LSTATUS wrong = 0, changes = 0;
    auto const expect = [&](LSTATUS status, std::initializer_list<LSTATUS> explained) {
        if (std::find(explained.begin(), explained.end(), status) == explained.end()) ++wrong;
        if (status == ERROR_SUCCESS) ++changes;
    };
    for (int round = 0; round < 200; ++round) {
        Key key;
        expect(RegCreateKeyExW(HKEY_CURRENT_USER, OLESTR("Software\\Fought\\a\\b"), 0, nullptr, 0,
                               KEY_ALL_ACCESS, nullptr, key.target(), nullptr),
               {ERROR_SUCCESS});
        expect(setText(key, OLESTR("value"), OLESTR("text")), {ERROR_SUCCESS, ERROR_KEY_DELETED});
        Key top;
        LSTATUS const opened =
            RegOpenKeyExW(HKEY_CURRENT_USER, fought, 0, KEY_ALL_ACCESS, top.target());
        expect(opened, {ERROR_SUCCESS, ERROR_FILE_NOT_FOUND});
        if (opened == ERROR_SUCCESS && keyNames(top).size() > 1) ++wrong;
        expect(RegDeleteTreeW(HKEY_CURRENT_USER, fought), {ERROR_SUCCESS, ERROR_FILE_NOT_FOUND});
    }
    return {wrong, changes};
}

TEST(HiveProcesses, TwoFightOverOneSubtreeAndItStaysWhole) {
    HiveFolder const folder;
    HiveProcess first(folder.path, fight);
    HiveProcess second(folder.path, fight);
    for (auto* process : {&first, &second}) {
        auto const statuses = process->statuses();
        ASSERT_EQ(statuses.size(), 2u) << "a process did not end by itself";
        EXPECT_EQ(statuses[0], 0) << "outcomes that nothing explains";
        EXPECT_GT(statuses[1], 200);
    }
    expectWholeHive(folder.path / "user.db");
    EXPECT_EQ(
        inProcess(folder.path, [] { return Statuses{openStatus(HKEY_CURRENT_USER, fought)}; }),
        Statuses{ERROR_FILE_NOT_FOUND});
}

TEST(HiveProcesses, OneThatIsKilledLeavesAWholeHive) {
    HiveFolder const folder;
    for (int time = 0; time < 10; ++time) {
        HiveProcess victim(folder.path, [] {
            for (;;) fight();
            return Statuses{};
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(30 + 17 * time));
        victim.kill();
        EXPECT_TRUE(victim.statuses().empty());
        auto const after = inProcess(folder.path, [] {
            return Statuses{setText(created(HKEY_CURRENT_USER, OLESTR("Software\\After")), nullptr,
                                    OLESTR("text"))};
        });
        EXPECT_EQ(after, Statuses{0});
        expectWholeHive(folder.path / "user.db");
    }
}

}  // namespace
