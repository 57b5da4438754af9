#include "host/tls.h"

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "host/sleep.h"

namespace {

std::atomic<int> destroyedSum = 0;

void addToSum(void* value) {
    destroyedSum += *static_cast<int*>(value);
}

TEST(Tls, EveryThreadHasItsOwnValue) {
    int const slot = mzTlsAlloc(nullptr);
    ASSERT_GT(slot, 0);
    int here = 1;
    EXPECT_EQ(*mzTlsGet(slot), nullptr);
    *mzTlsGet(slot) = &here;
    void** const address = mzTlsGet(slot);
    std::jthread([slot] { EXPECT_EQ(*mzTlsGet(slot), nullptr); }).join();
    EXPECT_EQ(*mzTlsGet(slot), &here);
    EXPECT_EQ(mzTlsGet(slot), address);
    mzTlsFree(slot);
}

TEST(Tls, ValuesAreDestroyedWithTheirThread) {
    destroyedSum = 0;
    int const slot = mzTlsAlloc(&addToSum);
    int values[] = {1, 20, 300};
    for (int& value : values) std::jthread([&] { *mzTlsGet(slot) = &value; }).join();
    // A thread that never set the slot has nothing to destroy.
    std::jthread([slot] { mzTlsGet(slot); }).join();
    EXPECT_EQ(destroyedSum, 321);
    mzTlsFree(slot);
    EXPECT_EQ(destroyedSum, 321);
}

TEST(Tls, FreeingTheSlotDestroysWhatIsLeft) {
    destroyedSum = 0;
    int const slot = mzTlsAlloc(&addToSum);
    int here = 5;
    int there = 70;
    *mzTlsGet(slot) = &here;
    std::atomic<bool> set = false;
    std::atomic<bool> end = false;
    std::jthread other([&] {
        *mzTlsGet(slot) = &there;
        set = true;
        while (!end) mzSleep(1);
    });
    while (!set) mzSleep(1);
    mzTlsFree(slot);
    EXPECT_EQ(destroyedSum, 75);
    end = true;
    other.join();
    EXPECT_EQ(destroyedSum, 75);
    EXPECT_EQ(mzTlsGet(slot), nullptr);
}

TEST(Tls, AReusedSlotStartsEmpty) {
    int const first = mzTlsAlloc(nullptr);
    int value = 0;
    *mzTlsGet(first) = &value;
    mzTlsFree(first);
    int const second = mzTlsAlloc(nullptr);
    EXPECT_EQ(*mzTlsGet(second), nullptr);
    mzTlsFree(second);
}

TEST(Tls, NumbersThatAreNoSlot) {
    for (int const slot : {0, -1, 257, 1 << 30}) {
        EXPECT_EQ(mzTlsGet(slot), nullptr) << slot;
        mzTlsFree(slot);
    }
}

TEST(Tls, SlotsRunOut) {
    std::vector<int> slots;
    while (int const slot = mzTlsAlloc(nullptr)) {
        ASSERT_LT(slots.size(), 10000u);
        slots.push_back(slot);
    }
    EXPECT_GE(slots.size(), 200u);
    for (int const slot : slots) mzTlsFree(slot);
}

TEST(Tls, FreeWaitsForADestructionThatRuns) {
    static std::atomic<bool> begun = false;
    static std::atomic<bool> done = false;
    int const slot = mzTlsAlloc([](void*) {
        begun = true;
        mzSleep(30);
        done = true;
    });
    int value = 0;
    std::jthread other([&] { *mzTlsGet(slot) = &value; });
    while (!begun) mzSleep(1);
    mzTlsFree(slot);
    EXPECT_TRUE(done);
}

}  // namespace
