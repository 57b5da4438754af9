#include <cstring>
#include <set>

#include <gtest/gtest.h>

#include "conformance/com/test_classes.h"

namespace {

using namespace velk::test;

struct TextCase {
    char const* what;
    OLECHAR const* text;
    HRESULT asClass;
    HRESULT asInterface;
};

TEST(GuidText, OnlyThePublishedFormIsRead) {
    TextCase const cases[] = {
        {"upper case", OLESTR("{ABCDEF01-2345-6789-ABCD-EF0123456789}"), S_OK, S_OK},
        {"lower case", OLESTR("{abcdef01-2345-6789-abcd-ef0123456789}"), S_OK, S_OK},
        {"no braces", OLESTR("ABCDEF01-2345-6789-ABCD-EF0123456789"), CO_E_CLASSSTRING,
         E_INVALIDARG},
        {"blank in front", OLESTR(" {ABCDEF01-2345-6789-ABCD-EF0123456789}"), CO_E_CLASSSTRING,
         E_INVALIDARG},
        {"blank behind", OLESTR("{ABCDEF01-2345-6789-ABCD-EF0123456789} "), CO_E_CLASSSTRING,
         E_INVALIDARG},
        {"no closing brace", OLESTR("{ABCDEF01-2345-6789-ABCD-EF0123456789"), CO_E_CLASSSTRING,
         E_INVALIDARG},
        {"round closing", OLESTR("{ABCDEF01-2345-6789-ABCD-EF0123456789)"), CO_E_CLASSSTRING,
         CO_E_IIDSTRING},
        {"digit too few", OLESTR("{ABCDEF01-2345-6789-ABCD-EF012345678}"), CO_E_CLASSSTRING,
         E_INVALIDARG},
        {"letter g", OLESTR("{ABCDEF01-2345-6789-ABCD-EF012345678g}"), CO_E_CLASSSTRING,
         CO_E_IIDSTRING},
        {"dash misplaced", OLESTR("{ABCDEF0-12345-6789-ABCD-EF0123456789}"), CO_E_CLASSSTRING,
         CO_E_IIDSTRING},
        {"empty", OLESTR(""), CO_E_CLASSSTRING, E_INVALIDARG},
        {"one brace", OLESTR("{"), CO_E_CLASSSTRING, E_INVALIDARG},
    };
    GUID const expected = {
        0xABCDEF01, 0x2345, 0x6789, {0xAB, 0xCD, 0xEF, 1, 0x23, 0x45, 0x67, 0x89}};
    for (auto const& entry : cases) {
        GUID id{};
        EXPECT_EQ(CLSIDFromString(entry.text, &id), entry.asClass) << entry.what;
        if (entry.asClass == S_OK) {
            EXPECT_TRUE(IsEqualGUID(id, expected)) << entry.what;
        }
        id = {};
        EXPECT_EQ(IIDFromString(entry.text, &id), entry.asInterface) << entry.what;
        if (entry.asInterface == S_OK) {
            EXPECT_TRUE(IsEqualGUID(id, expected)) << entry.what;
        }
    }
}

TEST(GuidText, NullTextIsTheNullId) {
    GUID id = plainClass;
    EXPECT_EQ(CLSIDFromString(nullptr, &id), S_OK);
    EXPECT_TRUE(IsEqualGUID(id, GUID_NULL));
    id = plainClass;
    EXPECT_EQ(IIDFromString(nullptr, &id), S_OK);
    EXPECT_TRUE(IsEqualGUID(id, GUID_NULL));
}

TEST(GuidText, NullTargetsAreRefused) {
    EXPECT_EQ(CLSIDFromString(OLESTR("{00000000-0000-0000-C000-000000000046}"), nullptr),
              E_INVALIDARG);
    EXPECT_EQ(CLSIDFromProgID(OLESTR("Velk.Test"), nullptr), E_INVALIDARG);
    GUID id{};
    EXPECT_EQ(CLSIDFromProgID(nullptr, &id), E_INVALIDARG);
    EXPECT_EQ(ProgIDFromCLSID(plainClass, nullptr), E_INVALIDARG);
    EXPECT_EQ(CoCreateGuid(nullptr), E_INVALIDARG);
}

TEST(GuidText, WritingNeedsRoomForAllOfIt) {
    for (INT const capacity : {0, 1, 38}) {
        OLECHAR text[64] = {OLESTR('z'), 0};
        EXPECT_EQ(StringFromGUID2(IID_IUnknown, text, capacity), 0) << capacity;
        EXPECT_EQ(text[0], OLESTR('z')) << capacity;
    }
    OLECHAR text[39];
    EXPECT_EQ(StringFromGUID2(IID_IUnknown, text, 39), 39);
    EXPECT_EQ(Text(text), OLESTR("{00000000-0000-0000-C000-000000000046}"));

    LPOLESTR allocated = nullptr;
    ASSERT_EQ(StringFromCLSID(plainClass, &allocated), S_OK);
    EXPECT_EQ(Text(allocated), OLESTR("{4D0E5F10-6B1C-4C55-9A51-205E11000001}"));
    CoTaskMemFree(allocated);
}

TEST(GuidText, NewIdsAreRandomAndMarkedSo) {
    std::set<Text> seen;
    for (int time = 0; time < 1000; ++time) {
        GUID id{};
        ASSERT_EQ(CoCreateGuid(&id), S_OK);
        EXPECT_EQ(id.Data3 >> 12, 4);
        EXPECT_EQ(id.Data4[0] >> 6, 2);
        seen.insert(idText(id));
    }
    EXPECT_EQ(seen.size(), 1000u);
}

struct ProgIdFixture : testing::Test {
    ~ProgIdFixture() override {
        for (auto const* key :
             {OLESTR("VelkTest.Plain"), OLESTR("VelkTest.Malformed"), OLESTR("VelkTest.NoClass")}) {
            deleteClassesKey(key);
        }
        deleteClassesKey(OLESTR("CLSID\\") + idText(plainClass));
    }
};
using ProgIds = ProgIdFixture;

TEST_F(ProgIds, LeadToTheirClass) {
    setClassesText(OLESTR("VelkTest.Plain\\CLSID"), nullptr, idText(plainClass));
    setClassesText(OLESTR("VelkTest.Malformed\\CLSID"), nullptr, OLESTR("no id"));
    setClassesText(OLESTR("VelkTest.NoClass"), nullptr, OLESTR("a description"));
    struct Case {
        OLECHAR const* progId;
        HRESULT expected;
    };
    Case const cases[] = {
        {OLESTR("VelkTest.Plain"), S_OK},
        {OLESTR("velktest.PLAIN"), S_OK},
        {OLESTR("VelkTest.Plain "), CO_E_CLASSSTRING},
        {OLESTR("VelkTest.Malformed"), CO_E_CLASSSTRING},
        {OLESTR("VelkTest.NoClass"), CO_E_CLASSSTRING},
        {OLESTR("VelkTest.Nothing"), CO_E_CLASSSTRING},
        {OLESTR(""), CO_E_CLASSSTRING},
        {OLESTR("\\"), CO_E_CLASSSTRING},
    };
    for (auto const& entry : cases) {
        GUID id{};
        EXPECT_EQ(CLSIDFromProgID(entry.progId, &id), entry.expected)
            << testing::PrintToString(Text(entry.progId).size());
        EXPECT_TRUE(IsEqualGUID(id, entry.expected == S_OK ? plainClass : GUID_NULL));
        // A text that is no identifier is taken for a programmatic id.
        EXPECT_EQ(CLSIDFromString(entry.progId, &id), entry.expected);
    }
}

TEST_F(ProgIds, AreFoundFromTheirClass) {
    auto* text = reinterpret_cast<LPOLESTR>(1);
    EXPECT_EQ(ProgIDFromCLSID(plainClass, &text), REGDB_E_CLASSNOTREG);
    EXPECT_EQ(text, nullptr);
    Text const key = OLESTR("CLSID\\") + idText(plainClass);
    setClassesText(key, nullptr, OLESTR("without a programmatic id"));
    EXPECT_EQ(ProgIDFromCLSID(plainClass, &text), REGDB_E_CLASSNOTREG);
    setClassesText(key + OLESTR("\\ProgID"), nullptr, OLESTR("VelkTest.Plain.1"));
    ASSERT_EQ(ProgIDFromCLSID(plainClass, &text), S_OK);
    EXPECT_EQ(Text(text), OLESTR("VelkTest.Plain.1"));
    CoTaskMemFree(text);
}

}  // namespace
