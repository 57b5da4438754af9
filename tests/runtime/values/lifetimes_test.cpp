#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "cleanup_module.h"
#include "host/log_capture.h"
#include "host/module_singleton.h"
#include "host/tls.h"

// What lives as long as a module or a thread: clean-ups, singletons, values.

namespace {

using namespace std::chrono_literals;

/// What ran, a letter each.
std::string order;

template <char letter>
void note() {
    order += letter;
    if (letter == 'x') throw std::runtime_error("clean-up failed");
    if (letter == 'r') mzRegisterGlobalCleanup(&note<letter>, 0);
}

void cleanUpOwnModule() {
    mzRunGlobalCleanupFor(reinterpret_cast<void*>(&cleanUpOwnModule));
}

TEST(Cleanup, RunsOnceFromTheHighestPriorityDownAndTheNewestFirst) {
    order.clear();
    mzRegisterGlobalCleanup(&note<'z'>, -2000002);
    mzRegisterGlobalCleanup(&note<'c'>, 0);
    mzRegisterGlobalCleanup(&note<'x'>, 1);
    mzRegisterGlobalCleanup(&note<'b'>, 3);
    mzRegisterGlobalCleanup(&note<'a'>, 3);
    mzRegisterGlobalCleanup(nullptr, 7);
    cleanUpOwnModule();
    cleanUpOwnModule();
    EXPECT_EQ(order, "abxcz");
}

TEST(Cleanup, OnlyTheModuleOfTheAddressIsCleaned) {
    order.clear();
    std::string moduleLog;
    mzRegisterGlobalCleanup(&note<'a'>, 9);
    registerModuleCleanup(moduleLog);
    mzRunGlobalCleanupFor(moduleAddress());
    EXPECT_EQ(order + moduleLog, "module ");
    registerModuleCleanup(moduleLog);
    mzRunGlobalCleanup();
    EXPECT_EQ(order + moduleLog, "amodule module ");
}

TEST(Cleanup, OneThatKeepsRegisteringItselfHasAnEnd) {
    order.clear();
    mzRegisterGlobalCleanup(&note<'r'>, 0);
    cleanUpOwnModule();
    EXPECT_GT(order.size(), 1u);
    // The last registration is still there, and no other module's.
    order.clear();
    mzRunGlobalCleanupFor(nullptr);
    EXPECT_EQ(order, "");
}

/// Takes its time to come and to go, and fails when it is told to.
struct Slow {
    Slow() {
        if (mayFail.exchange(false)) throw std::runtime_error("not yet");
        ++made;
        std::this_thread::sleep_for(20ms);
        value = 7;
    }
    ~Slow() {
        dying = true;
        std::this_thread::sleep_for(120ms);
        ++destroyed;
        dying = false;
    }

    int value = 0;
    static inline std::atomic<int> made = 0, destroyed = 0;
    static inline std::atomic<bool> dying = false, mayFail = false;
};
using Singleton = mzModuleSingletonT<Slow, 4>;

TEST(ModuleSingleton, IsOneForAllThreadsUntilTheCleanup) {
    Slow::made = Slow::destroyed = 0;
    Slow::mayFail = true;
    EXPECT_THROW(Singleton::instance(), std::runtime_error) << "and is tried again";
    EXPECT_FALSE(Singleton::exists());
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 8; ++i) {
            threads.emplace_back([] { EXPECT_EQ(Singleton::instance().value, 7); });
        }
    }
    EXPECT_EQ(Slow::made, 1);
    EXPECT_EQ(&Singleton::instance(), &Singleton::instance());
    cleanUpOwnModule();
    EXPECT_EQ(Slow::destroyed, 1);
    EXPECT_FALSE(Singleton::exists());
    Singleton::cleanup();
    EXPECT_EQ(Slow::destroyed, 1) << "nothing is there any more";
    Singleton::instance();
    EXPECT_EQ(Slow::made, 2);
    cleanUpOwnModule();
}

