#include <cstdio>

#include <velk_live_counts.h>

#include "storage/file_changes.h"
#include "support/failing_memory.h"

// Every single allocation of a change of a compound file fails in turn.

namespace {

using namespace velk::test;

bool isOutOfMemory(HRESULT code) {
    return code == STG_E_INSUFFICIENTMEMORY || code == E_OUTOFMEMORY;
}

class OutOfMemory : public ChangedFile, public testing::WithParamInterface<bool> {
  protected:
    /// Opens the file, makes all steps and closes it while allocations fail.
    /// Whether one did.
    bool makeWithout(long allocation, Outcome& outcome) const {
        failAllocations(allocation, GetParam());
        {
            Storage root;
            outcome.code = place_.tryOpen(change, root);
            if (SUCCEEDED(outcome.code)) outcome = make(*root.get());
        }
        return endFailingAllocations();
    }
};

TEST_P(OutOfMemory, LeavesTheStateBeforeOrAfter) {
    long failed = 0, reported = 0;
    for (long allocation = 0;; ++allocation) {
        restore();
        long const blocks = liveBlocks();
        Outcome outcome;
        bool const hasFailed = makeWithout(allocation, outcome);
        EXPECT_EQ(liveBlocks(), blocks) << "leak after " << allocation;
        EXPECT_EQ(VelkLiveCount(VELK_LIVE_COMPOUND_FILE), 0) << allocation;
        if (!hasFailed) break;
        ++failed;
        SCOPED_TRACE(allocation);
        Content const now = contentOf(place_);
        ASSERT_TRUE(now == states_.front() || now == states_[outcome.completed])
            << "after step " << outcome.completed;
        if (SUCCEEDED(outcome.code)) continue;
        ++reported;
        ASSERT_TRUE(isOutOfMemory(outcome.code)) << std::hex << outcome.code;
    }
    EXPECT_GT(failed, 150);
    EXPECT_GT(reported, failed * 9 / 10);
    std::printf("%ld failing allocations, %ld of them reported\n", failed, reported);
    EXPECT_TRUE(contentOf(place_) == states_.back());
}

/// What failed to be listed is listed whole when there is memory again.
TEST_P(OutOfMemory, ListsAllTheNextTime) {
    for (long allocation = 0;; ++allocation) {
        restore();
        {
            auto const root = place_.open(change);
            failAllocations(allocation, GetParam());
            static_cast<void>(steps.front().run(*root.get()));
            if (!endFailingAllocations()) break;
            // Links the elements that are known anew.
            ASSERT_EQ(make(*root.get()).code, S_OK) << allocation;
        }
        ASSERT_TRUE(contentOf(place_) == states_.back()) << allocation;
    }
}

/// A transacted file goes on after Revert as if nothing had been.
TEST_P(OutOfMemory, IsOverAfterRevert) {
    long repeated = 0;
    for (long allocation = 0;; ++allocation) {
        restore();
        auto root = place_.open(change | STGM_TRANSACTED);
        ASSERT_TRUE(root);
        failAllocations(allocation, GetParam());
        HRESULT code = make(*root.get()).code;
        bool const hasFailed = endFailingAllocations();
        if (!hasFailed) break;
        if (SUCCEEDED(code)) continue;
        SCOPED_TRACE(allocation);
        ASSERT_EQ(root->Revert(), S_OK);
        if (stateBitsOf(*root.get()) != "0") continue;
        code = make(*root.get()).code;
        root = {};
        // What had begun to be written cannot be written again.
        ASSERT_TRUE(code == S_OK || code == STG_E_WRITEFAULT) << std::hex << code;
        ASSERT_TRUE(contentOf(place_) == (code == S_OK ? states_.back() : states_.front()));
        repeated += code == S_OK;
    }
    EXPECT_GT(repeated, 100);
}

INSTANTIATE_TEST_SUITE_P(Allocations, OutOfMemory, testing::Values(false, true),
                         [](auto const& each) {
                             return std::string(each.param ? "AllFromOneOn" : "One");
                         });

}  // namespace
