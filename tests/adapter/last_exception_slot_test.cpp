#include "VelkQXTProxy/last_exception_slot.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>

#include "support/recording_object.h"

namespace {

using namespace velk::test;
using velk::adapter::LastExceptionSlot;

TEST(LastExceptionSlot, EachThreadHasAHolderThatEndsWithIt) {
    LastExceptionSlot slot;
    ASSERT_NE(slot.number(), 0);
    RecordingHolder const kept;
    mzComPtrC* const mine = slot.holder();
    ASSERT_NE(mine, nullptr);
    EXPECT_EQ(slot.holder(), mine);
    std::thread([&] {
        EXPECT_NE(slot.holder(), mine);
        slot.holder()->attach(kept.dispatch());
        EXPECT_EQ(kept->references(), 2U);
    }).join();
    EXPECT_EQ(kept->references(), 1U);
    EXPECT_FALSE(mine->isValid());
}

TEST(LastExceptionSlot, GivesUpWhatThreadsStillHold) {
    std::optional<LastExceptionSlot> slot(std::in_place);
    RecordingHolder const kept;
    slot->holder()->attach(kept.dispatch());
    EXPECT_EQ(kept->references(), 2U);
    slot.reset();
    EXPECT_EQ(kept->references(), 1U);
}

}  // namespace
