#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "sample_objects.h"

// Things that threads do at the same time. What matters most is what the
// thread checker says of these; the assertions see that nothing got lost.

namespace {

using velk::test::call;
using velk::test::Sample;

/// Runs `body(index)` on several threads at once.
void inParallel(int threads, std::function<void(int)> const& body) {
    std::vector<std::thread> running;
    std::atomic<int> ready{0};
    for (int i = 0; i < threads; ++i) {
        running.emplace_back([&, i] {
            ++ready;
            while (ready < threads) {
                std::this_thread::yield();
            }
            body(i);
        });
    }
    for (auto& thread : running) {
        thread.join();
    }
}

TEST(Races, RegistrationBesideLookUpAndCreation) {
    ASSERT_EQ(mzComServerInit(), mzSuccess);
    std::atomic<int> created{0};
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
                ++created;
                EXPECT_EQ(call(out.iface(), "Add", mzCallMethod, {index}).integer(), index);
            }
        }
    });
    EXPECT_EQ(Sample::alive(), 0);
    EXPECT_EQ(mzComServerDone(), mzSuccess);
}

TEST(Races, TheFirstCallsOfOneObject) {
    for (int round = 0; round < 50; ++round) {
        mzComPtrT<Sample> sample(new Sample);
        sample->setThreadSafe();
        std::atomic<int> right{0};
        inParallel(
            4, [&](int) { right += call(sample.iface(), "Plain", mzCallMethod).integer() == 77; });
        EXPECT_EQ(right, 4);
    }
}

TEST(Races, ActiveObjects) {
    mzComPtrT<Sample> sample(new Sample);
    inParallel(4, [&](int) {
        for (int round = 0; round < 200; ++round) {
            unsigned cookie = 0;
            ASSERT_EQ(mzComRegisterActiveObject("velktest.race", sample.iface(), cookie),
                      mzSuccess);
            mzComPtrC out;
            EXPECT_EQ(mzComGetActiveObject("velktest.race", mzIDispatch::interfaceId(), 3, out, 0),
                      mzSuccess);
            EXPECT_EQ(mzComRevokeActiveObject(cookie), mzSuccess);
        }
    });
    EXPECT_EQ(sample->addRef(), 2u);
    sample->release();
}

TEST(Races, ManyCallersOfOneServingThread) {
    mzComPtrT<Sample> sample(new Sample);
    std::atomic<int> done{0};
    std::vector<std::thread> callers;
    for (int i = 0; i < 4; ++i) {
        callers.emplace_back([&] {
            for (int round = 0; round < 100; ++round) {
                EXPECT_EQ(call(sample.iface(), "Add", mzCallMethod, {1}).code, mzSuccess);
            }
            ++done;
        });
    }
    while (done < 4) {
        mzComSleep(5, 0, nullptr);
    }
    for (auto& caller : callers) {
        caller.join();
    }
    EXPECT_EQ(sample->value(), 400);
}

// Threads that call each other's objects crosswise, all of them serving only
// while they wait or sleep.
TEST(Races, ThreadsThatCallEachOther) {
    std::atomic<Sample*> objects[2] = {nullptr, nullptr};
    std::atomic<int> ready{0};
    std::atomic<int> done{0};
    inParallel(2, [&](int index) {
        mzComPtrT<Sample> mine(new Sample);
        objects[index] = mine.iface();
        ++ready;
        while (ready < 2) {
            std::this_thread::yield();
        }
        for (int round = 0; round < 100; ++round) {
            EXPECT_EQ(call(objects[1 - index].load(), "Add", mzCallMethod, {1}).code, mzSuccess);
        }
        ++done;
        while (done < 2) {
            mzComSleep(5, 0, nullptr);
        }
        EXPECT_EQ(mine->value(), 100);
    });
    EXPECT_EQ(Sample::alive(), 0);
}

TEST(Races, ThreadsThatEndWhileTheyAreCalled) {
    for (int round = 0; round < 30; ++round) {
        std::atomic<bool> end{false};
        mzComPtrC object;
        std::atomic<bool> made{false};
        std::thread owner([&] {
            object.attach(new Sample);
            made = true;
            while (!end) {
                mzComSleep(1, 0, nullptr);
            }
        });
        while (!made) {
            std::this_thread::yield();
        }
        std::thread caller([&] {
            for (;;) {
                auto const outcome = call(object.iface(), "Add", mzCallMethod, {1});
                if (outcome.code != mzSuccess) {
                    EXPECT_EQ(outcome.exception, "The thread of the object has ended");
                    break;
                }
            }
        });
        std::this_thread::sleep_for(std::chrono::microseconds(200 * (round % 5)));
        end = true;
        owner.join();
        caller.join();
    }
}

}  // namespace
