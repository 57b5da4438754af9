#include <chrono>

#include <gtest/gtest.h>

#include "threads.h"

// Calls from other threads reach an object on the thread that made it. What
// matters most of the races is what the thread checker says of them; their
// assertions see that nothing got lost.

namespace velk::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr unsigned method = mzCallMethod;

/// Sets the waiting limits for a scope.
struct Limits {
    explicit Limits(int untilTaken, int untilDone = 20'000)
        : before(mzComSetCallLimits({untilTaken, untilDone})) {}
    ~Limits() { mzComSetCallLimits(before); }
    mzCallLimitsS before;
};

/// Stays in its member until it is told to end.
class Slow : public Sample {
  public:
    void wait() { finish.get_future().wait(); }
    proxyMemberDescListS const* getProxyTypeInfo() override {
        static proxyMemberDescS const members[] = {proxyMethod<&Slow::wait>("Wait", "", 1),
                                                   proxyMembersEnd()};
        static proxyMemberDescListS const* const bases[] = {nullptr};
        static auto const record = recordOf<Slow>("Slow", nullptr, members, bases);
        return &record;
    }

    std::promise<void> finish;
};

TEST(Routing, TheOwnerRunsTheCallWhileItServes) {
    Owner const owner(true);
    EXPECT_TRUE(isTrue(owner.call("OnThread", {1.0})));
    EXPECT_EQ(owner.call("Add", {5}).integer(), 5);
    EXPECT_EQ(owner.call("Missing").code, mzMemberNotFound);
    EXPECT_EQ(owner.call("Fail", {"over there"}).exception, "over there");
    mzComPtrC const own(new Sample);
    EXPECT_TRUE(isTrue(call(own.iface(), "OnThread", method, {1.0}))) << "its own thread";
}

TEST(Routing, ObjectsThatOptOutAreCalledDirectly) {
    for (bool const byThreadSafety : {false, true}) {
        mzComPtrT<Sample> sample(new Sample);
        EXPECT_NE(sample->getStickyThreadId(false), 0);
        byThreadSafety ? sample->setThreadSafe() : sample->setNonStickyThread();
        EXPECT_EQ(sample->getStickyThreadId(false), 0);
        std::jthread(
            [&] { EXPECT_EQ(call(sample.iface(), "OnThread", method, {1.0}).integer(), 0); });
    }
}

TEST(Routing, AnOwnerThatDoesNotServeFailsTheCallInTime) {
    Limits const limits(150);
    Owner const owner(false);
    auto const start = Clock::now();
    EXPECT_EQ(owner.call("Add", {1}).exception, "The thread of the object does not serve calls");
    EXPECT_GE(Clock::now() - start, 150ms);
    EXPECT_LT(Clock::now() - start, 10s);
}

TEST(Routing, ACallThatWasGivenUpNeverRuns) {
    Limits const limits(50);
    mzComPtrT<Sample> sample(new Sample);
    std::jthread([&] {
        EXPECT_EQ(call(sample.iface(), "Add", method, {1}).code, mzFailure);
    }).join();
    EXPECT_EQ(mzComSleep(0, 0, nullptr), 0u);
    EXPECT_EQ(sample->value(), 0);
    EXPECT_EQ(sample->addRef(), 2u) << "nothing holds the object any more";
    sample->release();
}

TEST(Routing, ACallThatDoesNotComeBackFailsInTime) {
    Limits const limits(20'000, 100);
    mzComPtrT<Slow> const slow(new Slow);
    auto const start = Clock::now();
    std::jthread const caller([&] {
        EXPECT_EQ(call(slow.iface(), "Wait", method).exception,
                  "The call on the object's thread does not come back");
        slow->finish.set_value();
    });
    // Serves the call and stays in it until the caller has given up.
    EXPECT_EQ(mzComSleep(200, 0, nullptr), 1u);
    EXPECT_LT(Clock::now() - start, 10s) << "the limit for taking a call does not count any more";
}

TEST(Routing, AThreadThatEndsRefusesCalls) {
    Limits const limits(60'000);
    char const* const text = "The thread of the object has ended";
    Owner owner(false);
    auto waiting = std::async(std::launch::async, [&] { return owner.call("Add", {1}).exception; });
    EXPECT_EQ(waiting.wait_for(50ms), std::future_status::timeout);
    owner.end();
    ASSERT_EQ(waiting.wait_for(20s), std::future_status::ready);
    EXPECT_EQ(waiting.get(), text);
    auto const start = Clock::now();
    EXPECT_EQ(owner.call("Add", {1}).exception, text);
    EXPECT_LT(Clock::now() - start, 2s);
}

TEST(Routing, AThreadThatWaitsServesCallsBack) {
    Owner const owner(true);
    mzComPtrT<Sample> const local(new Sample);
    EXPECT_EQ(owner.call("Forward", {reference(local->getIUnknown())}).integer(), 1);
    EXPECT_EQ(local->value(), 1);
}

TEST(Routing, SleepLastsAsLongAsAsked) {
    auto const start = Clock::now();
    EXPECT_EQ(mzComSleep(60, 0, nullptr), 0u);
    EXPECT_GE(Clock::now() - start, 60ms);
}

TEST(Races, RegistrationBesideLookUpAndCreation) {
    Servers const servers;
    inParallel(4, [&](int index) {
        for (int round = 0; round < 300; ++round) {
            if (index == 0) {
                proxyAutoRegisterT<Sample> const registration;
                std::this_thread::yield();
                continue;
            }
            mzComPtrC out;
            if (mzComCreateObject("velktest.sample", mzIDispatch::interfaceId(), out) ==
                mzSuccess) {
                EXPECT_EQ(call(out.iface(), "Add", method, {index}).integer(), index);
            }
        }
    });
    EXPECT_EQ(Sample::alive(), 0);
}

TEST(Races, TheFirstCallsOfOneObject) {
    for (int round = 0; round < 50; ++round) {
        mzComPtrT<Sample> const sample(new Sample);
        sample->setThreadSafe();
        inParallel(4, [&](int) { EXPECT_EQ(call(sample.iface(), "Plain", method).integer(), 77); });
    }
}

TEST(Races, ActiveObjectsAndCounts) {
    mzComPtrT<Sample> const sample(new Sample);
    inParallel(4, [&](int) {
        for (int round = 0; round < 200; ++round) {
            unsigned cookie = 0;
            EXPECT_EQ(mzComRegisterActiveObject("velktest.race", sample.iface(), cookie),
                      mzSuccess);
            mzComPtrC out;
            EXPECT_EQ(mzComGetActiveObject("velktest.race", mzIDispatch::interfaceId(), 3, out, 0),
                      mzSuccess);
            EXPECT_EQ(mzComRevokeActiveObject(cookie), mzSuccess);
            mzComPtrC const copy(out), own(new Sample);
        }
    });
    EXPECT_EQ(Sample::alive(), 1);
    EXPECT_EQ(sample->addRef(), 2u);
    sample->release();
}

TEST(Races, ManyCallersOfOneServingThread) {
    mzComPtrT<Sample> const sample(new Sample);
    std::atomic<bool> done{false};
    std::jthread const callers([&] {
        inParallel(4, [&](int) {
            for (int round = 0; round < 100; ++round) {
                EXPECT_EQ(call(sample.iface(), "Add", method, {1}).code, mzSuccess);
            }
        });
        done = true;
    });
    while (!done) mzComSleep(5, 0, nullptr);
    EXPECT_EQ(sample->value(), 400);
}

// Threads that call each other's objects crosswise, all of them serving only
// while they wait or sleep.
TEST(Races, ThreadsThatCallEachOther) {
    std::atomic<Sample*> objects[2] = {nullptr, nullptr};
    std::atomic<int> done{0};
    StartGate ready(2);
    inParallel(2, [&](int index) {
        mzComPtrT<Sample> const mine(new Sample);
        objects[index] = mine.iface();
        ready.arriveAndWait();
        for (int round = 0; round < 100; ++round) {
            EXPECT_EQ(call(objects[1 - index].load(), "Add", method, {1}).code, mzSuccess);
        }
        ++done;
        while (done < 2) mzComSleep(5, 0, nullptr);
        EXPECT_EQ(mine->value(), 100);
    });
    EXPECT_EQ(Sample::alive(), 0);
}

TEST(Races, ThreadsThatEndWhileTheyAreCalled) {
    for (int round = 0; round < 30; ++round) {
        Owner owner(true);
        std::jthread const caller([&] {
            Outcome outcome{};
            while ((outcome = owner.call("Add", {1})).code == mzSuccess) continue;
            EXPECT_EQ(outcome.exception, "The thread of the object has ended");
        });
        std::this_thread::sleep_for(200us * (round % 5));
        owner.end();
    }
}

}  // namespace
}  // namespace velk::test
