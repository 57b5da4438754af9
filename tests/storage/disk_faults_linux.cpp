#include <algorithm>
#include <cerrno>
#include <cstdio>

#include <velk_live_counts.h>

#include "storage/failing_disk.h"
#include "storage/file_changes.h"

// Every single transfer of a change of a compound file fails in turn, and the
// client closes the file after that, which commits what can be.

namespace {

using namespace velk::test;

struct Fault {
    char const* name;
    DiskCall call;
    int error;
    bool isLasting;
    HRESULT expected;
};

class DiskFaults : public ChangedFile, public testing::WithParamInterface<Fault> {
  protected:
    /// Whether a call failed.
    bool makeWithout(long call, Outcome& outcome) const {
        auto const& fault = GetParam();
        failDisk({fault.call, call, fault.error, fault.isLasting});
        {
            Storage root;
            outcome.code = place_.tryOpen(change, root);
            if (SUCCEEDED(outcome.code)) outcome = make(*root.get());
        }
        return endFailingDisk();
    }

    /// Whether `now` has what the completed steps made; the one stream that
    /// the next step was writing may have any part of it.
    bool isAsMade(Content const& now, std::size_t completed) const {
        Content const& made = states_[completed];
        Content const& next = states_[std::min(completed + 1, steps.size())];
        int torn = 0;
        for (auto const& [path, bytes] : made) {
            auto const found = now.find(path);
            if (found != now.end() && found->second == bytes) continue;
            auto const later = next.find(path);
            bool const isWritten = later == next.end() || later->second != bytes;
            if (found == now.end() || !isWritten) return false;
            ++torn;
        }
        return now.size() == made.size() && torn <= 1;
    }
};

TEST_P(DiskFaults, LoseNothingThatWasThere) {
    long failed = 0, kept = 0;
    for (long call = 0;; ++call) {
        restore();
        Outcome outcome;
        bool const hasFailed = makeWithout(call, outcome);
        EXPECT_EQ(VelkLiveCount(VELK_LIVE_COMPOUND_FILE), 0) << call;
        if (!hasFailed) break;
        ++failed;
        SCOPED_TRACE(call);
        Content const now = contentOf(place_);
        ASSERT_TRUE(now == states_.front() || isAsMade(now, outcome.completed))
            << "after step " << outcome.completed;
        kept += now == states_.front();
        if (FAILED(outcome.code)) {
            ASSERT_EQ(outcome.code, GetParam().expected) << std::hex << outcome.code;
        }
    }
    EXPECT_TRUE(contentOf(place_) == states_.back());
    EXPECT_GE(failed, 2);
    std::printf("%ld failing calls, %ld of them left the former state\n", failed, kept);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, DiskFaults,
    testing::Values(Fault{"ReadError", DiskCall::read, EIO, false, STG_E_READFAULT},
                    Fault{"ReadErrors", DiskCall::read, EIO, true, STG_E_READFAULT},
                    Fault{"WriteError", DiskCall::write, EIO, false, STG_E_WRITEFAULT},
                    Fault{"NoSpaceOnce", DiskCall::write, ENOSPC, false, STG_E_MEDIUMFULL},
                    Fault{"NoSpace", DiskCall::write, ENOSPC, true, STG_E_MEDIUMFULL},
                    Fault{"SyncError", DiskCall::sync, EIO, false, STG_E_WRITEFAULT}),
    [](auto const& each) { return std::string(each.param.name); });

class ShortTransfers : public ChangedFile {};

TEST_F(ShortTransfers, AreGoneOnWith) {
    restore();
    shortenTransfers(true);
    Outcome const outcome = make(*place_.open(change).get());
    Content const now = contentOf(place_);
    EXPECT_GT(shortTransfers(), 500);
    shortenTransfers(false);
    EXPECT_EQ(outcome.code, S_OK);
    EXPECT_TRUE(now == states_.back());
    EXPECT_TRUE(contentOf(place_) == states_.back());
}

}  // namespace
