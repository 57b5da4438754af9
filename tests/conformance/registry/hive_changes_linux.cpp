/// Processes that change a hive are killed at any time: what they began together
/// is there whole, or not at all.
#include <array>
#include <cstdlib>
#include <memory>
#include <thread>

#include <gtest/gtest.h>
#include <ktmw32.h>
#include <unistd.h>
#include <velk_transactions.h>

#include "conformance/registry/registry_process.h"

namespace {

using namespace velk::test;

constexpr int workers = 4, keysOfEach = 5;

std::string key(int worker, int number) {
    return "U/Software/Classes/Velk.Worker" + std::to_string(worker * 10 + number);
}

/// Makes the worker's keys, and takes them away, again and again. Ends when a
/// change fails.
void work(int worker) {
    RegistryCalls calls;
    for (bool isThere = calls.answer("open " + key(worker, 0)) == "ok";; isThere = !isThere) {
        HANDLE const transaction = CreateTransaction(nullptr, nullptr, 0, 0, 0, 0, nullptr);
        VelkSetThreadTransaction(transaction);
        for (int number = 0; number < keysOfEach; ++number) {
            auto const name = key(worker, number);
            auto const answer = calls.answer((isThere ? "tree " : "make ") + name);
            if (answer != (isThere ? "ok" : "new")) return;
            if (!isThere && calls.answer("put " + name + " - text") != "ok") return;
        }
        if (!CommitTransaction(transaction)) return;
        CloseHandle(transaction);
    }
}

/// How many of its keys each worker has, while none changes them.
void expectAllOrNothing(RegistryFolder& folder) {
    RegistryProcess process(folder);
    ASSERT_EQ(process.ask("begin"), "ok");
    ASSERT_EQ(process.ask("take U"), "ok") << "the hive does not open";
    for (int worker = 0; worker < workers; ++worker) {
        int count = 0;
        for (int number = 0; number < keysOfEach; ++number) {
            count += process.ask("text " + key(worker, number) + " -") == "text" ? 1 : 0;
        }
        EXPECT_TRUE(count == 0 || count == keysOfEach) << count;
    }
}

/// VELK_HIVE_KILLS is how often one of four at work is killed.
TEST(HiveChanges, AreWholeWhoeverIsKilled) {
    char const* const wanted = std::getenv("VELK_HIVE_KILLS");
    int const kills = wanted == nullptr ? 60 : std::atoi(wanted);
    RegistryFolder folder;
    std::array<std::unique_ptr<RegistryProcess>, workers> all;
    for (int time = 0; time < kills && !HasFailure(); ++time) {
        for (int worker = 0; worker < workers; ++worker) {
            if (all[worker]) continue;
            all[worker] = std::make_unique<RegistryProcess>(folder, [worker] { work(worker); });
        }
        std::this_thread::sleep_for(std::chrono::microseconds(500 + 997 * (time * 37 % 60)));
        auto& victim = all[time % workers];
        EXPECT_TRUE(victim->kill()) << "a change failed";
        victim.reset();
        expectAllOrNothing(folder);
    }
    for (auto const& process : all) {
        if (process) process->kill();
    }
    EXPECT_EQ(folder.answer("whole user.db"), "ok 0");
}

}  // namespace
