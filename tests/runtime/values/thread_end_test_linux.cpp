#include <gtest/gtest.h>

#include <atomic>

#include "host/sleep.h"
#include "host/thread.h"
#include "host/tls.h"

namespace {

std::atomic<bool> destroyed = false;

TEST(Thread, IsOverOnlyWhenItsValuesAreGone) {
    int const slot = mzTlsAlloc([](void*) {
        mzSleep(30);
        destroyed = true;
    });
    int value = slot;
    mzThreadC thread;
    ASSERT_TRUE(thread.start(
        [](void* argument) {
            *mzTlsGet(*static_cast<int*>(argument)) = argument;
            return 0u;
        },
        &value));
    while (thread.isActive()) mzSleep(1);
    EXPECT_TRUE(destroyed);
    mzTlsFree(slot);
}

}  // namespace
