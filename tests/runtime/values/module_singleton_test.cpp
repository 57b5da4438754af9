#include "host/module_singleton.h"

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "host/log_capture.h"

namespace {

using namespace std::chrono_literals;

void* ownAddress() {
    return reinterpret_cast<void*>(&mzModuleSingletonT<int, 0>::cleanup);
}

struct Counted {
    Counted() {
        ++made;
        std::this_thread::sleep_for(20ms);
        value = 7;
    }
    ~Counted() { ++destroyed; }

    int value = 0;
    static inline std::atomic<int> made = 0;
    static inline std::atomic<int> destroyed = 0;
};
using CountedSingleton = mzModuleSingletonT<Counted, 0>;

TEST(ModuleSingleton, EightRacingThreadsGetTheOneInstance) {
    Counted::made = 0;
    std::atomic<Counted*> seen[8] = {};
    {
        std::vector<std::jthread> threads;
        for (auto& slot : seen) {
            threads.emplace_back([&slot] {
                Counted& instance = CountedSingleton::instance();
                EXPECT_EQ(instance.value, 7);
                slot = &instance;
            });
        }
    }
    EXPECT_EQ(Counted::made, 1);
    for (auto const& slot : seen) EXPECT_EQ(slot, &CountedSingleton::instance());
    CountedSingleton::cleanup();
}

TEST(ModuleSingleton, TheGlobalCleanupEndsItAndALaterGetMakesANewOne) {
    Counted::made = 0;
    Counted::destroyed = 0;
    CountedSingleton::instance();
    mzRunGlobalCleanupFor(ownAddress());
    EXPECT_EQ(Counted::destroyed, 1);
    EXPECT_FALSE(CountedSingleton::exists());
    CountedSingleton::instance();
    EXPECT_EQ(Counted::made, 2);
    mzRunGlobalCleanupFor(ownAddress());
    EXPECT_EQ(Counted::destroyed, 2);
    // Nothing is there any more: a second clean-up does nothing.
    CountedSingleton::cleanup();
    EXPECT_EQ(Counted::destroyed, 2);
}

struct SlowToDie {
    ~SlowToDie() {
        dying = true;
        std::this_thread::sleep_for(120ms);
        dying = false;
    }
    static inline std::atomic<bool> dying = false;
};
using SlowSingleton = mzModuleSingletonT<SlowToDie, 1>;

TEST(ModuleSingleton, AGetterWaitsForTheDestructionToEnd) {
    SlowSingleton::instance();
    std::jthread cleaner([] { SlowSingleton::cleanup(); });
    while (!SlowToDie::dying) std::this_thread::yield();
    SlowSingleton::instance();
    EXPECT_FALSE(SlowToDie::dying);
    cleaner.join();
    EXPECT_TRUE(SlowSingleton::exists());
    SlowSingleton::cleanup();
}

struct FailsOnce {
    FailsOnce() {
        if (attempts++ == 0) throw std::runtime_error("not yet");
    }
    static inline int attempts = 0;
};
using FailingSingleton = mzModuleSingletonT<FailsOnce, 2>;

TEST(ModuleSingleton, AFailedConstructionPassesOnAndIsTriedAgain) {
    EXPECT_THROW(FailingSingleton::instance(), std::runtime_error);
    EXPECT_FALSE(FailingSingleton::exists());
    FailingSingleton::instance();
    EXPECT_EQ(FailsOnce::attempts, 2);
    FailingSingleton::cleanup();
}

struct Reported {};

TEST(ModuleSingleton, ReportsItsLife) {
    mzLogCaptureC const capture(baseLogger, 0);
    mzModuleSingletonT<Reported, 4>::instance();
    mzRunGlobalCleanupFor(ownAddress());
    ASSERT_EQ(capture.records().size(), 3u);
    EXPECT_NE(capture.records()[0].message.find("is created, priority 4"), std::string::npos);
    EXPECT_NE(capture.records()[1].message.find("is destroyed"), std::string::npos);
    EXPECT_NE(capture.records()[2].message.find("was destroyed"), std::string::npos);
}

TEST(Exchange, ChangesOnlyWhatItExpects) {
    int word = 3;
    EXPECT_FALSE(mzThreadSafeExchangeInt(&word, 2, 9));
    EXPECT_EQ(word, 3);
    EXPECT_TRUE(mzThreadSafeExchangeInt(&word, 3, 9));
    EXPECT_EQ(word, 9);
    EXPECT_FALSE(mzThreadSafeExchangeInt(nullptr, 0, 0));
}

}  // namespace
