#include <windows.h>

#include <objbase.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "host/coinit.h"
#include "host/critical_section.h"
#include "host/read_write_lock.h"
#include "host/sleep.h"
#include "host/thread.h"
#include "host/tls.h"

// Threads, what they enter, and what keeps them apart.

namespace {

using namespace std::chrono_literals;

struct Gate {
    std::atomic<bool> entered = false, open = false, left = false;
};

unsigned waitAtGate(void* argument) {
    auto& gate = *static_cast<Gate*>(argument);
    gate.entered = true;
    while (!gate.open) mzSleep(1);
    gate.left = true;
    return 0;
}

void waitForEnd(mzThreadC const& thread) {
    while (thread.isActive()) mzSleep(1);
}

TEST(Thread, IsActiveWhileItRunsAndCanBeStartedAgain) {
    mzThreadC thread;
    EXPECT_FALSE(thread.start(nullptr, nullptr));
    EXPECT_FALSE(thread.isActive());
    for (int i = 0; i < 3; ++i) {
        Gate gate;
        ASSERT_TRUE(thread.start(&waitAtGate, &gate));
        EXPECT_TRUE(thread.isActive());
        EXPECT_FALSE(thread.start(&waitAtGate, &gate));
        gate.open = true;
        waitForEnd(thread);
        EXPECT_TRUE(gate.entered);
    }
}

TEST(Thread, DetachedItStaysActiveAndMakesRoomForTheNext) {
    // The object tells nothing of the first thread once it runs the second.
    Gate first, second;
    mzThreadC thread;
    ASSERT_TRUE(thread.start(&waitAtGate, &first));
    thread.detach();
    EXPECT_TRUE(thread.isActive());
    ASSERT_TRUE(thread.start(&waitAtGate, &second));
    second.open = true;
    waitForEnd(thread);
    first.open = true;
    while (!first.left) mzSleep(1);
    EXPECT_TRUE(first.entered);
}

/// What entering COM on this thread would answer, undone at once.
HRESULT probe(DWORD flags) {
    HRESULT const result = CoInitializeEx(nullptr, flags);
    if (SUCCEEDED(result)) CoUninitialize();
    return result;
}

TEST(CoInitializer, EntersOnceAndLeavesOnce) {
    std::jthread([] {
        for (int round = 0; round < 2; ++round) {
            PCoInitializer::attach(COINIT_MULTITHREADED);
            PCoInitializer::attach(COINIT_MULTITHREADED);
            EXPECT_EQ(probe(COINIT_MULTITHREADED), S_FALSE);
            EXPECT_EQ(probe(COINIT_APARTMENTTHREADED), RPC_E_CHANGED_MODE);
            for (int left = 0; left < 2; ++left) {
                PCoInitializer::detach();
                EXPECT_EQ(probe(COINIT_APARTMENTTHREADED), S_OK) << "another apartment";
            }
        }
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        PCoInitializer::attach(COINIT_MULTITHREADED);
        PCoInitializer::detach();
        EXPECT_EQ(probe(COINIT_APARTMENTTHREADED), S_FALSE) << "was entered by another";
        CoUninitialize();
        EXPECT_EQ(probe(COINIT_MULTITHREADED), S_OK);
    });
}

TEST(CriticalSection, OneThreadAtATimeButThatOneAgain) {
    mzCriticalSectionObjectC section;
    int counter = 0;
    std::vector<std::jthread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 1000; ++i) {
                mzCriticalAutoSectionRefC const outer(&section), inner(&section), none(nullptr);
                ++counter;
            }
        });
    }
    threads.clear();
    EXPECT_EQ(counter, 4000);
}

template <class Lock>
class ReadWriteLocks : public testing::Test {};
using Locks = testing::Types<PReadWriteLock, PReadWriteSpinLock>;
TYPED_TEST_SUITE(ReadWriteLocks, Locks);

TYPED_TEST(ReadWriteLocks, ReadersShareAndEachWaitsForTheWriter) {
    TypeParam lock;
    for (bool const shared : {true, false}) {
        std::atomic<bool> entered = false;
        lock.lock(shared);
        if (shared) std::jthread([&] { mzSharedHolderT const there(lock); });
        // A writer beside a reader, and a reader beside a writer.
        std::jthread other([&] {
            lock.lock(!shared);
            entered = true;
            lock.unlock(!shared);
        });
        std::this_thread::sleep_for(20ms);
        EXPECT_FALSE(entered);
        lock.unlock(shared);
        other.join();
        EXPECT_TRUE(entered);
    }
}

TYPED_TEST(ReadWriteLocks, NobodyEverSeesHalfAChange) {
    TypeParam lock;
    // Plain integers: a lock that lets two in is a data race as well.
    int first = 0, second = 0;
    constexpr int rounds = 2000;
    std::vector<std::jthread> threads;
    // Two writers, and more readers than stripes, so that some share one.
    for (int t = 0; t < 12; ++t) {
        threads.emplace_back([&, writes = t < 2] {
            for (int i = 0; i < rounds; ++i) {
                lock.lock(!writes);
                EXPECT_EQ(first, second);
                if (writes) ++first, ++second;
                lock.unlock(!writes);
            }
        });
    }
    threads.clear();
    EXPECT_EQ(first, 2 * rounds);
}

}  // namespace
