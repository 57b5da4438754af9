// The tests' own means: marks of differences, tables.
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "support/data_table.h"
#include "support/expected_difference.h"

namespace velk::test {
namespace {

System const another = runsOn(System::windows) ? System::wine : System::windows;

TEST(ExpectedDifference, SwallowsFailuresOfItsSystemAndFailsWithoutAny) {
    int const before = expectedDifferences();
    expectDifference(runningSystem(), "fails", [] { ASSERT_EQ(1, 2); });
    EXPECT_EQ(before + 1, expectedDifferences());
    EXPECT_NONFATAL_FAILURE(expectDifference(runningSystem(), "long gone", [] {}), "long gone");
    EXPECT_NONFATAL_FAILURE(expectDifference(another, "", [] { ADD_FAILURE() << "seen"; }), "seen");
    if (runsOn(System::ownLayer)) EXPECT_NONFATAL_FAILURE(countDifference("nan"), "unexplained");
    EXPECT_THROW(hasDifference("no such row"), std::out_of_range);
}

TEST(Table, HoldsEachRowToItsAnswer) {
    auto const rows = rowsOf("support/sample.tsv");
    ASSERT_EQ(rows.size(), 2u);
    for (auto const& row : rows) EXPECT_EQ(std::to_string(row["text"].size()), row["length"]);
    EXPECT_NONFATAL_FAILURE(
        expectTable("support/sample.tsv", [](DataRow const& row) { return row["text"]; }),
        "support/sample.tsv:4");
    EXPECT_THROW(rows[0]["no such column"], std::out_of_range);
}

}  // namespace
}  // namespace velk::test
