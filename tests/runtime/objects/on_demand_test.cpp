#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "sample_objects.h"

// A program that never starts the servers can create objects all the same,
// until it ends the servers.

namespace {

TEST(OnDemand, TheFirstCreationStartsTheServersForEveryThread) {
    std::atomic<int> created{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 6; ++i) {
        threads.emplace_back([&] {
            mzComPtrC out;
            created += mzComCreateObject("scripting.dictionary", mzIDispatch::interfaceId(), out) ==
                       mzSuccess;
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(created, 6);

    EXPECT_EQ(mzComServerDone(), mzFailure) << "nobody asked for the start";
    EXPECT_EQ(mzComServerInit(), mzSuccess);
    EXPECT_EQ(mzComServerDone(), mzSuccess);
    mzComPtrC out;
    EXPECT_EQ(mzComCreateObject("scripting.dictionary", mzIDispatch::interfaceId(), out), mzFailure)
        << "an end that was asked for holds";
}

}  // namespace
