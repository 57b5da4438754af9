#include <cstring>

#include <gtest/gtest.h>

#include "conformance/com/test_classes.h"

namespace {

TEST(TaskMemory, BlocksOfEverySizeAreBlocks) {
    for (SIZE_T const size : {SIZE_T{0}, SIZE_T{1}, SIZE_T{4096}, SIZE_T{1} << 20}) {
        void* const block = CoTaskMemAlloc(size);
        ASSERT_NE(block, nullptr) << size;
        std::memset(block, 0x5A, size);
        CoTaskMemFree(block);
    }
    CoTaskMemFree(nullptr);
}

TEST(TaskMemory, GrowingKeepsTheContent) {
    auto* block = static_cast<char*>(CoTaskMemRealloc(nullptr, 4));
    ASSERT_NE(block, nullptr);
    std::memcpy(block, "abc", 4);
    block = static_cast<char*>(CoTaskMemRealloc(block, 100000));
    ASSERT_NE(block, nullptr);
    EXPECT_STREQ(block, "abc");
    block = static_cast<char*>(CoTaskMemRealloc(block, 2));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(block[1], 'b');
    EXPECT_EQ(CoTaskMemRealloc(block, 0), nullptr) << "a size of none frees the block";
}

TEST(TaskMemory, AbsurdSizesGiveNothing) {
    EXPECT_EQ(CoTaskMemAlloc(~SIZE_T{0} / 2), nullptr);
    void* const block = CoTaskMemAlloc(8);
    EXPECT_EQ(CoTaskMemRealloc(block, ~SIZE_T{0} / 2), nullptr);
    CoTaskMemFree(block);
}

}  // namespace
