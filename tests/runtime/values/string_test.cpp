#include "host/com_string.h"

#include <climits>
#include <string>

#include <gtest/gtest.h>

namespace {

mzComStringC ole(OLECHAR const* text) {
    return mzComStringC(text);
}

TEST(String, FromEverySource) {
    unsigned short const utf16[] = {'a', 0x00E4, 0x20AC, 0};
    mzComStringC const expected = ole(OLESTR("a\u00e4\u20ac"));
    EXPECT_EQ(mzComStringC(utf16), expected);
    EXPECT_EQ(mzComStringC::fromLocal8BitW(utf16, -1), expected);
    EXPECT_EQ(mzComStringC::fromLocal8BitW(utf16, 2), ole(OLESTR("a\u00e4")));
    EXPECT_EQ(mzComStringC::fromUtf8("a\xc3\xa4\xe2\x82\xac", -1), expected);
    EXPECT_EQ(mzComStringC::fromUtf8("a\xc3\xa4zzz", 3), ole(OLESTR("a\u00e4")));
    EXPECT_EQ(mzComStringC(QString::fromUtf8("a\xc3\xa4\xe2\x82\xac")), expected);
    EXPECT_EQ(mzComStringC(mzBstrHolderC(OLESTR("a\u00e4\u20ac"))), expected);
    EXPECT_EQ(mzComStringC("plain"), ole(OLESTR("plain")));
}

TEST(String, NullIsEmptyEverywhere) {
    EXPECT_TRUE(mzComStringC(static_cast<char const*>(nullptr)).isEmpty());
    EXPECT_TRUE(mzComStringC(static_cast<unsigned short const*>(nullptr)).isEmpty());
    EXPECT_TRUE(mzComStringC::fromBSTR(static_cast<BSTR>(nullptr)).isEmpty());
    EXPECT_TRUE(mzComStringC::fromBSTR(mzBstrHolderC()).isEmpty());
    EXPECT_TRUE(mzComStringC::fromUtf8(nullptr, -1).isEmpty());
    EXPECT_TRUE(mzComStringC::fromUtf8(nullptr, 4).isEmpty());
    EXPECT_TRUE(mzComStringC::fromLocal8BitW(nullptr, 3).isEmpty());
    EXPECT_EQ(mzComStringC("x").compare(nullptr, caseCompareExact), 1);
}

TEST(String, BstrKeepsZerosAndUnpairedSurrogates) {
    OLECHAR const odd[] = {'a', 0, 0xD800, 'b', 0xDC00};
    mzComStringC const text = mzComStringC::fromBSTR(mzBstrHolderC(odd, 5));
    ASSERT_EQ(text.length(), 5);
    mzBstrHolderC const back = text.toBSTR();
    ASSERT_EQ(back.length(), 5);
    EXPECT_EQ(std::basic_string_view<OLECHAR>(back.get(), 5),
              std::basic_string_view<OLECHAR>(odd, 5));
    EXPECT_EQ(text.toLocal8BitW().size(), 5u);
    EXPECT_EQ(text.toLocal8BitW()[2], 0xD800);
}

TEST(String, TheEmptyStringIsABstrOfItsOwn) {
    mzBstrHolderC const empty = mzComStringC().toBSTR();
    EXPECT_FALSE(empty.isNull());
    EXPECT_EQ(empty.length(), 0);
}

TEST(String, ToEightBitText) {
    mzComStringC const text = ole(OLESTR("Aa\u00e4\u20ac"));
    EXPECT_EQ(text.toUtf8(), "Aa\xc3\xa4\xe2\x82\xac");
    EXPECT_EQ(text.toAscii(), "Aa??");
    OLECHAR const pair[] = {0xD83D, 0xDE00, 0};
    EXPECT_EQ(ole(pair).toUtf8(), "\xf0\x9f\x98\x80");
    OLECHAR const lone[] = {'x', 0xD83D, 'y', 0};
    EXPECT_EQ(ole(lone).toUtf8(), "x?y");
    EXPECT_EQ(mzComStringC::fromUtf8("x\xffy", 3), ole(OLESTR("x\ufffdy")));
}

TEST(String, FromInt) {
    static constexpr struct {
        int value;
        int base;
        char const* text;
    } rows[] = {
        {0, 10, "0"},
        {-1, 10, "-1"},
        {INT_MIN, 10, "-2147483648"},
        {INT_MAX, 16, "7fffffff"},
        {1, 16, "1"},
        // An HRESULT as the messages show it.
        {static_cast<int>(0x80020009), 16, "80020009"},
        {-1, 16, "ffffffff"},
        {35, 36, "z"},
        {5, 2, "101"},
        {5, 1, ""},
        {5, 37, ""},
        {5, -10, ""},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(mzComStringC::fromInt(row.value, row.base).toUtf8(), row.text)
            << row.value << " in base " << row.base;
    }
}

TEST(String, Compare) {
    static constexpr struct {
        char const* left;
        char const* right;
        int exact;
        int folded;
    } rows[] = {
        {"flags", "flags", 0, 0},
        {"Flags", "flags", -1, 0},
        {"flags", "FLAGS", 1, 0},
        {"flag", "flags", -1, -1},
        {"flags", "flag", 1, 1},
        {"", "", 0, 0},
        {"", "a", -1, -1},
        {"b", "A", 1, 1},
        // The characters between Z and a are no letters.
        {"[", "{", -1, -1},
        {"@", "`", -1, -1},
        // Latin-1 letters are compared exactly in both modes.
        {"\xe4", "\xc4", 1, 1},
    };
    for (auto const& row : rows) {
        mzComStringC const left(row.left);
        EXPECT_EQ(left.compare(row.right, caseCompareExact), row.exact) << row.left;
        EXPECT_EQ(left.compare(row.right, caseCompareAsciiInsensitive), row.folded) << row.left;
        EXPECT_EQ(left.compare(mzComStringC(row.right), caseCompareExact), row.exact) << row.left;
        EXPECT_EQ(left.compare(mzComStringC(row.right), caseCompareAsciiInsensitive), row.folded)
            << row.left;
    }
}

TEST(String, CompareSeesWhatFollowsAZero) {
    mzComStringC const text = mzComStringC::fromUtf8("a\0b", 3);
    EXPECT_NE(text.compare("a", caseCompareAsciiInsensitive), 0);
}

TEST(String, ConcatenationLeavesTheOperandsAlone) {
    mzComStringC const name("Count");
    mzComStringC const message = "Member '" + name + "' not found";
    EXPECT_EQ(message, mzComStringC("Member 'Count' not found"));
    EXPECT_EQ(name + name, mzComStringC("CountCount"));
    EXPECT_EQ(name, mzComStringC("Count"));
    QString const asQString = message;
    EXPECT_EQ(asQString, QStringLiteral("Member 'Count' not found"));
}

}  // namespace
