#include "support/expected_difference.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace velk::test {
namespace {

System anotherSystem() {
    return runningSystem() == System::windows ? System::wine : System::windows;
}

TEST(ExpectedDifference, SwallowsAndCountsTheFailuresOfTheMarkedSystem) {
    int const before = expectedDifferences();
    bool reachedTheEnd = false;
    expectDifference(runningSystem(), "fails twice", [&] {
        EXPECT_EQ(1, 2);
        EXPECT_EQ(3, 4);
        reachedTheEnd = true;
    });
    EXPECT_TRUE(reachedTheEnd);
    EXPECT_EQ(before + 1, expectedDifferences());
    EXPECT_FALSE(testing::Test::HasFailure());
}

TEST(ExpectedDifference, AFatalFailureEndsTheBlockOnly) {
    int const before = expectedDifferences();
    bool reachedTheEnd = false;
    expectDifference(runningSystem(), "fails at once", [&] {
        ASSERT_EQ(1, 2);
        reachedTheEnd = true;
    });
    EXPECT_FALSE(reachedTheEnd);
    EXPECT_EQ(before + 1, expectedDifferences());
}

TEST(ExpectedDifference, FailsWhenNothingDiffersAnyMore) {
    int const before = expectedDifferences();
    EXPECT_NONFATAL_FAILURE(expectDifference(runningSystem(), "long gone", [] { EXPECT_EQ(1, 1); }),
                            "long gone");
    EXPECT_EQ(before, expectedDifferences());
}

TEST(ExpectedDifference, IsAnOrdinaryBlockOnOtherSystems) {
    int const before = expectedDifferences();
    expectDifference(anotherSystem(), "not here", [] { EXPECT_EQ(1, 1); });
    EXPECT_NONFATAL_FAILURE(
        expectDifference(anotherSystem(), "not here", [] { ADD_FAILURE() << "seen"; }), "seen");
    EXPECT_EQ(before, expectedDifferences());
}

}  // namespace
}  // namespace velk::test
