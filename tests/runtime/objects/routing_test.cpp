#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include <gtest/gtest.h>

#include "sample_objects.h"

// Calls from other threads reach an object on the thread that made it.

namespace {

using velk::test::call;
using velk::test::Outcome;
using velk::test::reference;
using velk::test::Sample;

constexpr unsigned method = mzCallMethod;

/// Sets the waiting limits for a scope.
struct Limits {
    explicit Limits(int untilTaken, int untilDone = 20'000)
        : before(mzComSetCallLimits({untilTaken, untilDone})) {}
    ~Limits() { mzComSetCallLimits(before); }
    mzCallLimitsS before;
};

/// A thread that makes an object and then serves, or does not, until told to end.
class Owner {
  public:
    explicit Owner(bool serves)
        : thread_([this, serves] {
              made_.set_value(mzComPtrC(new Sample));
              while (!stop_) {
                  serves ? (void)mzComSleep(20, 0, nullptr) : mzSleep(5);
              }
          }),
          object_(made_.get_future().get()) {}
    ~Owner() { end(); }

    void end() {
        stop_ = true;
        if (thread_.joinable()) {
            thread_.join();
        }
    }
    mzIUnknown* object() const { return object_.iface(); }

  private:
    std::atomic<bool> stop_{false};
    std::promise<mzComPtrC> made_;
    std::thread thread_;
    mzComPtrC object_;
};

bool isTrue(Outcome const& outcome) {
    bool value = false;
    return outcome.value.getExt(value) == mzSuccess && value;
}

TEST(Routing, TheOwnerRunsTheCallWhileItServes) {
    Owner owner(true);
    EXPECT_TRUE(isTrue(call(owner.object(), "OnThread", method, {1.0})));
    EXPECT_EQ(call(owner.object(), "Add", method, {5}).integer(), 5);
    EXPECT_EQ(call(owner.object(), "Missing", method).code, mzMemberNotFound);
    Outcome const failed = call(owner.object(), "Fail", method, {"over there"});
    EXPECT_EQ(failed.code, mzFailure);
    EXPECT_EQ(failed.exception, "over there");
}

TEST(Routing, TheOwnThreadCallsDirectly) {
    mzComPtrC const sample(new Sample);
    EXPECT_TRUE(isTrue(call(sample.iface(), "OnThread", method, {1.0})));
}

TEST(Routing, ObjectsThatOptOutAreCalledDirectly) {
    for (bool const byThreadSafety : {false, true}) {
        mzComPtrT<Sample> sample(new Sample);
        EXPECT_NE(sample->getStickyThreadId(false), 0);
        byThreadSafety ? sample->setThreadSafe() : sample->setNonStickyThread();
        EXPECT_EQ(sample->getStickyThreadId(false), 0);
        bool const ranHere = std::async(std::launch::async, [&] {
                                 return !isTrue(call(sample.iface(), "OnThread", method, {1.0}));
                             }).get();
        EXPECT_TRUE(ranHere);
    }
}

TEST(Routing, AnOwnerThatDoesNotServeFailsTheCallInTime) {
    Limits const limits(150);
    Owner owner(false);
    auto const start = std::chrono::steady_clock::now();
    Outcome const outcome = call(owner.object(), "Add", method, {1});
    auto const waited = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(outcome.code, mzFailure);
    EXPECT_EQ(outcome.exception, "The thread of the object does not serve calls");
    EXPECT_GE(waited, std::chrono::milliseconds(150));
    EXPECT_LT(waited, std::chrono::seconds(10));
}

TEST(Routing, ACallThatWasGivenUpNeverRuns) {
    Limits const limits(50);
    mzComPtrT<Sample> sample(new Sample);
    std::thread([&] {
        EXPECT_EQ(call(sample.iface(), "Add", method, {1}).code, mzFailure);
    }).join();
    EXPECT_EQ(mzComSleep(0, 0, nullptr), 0u);
    EXPECT_EQ(sample->value(), 0);
    EXPECT_EQ(sample->addRef(), 2u) << "nothing holds the object any more";
    sample->release();
}

TEST(Routing, ACallThatDoesNotComeBackFailsInTime) {
    static std::promise<void> finish;
    finish = std::promise<void>();  // also when the test is repeated
    class Slow : public Sample {
      public:
        void wait() { finish.get_future().wait(); }
        proxyMemberDescListS const* getProxyTypeInfo() override {
            static proxyMemberDescS const members[] = {proxyMethod<&Slow::wait>("Wait", "", 1),
                                                       proxyMembersEnd()};
            static proxyMemberDescListS const* const bases[] = {nullptr};
            static proxyMemberDescListS const record = {
                "Slow", proxyCastTo<Slow>, bases, members, nullptr, 0, nullptr, "", 1};
            return &record;
        }
    };
    Limits const limits(20'000, 100);
    mzComPtrC const slow(new Slow);
    auto const start = std::chrono::steady_clock::now();
    auto outcome = std::async(std::launch::async, [&] {
        Outcome const given = call(slow.iface(), "Wait", method);
        finish.set_value();
        return given;
    });
    // Serves the call and stays in it until the caller has given up.
    EXPECT_EQ(mzComSleep(200, 0, nullptr), 1u);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10))
        << "the limit for taking a call does not count any more";
    Outcome const given = outcome.get();
    EXPECT_EQ(given.code, mzFailure);
    EXPECT_EQ(given.exception, "The call on the object's thread does not come back");
}

TEST(Routing, AnEndedThreadFailsTheCallAtOnce) {
    Owner owner(true);
    owner.end();
    auto const start = std::chrono::steady_clock::now();
    Outcome const outcome = call(owner.object(), "Add", method, {1});
    EXPECT_EQ(outcome.code, mzFailure);
    EXPECT_EQ(outcome.exception, "The thread of the object has ended");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
}

TEST(Routing, AThreadThatEndsRefusesWaitingCalls) {
    Limits const limits(60'000);
    Owner owner(false);
    auto waiting = std::async(std::launch::async,
                              [&] { return call(owner.object(), "Add", method, {1}).exception; });
    EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    owner.end();
    ASSERT_EQ(waiting.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    EXPECT_EQ(waiting.get(), "The thread of the object has ended");
}

/// Calls a member of another object from inside its own.
class Caller : public Sample {
  public:
    mzComVariantC forward(mzComPtrT<mzIUnknown> const& target) {
        return call(target.iface(), "Add", method, {1}).value;
    }
    proxyMemberDescListS const* getProxyTypeInfo() override {
        static proxyMemberDescS const members[] = {proxyMethod<&Caller::forward>("Forward", "", 1),
                                                   proxyMembersEnd()};
        static proxyMemberDescListS const* const bases[] = {Sample::getStaticProxyTypeInfo(),
                                                            nullptr};
        static proxyMemberDescListS const record = {
            "Caller", proxyCastTo<Caller>, bases, members, nullptr, 0, nullptr, "", 1};
        return &record;
    }
};

TEST(Routing, AThreadThatWaitsServesCallsBack) {
    std::promise<mzComPtrC> made;
    std::atomic<bool> stop{false};
    std::thread owner([&] {
        made.set_value(mzComPtrC(new Caller));
        while (!stop) {
            mzComSleep(20, 0, nullptr);
        }
    });
    {
        mzComPtrC const distant = made.get_future().get();
        mzComPtrT<Sample> local(new Sample);
        Outcome const outcome =
            call(distant.iface(), "Forward", method, {reference(local->getIUnknown())});
        EXPECT_EQ(outcome.code, mzSuccess) << outcome.exception;
        EXPECT_EQ(outcome.integer(), 1);
        EXPECT_EQ(local->value(), 1);
    }
    stop = true;
    owner.join();
}

TEST(Routing, SleepLastsAsLongAsAsked) {
    auto const start = std::chrono::steady_clock::now();
    EXPECT_EQ(mzComSleep(60, 0, nullptr), 0u);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60));
}

}  // namespace
