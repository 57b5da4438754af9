#include <atomic>

#include <gtest/gtest.h>

#include "host/sleep.h"
#include "host/thread.h"
#include "host/tls.h"

TEST(Thread, IsOverOnlyWhenItsValuesAreGone) {
    static std::atomic<bool> destroyed;
    destroyed = false;
    int slot = mzTlsAlloc([](void*) {
        mzSleep(30);
        destroyed = true;
    });
    auto const setValue = [](void* argument) {
        *mzTlsGet(*static_cast<int*>(argument)) = argument;
        return 0u;
    };
    mzThreadC thread;
    ASSERT_TRUE(thread.start(setValue, &slot));
    while (thread.isActive()) mzSleep(1);
    EXPECT_TRUE(destroyed);
    mzTlsFree(slot);
}
