/// What not every other system of this interface promises.
#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "conformance/registry/registry_calls.h"

namespace {

using namespace velk::test;

TEST(RegistryHere, PredefinedKeysAreNumbersOf32Bits) {
    auto const status = [](ULONG_PTR number) {
        Key key;
        return statusWord(RegOpenKeyExW(reinterpret_cast<HKEY>(number), OLESTR("Software"), 0,
                                        KEY_READ, key.target()));
    };
    EXPECT_EQ(status(0xFFFFFFFF80000001), "ok") << "with its sign";
    EXPECT_EQ(status(0x80000099), "no handle");
    EXPECT_EQ(status(0x180000001), "no handle");
}

TEST(RegistryHere, WholePathsAreMadeAndDeletedAtOnce) {
    std::atomic<int> unexpected{0};
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&] {
            RegistryCalls calls;
            std::set<std::string> answers;
            for (int time = 0; time < 40; ++time) {
                for (auto const* call : {"make U/Software/VelkFight/shared/deep",
                                         "put U/Software/VelkFight/shared/deep n text",
                                         "tree U/Software/VelkFight/shared"}) {
                    answers.insert(calls.answer(call));
                }
            }
            for (auto const* expected : {"new", "old", "ok", "missing", "gone"}) {
                answers.erase(expected);
            }
            if (!answers.empty()) ++unexpected;
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(unexpected, 0);
    EXPECT_EQ(RegistryCalls().answer("list U/Software/VelkFight"), "|");
    RegistryCalls().answer("tree U/Software/VelkFight");
}

}  // namespace