TEST(ModuleSingleton, WhoAsksWaitsForTheDestructionToEnd) {
    mzLogCaptureC const capture(baseLogger, 0);
    Singleton::instance();
    {
        std::jthread const cleaner([] { Singleton::cleanup(); });
        while (!Slow::dying) std::this_thread::yield();
        Singleton::instance();
        EXPECT_FALSE(Slow::dying);
    }
    EXPECT_TRUE(Singleton::exists());
    auto const records = capture.records();
    ASSERT_EQ(records.size(), 4u);
    for (int i : {0, 3}) {
        EXPECT_NE(records[static_cast<std::size_t>(i)].message.find("is created, priority 4"),
                  std::string::npos);
    }
    EXPECT_NE(records[1].message.find("is destroyed"), std::string::npos);
    EXPECT_NE(records[2].message.find("was destroyed"), std::string::npos);
    Singleton::cleanup();
}

std::atomic<int> destroyedSum = 0;

int newSumSlot() {
    destroyedSum = 0;
    return mzTlsAlloc([](void* value) { destroyedSum += *static_cast<int*>(value); });
}

TEST(Tls, EveryThreadHasAValueThatEndsWithIt) {
    int const slot = newSumSlot();
    ASSERT_GT(slot, 0);
    int values[] = {1, 20, 300}, here = 4000;
    void** const address = mzTlsGet(slot);
    *address = &here;
    for (int& value : values) {
        std::jthread([&] {
            EXPECT_EQ(*mzTlsGet(slot), nullptr);
            *mzTlsGet(slot) = &value;
        });
    }
    // A thread that never set the slot has nothing to destroy.
    std::jthread([slot] { mzTlsGet(slot); });
    EXPECT_EQ(destroyedSum, 321);
    EXPECT_EQ(mzTlsGet(slot), address);
    EXPECT_EQ(*address, &here);
    *address = nullptr;
    mzTlsFree(slot);
    EXPECT_EQ(destroyedSum, 321);
}

TEST(Tls, FreeingTheSlotDestroysWhatIsLeft) {
    int const slot = newSumSlot();
    int here = 5, there = 70;
    *mzTlsGet(slot) = &here;
    std::atomic<bool> set = false, end = false;
    {
        std::jthread const other([&] {
            *mzTlsGet(slot) = &there;
            set = true;
            while (!end) mzSleep(1);
        });
        while (!set) mzSleep(1);
        mzTlsFree(slot);
        EXPECT_EQ(destroyedSum, 75);
        end = true;
    }
    EXPECT_EQ(destroyedSum, 75);
    EXPECT_EQ(mzTlsGet(slot), nullptr);
    int const reused = mzTlsAlloc(nullptr);
    EXPECT_EQ(*mzTlsGet(reused), nullptr);
    mzTlsFree(reused);
}

TEST(Tls, NumbersThatAreNoSlot) {
    for (int const slot : {0, -1, 257, 1 << 30}) {
        EXPECT_EQ(mzTlsGet(slot), nullptr) << slot;
        mzTlsFree(slot);
    }
    std::vector<int> slots;
    while (int const slot = mzTlsAlloc(nullptr)) {
        ASSERT_LT(slots.size(), 10000u) << "slots run out";
        slots.push_back(slot);
    }
    EXPECT_GE(slots.size(), 200u);
    for (int const slot : slots) mzTlsFree(slot);
}

TEST(Tls, FreeWaitsForADestructionThatRuns) {
    static std::atomic<bool> begun, done;
    begun = done = false;
    int const slot = mzTlsAlloc([](void*) {
        begun = true;
        mzSleep(30);
        done = true;
    });
    int value = 0;
    std::jthread const other([&] { *mzTlsGet(slot) = &value; });
    while (!begun) mzSleep(1);
    mzTlsFree(slot);
    EXPECT_TRUE(done);
}

}  // namespace
