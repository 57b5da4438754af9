#include "host/thread.h"

#include <atomic>
#include <chrono>

#include <gtest/gtest.h>

#include "host/sleep.h"

namespace {

struct Gate {
    std::atomic<bool> entered = false;
    std::atomic<bool> open = false;
    std::atomic<bool> left = false;
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

TEST(Thread, IsActiveWhileItRuns) {
    Gate gate;
    mzThreadC thread;
    EXPECT_FALSE(thread.isActive());
    ASSERT_TRUE(thread.start(&waitAtGate, &gate));
    EXPECT_TRUE(thread.isActive());
    EXPECT_FALSE(thread.start(&waitAtGate, &gate));
    gate.open = true;
    waitForEnd(thread);
    EXPECT_TRUE(gate.entered);
}

TEST(Thread, CanBeStartedAgainWhenItHasEnded) {
    Gate gate;
    gate.open = true;
    mzThreadC thread;
    for (int i = 0; i < 3; ++i) {
        gate.entered = false;
        ASSERT_TRUE(thread.start(&waitAtGate, &gate));
        waitForEnd(thread);
        EXPECT_TRUE(gate.entered);
    }
}

TEST(Thread, NoFunctionNoThread) {
    mzThreadC thread;
    EXPECT_FALSE(thread.start(nullptr, nullptr));
    EXPECT_FALSE(thread.isActive());
}

TEST(Thread, DetachedItStaysActiveAndMakesRoomForTheNext) {
    // The object tells nothing of the first thread once it runs the second.
    static Gate first;
    Gate second;
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

TEST(Sleep, LastsAtLeastAsLongAsAsked) {
    using Clock = std::chrono::steady_clock;
    auto const start = Clock::now();
    mzSleep(15);
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(15));
    mzSleep(0);
    mzSleep(-5);
}

}  // namespace
