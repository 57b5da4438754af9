// Texts with their length before them.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "value_notation.h"

namespace velk::test {
namespace {

DWORD lengthBefore(BSTR text) {
    DWORD length = 0;
    std::memcpy(&length, reinterpret_cast<char const*>(text) - sizeof length, sizeof length);
    return length;
}

std::string contentOf(BSTR text) {
    return narrow(text, SysStringLen(text));
}

TEST(Bstr, CarriesItsByteLengthAndAZero) {
    BSTR const text = SysAllocString(wide("abc").c_str());
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(lengthBefore(text), 6U);
    EXPECT_EQ(SysStringLen(text), 3U);
    EXPECT_EQ(SysStringByteLen(text), 6U);
    EXPECT_EQ(contentOf(text), "abc");
    EXPECT_EQ(text[3], 0);
    SysFreeString(text);
}

TEST(Bstr, NullStandsForNoText) {
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    EXPECT_EQ(SysStringLen(nullptr), 0U);
    EXPECT_EQ(SysStringByteLen(nullptr), 0U);
    SysFreeString(nullptr);
    BSTR const empty = SysAllocString(wide("").c_str());
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(SysStringLen(empty), 0U);
    SysFreeString(empty);
}

TEST(Bstr, LengthCountsZeroesInside) {
    OLECHAR const characters[] = {'a', 0, 'b', 0, 'c'};
    BSTR const text = SysAllocStringLen(characters, 5);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(SysStringLen(text), 5U);
    EXPECT_EQ(std::memcmp(text, characters, sizeof characters), 0);
    EXPECT_EQ(text[5], 0);
    SysFreeString(text);
}

TEST(Bstr, OddByteLengthsAreKept) {
    for (UINT length : {0U, 1U, 3U, 5U, 255U}) {
        std::string const bytes(length, 'x');
        BSTR const text = SysAllocStringByteLen(bytes.data(), length);
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(SysStringByteLen(text), length);
        EXPECT_EQ(SysStringLen(text), length / 2);
        EXPECT_EQ(std::memcmp(text, bytes.data(), length), 0);
        char const* const end = reinterpret_cast<char const*>(text) + length;
        EXPECT_EQ(end[0], 0);
        EXPECT_EQ(end[1], 0);
        SysFreeString(text);
    }
}

TEST(Bstr, AbsurdLengthsGiveNoText) {
    for (UINT const length : {0x7fffffffU, 0x80000000U, 0xfffffffeU, 0xffffffffU}) {
        EXPECT_EQ(SysAllocStringLen(nullptr, length), nullptr) << length;
    }
    EXPECT_EQ(SysAllocStringByteLen(nullptr, 0xffffffffU), nullptr);
}

TEST(Bstr, WithoutASourceThereIsRoom) {
    BSTR const text = SysAllocStringLen(nullptr, 4);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(SysStringLen(text), 4U);
    EXPECT_EQ(text[4], 0);
    SysFreeString(text);
}

TEST(Bstr, ReallocationReplacesTheText) {
    BSTR text = SysAllocString(wide("first").c_str());
    EXPECT_TRUE(SysReAllocString(&text, wide("another text").c_str()));
    EXPECT_EQ(contentOf(text), "another text");
    EXPECT_TRUE(SysReAllocStringLen(&text, wide("abcdef").c_str(), 3));
    EXPECT_EQ(contentOf(text), "abc");
    // Without a source only the length changes.
    EXPECT_TRUE(SysReAllocStringLen(&text, nullptr, 2));
    EXPECT_EQ(contentOf(text), "ab");
    EXPECT_TRUE(SysReAllocString(&text, nullptr));
    EXPECT_EQ(text, nullptr);
}

}  // namespace
}  // namespace velk::test
