#include "host/bstr_holder.h"

#include <climits>
#include <cstring>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "host/diagnostics.h"

namespace {

long long holders() {
    return mzLiveCount(mzLiveKindE::bstrHolder);
}

TEST(BstrHolder, CopiesShareOneString) {
    long long const before = holders();
    {
        mzBstrHolderC const first(OLESTR("text"));
        mzBstrHolderC const second = first;
        EXPECT_EQ(first.get(), second.get());
        EXPECT_EQ(holders(), before + 1);
        EXPECT_EQ(second.length(), 4);
    }
    EXPECT_EQ(holders(), before);
}

TEST(BstrHolder, NoStringIsNotTheEmptyString) {
    EXPECT_TRUE(mzBstrHolderC().isNull());
    EXPECT_TRUE(mzBstrHolderC(static_cast<OLECHAR const*>(nullptr)).isNull());
    EXPECT_TRUE(mzBstrHolderC::adopt(nullptr).isNull());
    EXPECT_TRUE(mzBstrHolderC::copyOf(nullptr).isNull());
    EXPECT_EQ(mzBstrHolderC().copy(), nullptr);
    EXPECT_FALSE(mzBstrHolderC(OLESTR("")).isNull());
    EXPECT_EQ(mzBstrHolderC(OLESTR("")).length(), 0);
}

TEST(BstrHolder, KeepsEmbeddedZerosAndOddByteLengths) {
    mzBstrHolderC const zeros(OLESTR("a\0b"), 3);
    ASSERT_EQ(zeros.length(), 3);
    EXPECT_EQ(zeros.get()[2], OLESTR('b'));

    mzBstrHolderC const odd = mzBstrHolderC::adopt(SysAllocStringByteLen("abcde", 5));
    mzBstrHolderC const copy = mzBstrHolderC::copyOf(odd.get());
    ASSERT_EQ(SysStringByteLen(copy.get()), 5u);
    EXPECT_EQ(std::memcmp(copy.get(), "abcde", 5), 0);
    EXPECT_NE(copy.get(), odd.get());
}

TEST(BstrHolder, NullTextOfALengthIsZeros) {
    mzBstrHolderC const zeros(nullptr, 2);
    ASSERT_EQ(zeros.length(), 2);
    EXPECT_EQ(zeros.get()[0], 0);
    EXPECT_EQ(zeros.get()[1], 0);
}

TEST(BstrHolder, MoveAndAssignmentLeaveNoSecondOwner) {
    mzBstrHolderC first(OLESTR("one"));
    mzBstrHolderC moved(std::move(first));
    EXPECT_EQ(moved.length(), 3);
    moved = mzBstrHolderC(OLESTR("three"));
    EXPECT_EQ(moved.length(), 5);
    mzBstrHolderC const& same = moved;
    moved = same;
    EXPECT_EQ(moved.length(), 5);
}

TEST(BstrHolder, AFailedAllocationCarriesTheCode) {
    // Two bytes each are more than a BSTR can count.
    try {
        mzBstrHolderC const tooLong(nullptr, INT_MAX);
        FAIL() << "the allocation succeeded";
    } catch (mzOutOfMemoryC const& error) {
        EXPECT_EQ(error.code(), static_cast<HRESULT>(0x8007000E));
        EXPECT_NE(dynamic_cast<std::bad_alloc const*>(&error), nullptr);
    }
}

TEST(BstrHolder, CopiesMayDieOnOtherThreads) {
    mzBstrHolderC original(OLESTR("shared"));
    auto const copyOften = [copy = original] {
        for (int i = 0; i < 1000; ++i) mzBstrHolderC const again = copy;
    };
    std::thread other(copyOften);
    copyOften();
    original = mzBstrHolderC();
    other.join();
}

}  // namespace
