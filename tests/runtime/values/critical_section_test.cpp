#include "host/critical_section.h"

#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

TEST(CriticalSection, OneThreadAtATimeButThatOneAgain) {
    mzCriticalSectionObjectC section;
    int counter = 0;
    std::vector<std::jthread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 1000; ++i) {
                mzCriticalAutoSectionRefC const outer(&section);
                mzCriticalAutoSectionRefC const inner(&section);
                ++counter;
            }
        });
    }
    threads.clear();
    EXPECT_EQ(counter, 4000);
}

TEST(CriticalSection, NoSectionIsNoLock) {
    mzCriticalAutoSectionRefC const holder(nullptr);
    SUCCEED();
}

}  // namespace
