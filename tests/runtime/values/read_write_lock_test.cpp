#include "host/read_write_lock.h"

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "host/read_write_spin_lock.h"

namespace {

using namespace std::chrono_literals;

template <class Lock>
class ReadWriteLocks : public testing::Test {
  public:
    Lock lock;
};
using Locks = testing::Types<PReadWriteLock, PReadWriteSpinLock>;
TYPED_TEST_SUITE(ReadWriteLocks, Locks);

TYPED_TEST(ReadWriteLocks, ReadersShare) {
    mzSharedHolderT const here(this->lock);
    std::jthread([this] { mzSharedHolderT const there(this->lock); }).join();
}

TYPED_TEST(ReadWriteLocks, AWriterWaitsForTheReaders) {
    std::atomic<bool> written = false;
    this->lock.lock(true);
    std::jthread writer([&] {
        mzExclusiveHolderT const holder(this->lock);
        written = true;
    });
    std::this_thread::sleep_for(20ms);
    EXPECT_FALSE(written);
    this->lock.unlock(true);
    writer.join();
    EXPECT_TRUE(written);
}

TYPED_TEST(ReadWriteLocks, ReadersWaitForTheWriter) {
    std::atomic<bool> read = false;
    this->lock.lock(false);
    std::jthread reader([&] {
        mzSharedHolderT const holder(this->lock);
        read = true;
    });
    std::this_thread::sleep_for(20ms);
    EXPECT_FALSE(read);
    this->lock.unlock(false);
    reader.join();
    EXPECT_TRUE(read);
}

TYPED_TEST(ReadWriteLocks, NobodyEverSeesHalfAChange) {
    // Plain integers: a lock that lets two in is a data race as well.
    int first = 0;
    int second = 0;
    constexpr int rounds = 2000;
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < 2; ++t) {
            threads.emplace_back([&] {
                for (int i = 0; i < rounds; ++i) {
                    mzExclusiveHolderT const holder(this->lock);
                    ++first;
                    ++second;
                }
            });
        }
        // More readers than stripes, so that some share one.
        for (int t = 0; t < 10; ++t) {
            threads.emplace_back([&] {
                for (int i = 0; i < rounds; ++i) {
                    mzSharedHolderT const holder(this->lock);
                    ASSERT_EQ(first, second);
                }
            });
        }
    }
    EXPECT_EQ(first, 2 * rounds);
}

}  // namespace
