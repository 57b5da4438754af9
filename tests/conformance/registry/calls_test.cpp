/// Calls of the registry: against a model, and what is refused.
#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "conformance/registry/registry_calls.h"
#include "conformance/registry/registry_model.h"
#include "support/data_table.h"

namespace {

using namespace velk::test;

/// A key of the user's, open as T, gone with all below it after each test.
struct Registry : testing::Test {
    RegistryCalls calls;

    Registry() {
        clean();
        calls.answer("make U/Software/VelkTest");
        calls.answer("open U/Software/VelkTest all T");
    }
    ~Registry() override { clean(); }
    static void clean() {
        for (auto const* root : {"U", "M"}) {
            RegistryCalls().answer(std::string("tree ") + root + "/Software/VelkTest");
        }
    }
};

TEST_F(Registry, AnswersAsTheModel) {
    expectRounds("UM", false, [](auto const& drawn, bool tells) {
        clean();
        RegistryCalls own;
        own.answer("make U/Software/VelkTest");
        own.answer("make M/Software/VelkTest");
        return compare(drawn, 0, "/Software/VelkTest", tells,
                       [&](std::string const& words) { return own.answer(words); });
    });
}

TEST_F(Registry, AnswersAsTheTable) {
    expectTable("registry/calls.tsv",
                [&](DataRow const& row) { return calls.answer(row["call"]); });
}

TEST_F(Registry, RefusesWhatItCannotUse) {
    Key key, root;
    RegOpenKeyExW(HKEY_CURRENT_USER, OLESTR("Software\\VelkTest"), 0, KEY_ALL_ACCESS,
                  root.target());
    auto const bogus = reinterpret_cast<HKEY>(0x12345678);
    OLECHAR name[8];
    OLECHAR const* const x = OLESTR("x");
    DWORD room = 8, number = 0;
    BYTE byte = 0;
    HKEY closed = nullptr;
    RegOpenKeyExW(root, nullptr, 0, KEY_READ, &closed);
    RegCloseKey(closed);
    struct Refusal {
        char const* what;
        LSTATUS status, expected = ERROR_INVALID_PARAMETER;
    };
    for (auto const& [what, status, expected] : {
             Refusal{"open into nothing", RegOpenKeyExW(root, x, 0, KEY_READ, nullptr)},
             {"make with a reserved number",
              RegCreateKeyExW(root, x, 1, nullptr, 0, KEY_READ, nullptr, key.target(), nullptr)},
             {"delete no name", RegDeleteKeyW(root, nullptr)},
             {"close twice", RegCloseKey(closed), ERROR_INVALID_HANDLE},
             {"close nothing", RegCloseKey(nullptr), ERROR_INVALID_HANDLE},
             {"close what is no key", RegCloseKey(bogus), ERROR_INVALID_HANDLE},
             {"open below none", RegOpenKeyExW(bogus, x, 0, KEY_READ, key.target()),
              ERROR_INVALID_HANDLE},
             {"query what is no key",
              RegQueryValueExW(bogus, nullptr, nullptr, nullptr, nullptr, nullptr),
              ERROR_INVALID_HANDLE},
             {"close a root", RegCloseKey(HKEY_CURRENT_USER), ERROR_SUCCESS},
             {"query without a size", RegQueryValueExW(root, x, nullptr, nullptr, &byte, nullptr)},
             {"query with a reserved place",
              RegQueryValueExW(root, x, &number, nullptr, nullptr, nullptr)},
             {"set from nothing", RegSetValueExW(root, x, 0, REG_BINARY, nullptr, 4),
              ERROR_NOACCESS},
             {"set nothing", RegSetValueExW(root, x, 0, REG_BINARY, nullptr, 0), ERROR_SUCCESS},
             {"keys with a reserved place",
              RegEnumKeyExW(root, 0, name, &room, &number, nullptr, nullptr, nullptr)},
             {"values without a name",
              RegEnumValueW(root, 0, nullptr, &room, nullptr, nullptr, nullptr, nullptr)},
             {"values without room",
              RegEnumValueW(root, 0, name, nullptr, nullptr, nullptr, nullptr, nullptr)},
             {"values with a reserved place",
              RegEnumValueW(root, 0, name, &room, &number, nullptr, nullptr, nullptr)},
             {"values' data without a size",
              RegEnumValueW(root, 0, name, &room, nullptr, nullptr, &byte, nullptr)},
             {"a class without a size",
              RegQueryInfoKeyW(root, name, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                               nullptr, nullptr, nullptr, nullptr)},
             {"text without a size",
              RegGetValueW(root, nullptr, x, RRF_RT_REG_SZ, nullptr, &byte, nullptr)},
         }) {
        EXPECT_EQ(statusWord(status), statusWord(expected)) << what;
    }
}

TEST_F(Registry, TellsHowMuchRoomIsNeeded) {
    calls.answer("make T/name");
    calls.answer("put T value hello");
    Key root;
    RegOpenKeyExW(HKEY_CURRENT_USER, OLESTR("Software\\VelkTest"), 0, KEY_ALL_ACCESS,
                  root.target());
    OLECHAR name[64];
    struct Case {
        DWORD index, room;
        char const *keys, *values;
    };
    for (auto const& entry :
         {Case{0, 4, "more", "more"}, Case{0, 5, "ok", "more"}, Case{0, 6, "ok", "ok"},
          Case{1, 64, "no more", "no more"}, Case{0xFFFFFFFF, 64, "no more", "no more"}}) {
        DWORD room = entry.room;
        LSTATUS status =
            RegEnumKeyExW(root, entry.index, name, &room, nullptr, nullptr, nullptr, nullptr);
        EXPECT_EQ(statusWord(status), entry.keys) << entry.index << ", " << entry.room;
        room = entry.room;
        status = RegEnumValueW(root, entry.index, name, &room, nullptr, nullptr, nullptr, nullptr);
        EXPECT_EQ(statusWord(status), entry.values) << entry.index << ", " << entry.room;
    }
    BYTE data[12] = {0xEE};
    auto const sized = [&](LSTATUS status, DWORD size) {
        EXPECT_EQ(size, 12U);
        return statusWord(status);
    };
    DWORD size = 4, room = 64, type = 0;
    LSTATUS status = RegQueryValueExW(root, OLESTR("value"), nullptr, &type, data, &size);
    EXPECT_EQ(sized(status, size), "more");
    EXPECT_EQ(type, DWORD{REG_SZ});
    EXPECT_EQ(data[0], 0xEE);
    status = RegQueryValueExW(root, OLESTR("value"), nullptr, &type, data, &size);
    EXPECT_EQ(sized(status, size), "ok");
    size = 4;
    status = RegEnumValueW(root, 0, name, &room, nullptr, &type, data, &size);
    EXPECT_EQ(sized(status, size), "more");
    std::vector<BYTE> const large(1 << 20, 0x7E);
    std::vector<BYTE> got(large.size());
    size = 1 << 20;
    RegSetValueExW(root, OLESTR("large"), 0, REG_BINARY, large.data(), size);
    RegQueryValueExW(root, OLESTR("large"), nullptr, nullptr, got.data(), &size);
    EXPECT_EQ(got == large, true);
    size = 4;
    status = RegGetValueW(root, nullptr, OLESTR("value"), RRF_RT_REG_SZ, nullptr, data, &size);
    EXPECT_EQ(sized(status, size), "more");
}

TEST_F(Registry, KeepsTheTimeOfAChange) {
    FILETIME written{};
    Key root;
    RegOpenKeyExW(HKEY_CURRENT_USER, OLESTR("Software\\VelkTest"), 0, KEY_READ, root.target());
    ASSERT_EQ(RegQueryInfoKeyW(root, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                               nullptr, nullptr, nullptr, &written),
              ERROR_SUCCESS);
    // Years from 1993 on have a high half above this.
    EXPECT_GT(written.dwHighDateTime, 0x01B00000U);
}

/// Runs `work` with the number of each of four threads.
void onFourThreads(std::function<void(int)> const& work) {
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) threads.emplace_back(work, number);
    for (auto& thread : threads) thread.join();
}

TEST_F(Registry, ThreadsWorkOnKeysOfTheirOwnThroughOneHandle) {
    std::atomic<int> failures{0};
    onFourThreads([&](int number) {
        RegistryCalls own;
        std::string const key = "U/Software/VelkTest/thread" + std::to_string(number);
        for (int time = 0; time < 50; ++time) {
            auto const text = std::to_string(time);
            bool const good = calls.answer("make T/thread" + std::to_string(number)) == "new" &&
                              own.answer("put " + key + " n " + text) == "ok" &&
                              own.answer("get " + key + " n") == text &&
                              calls.answer("list T") != "|" && own.answer("delete " + key) == "ok";
            if (!good) ++failures;
        }
    });
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(calls.answer("list T"), "|");
}

}  // namespace
