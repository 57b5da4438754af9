#include "support/expected_difference.h"

#include <atomic>
#include <cstdio>
#include <stdexcept>
#include <string>

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "support/data_table.h"
#include "support/leaks.h"

namespace velk::test {
namespace {

std::atomic<int> differences{0};

// This file is linked into the tests that mark something, and only those
// print a total.
[[maybe_unused]] bool const totalIsPrinted = addTearDown([] {
    if (differences > 0)
        std::printf("[ EXPECTED ] %d differences of this system\n", differences.load());
});

bool anyFailed(testing::TestPartResultArray const& results) {
    for (int i = 0; i < results.size(); ++i)
        if (results.GetTestPartResult(i).failed()) return true;
    return false;
}

}  // namespace

bool runsOn(System system) noexcept {
    return (static_cast<unsigned>(runningSystem()) & static_cast<unsigned>(system)) != 0;
}

bool hasDifference(std::string_view id) {
    static auto const rows = rowsOf("differences.tsv");
    for (auto const& row : rows) {
        if (row["id"] != id) continue;
        if (runsOn(System::wine8)) return row["wine8"] != "=";
        return runsOn(System::wine10) && row["wine10"] != "=";
    }
    throw std::out_of_range("no difference " + std::string(id));
}

void expectDifference(std::string_view id, std::function<void()> const& assertions) {
    if (!hasDifference(id)) return assertions();
    expectDifference(runningSystem(), id, assertions);
}

void expectDifference(System system, std::string_view reason,
                      std::function<void()> const& assertions) {
    if (!runsOn(system)) return assertions();

    testing::TestPartResultArray results;
    {
        testing::ScopedFakeTestPartResultReporter const intercept(
            testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results);
        assertions();
    }
    if (!anyFailed(results)) {
        ADD_FAILURE() << "passes, and is marked as a difference of this system: " << reason;
        return;
    }
    ++differences;
    std::printf("[ EXPECTED ] %.*s\n", static_cast<int>(reason.size()), reason.data());
}

void countDifference(std::string_view id) {
    EXPECT_TRUE(hasDifference(id)) << "unexplained difference '" << id << "'";
    ++differences;
}

int expectedDifferences() noexcept {
    return differences;
}

}  // namespace velk::test
