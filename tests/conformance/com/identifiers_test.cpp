#include <map>
#include <set>

#include <gtest/gtest.h>

#include "conformance/com/test_classes.h"
#include "support/data_table.h"

namespace {

using namespace velk::test;

std::string narrow(Text const& text) {
    return {text.begin(), text.end()};
}

/// A result's name, or for success the identifier.
std::string told(HRESULT code, GUID const& id) {
    static std::map<HRESULT, char const*> const names = {{E_INVALIDARG, "E_INVALIDARG"},
                                                         {CO_E_CLASSSTRING, "CO_E_CLASSSTRING"},
                                                         {CO_E_IIDSTRING, "CO_E_IIDSTRING"}};
    if (code == S_OK) return id == plainClass ? "plain" : narrow(idText(id)).substr(0, 9);
    bool const isKnown = names.contains(code);
    return (isKnown ? names.at(code) : std::to_string(code)) + (id == GUID_NULL ? "" : "!");
}

/// Programmatic ids of the registry, as long as this lives.
struct ProgIds {
    std::map<Text, Text> const texts = {
        {OLESTR("VelkTest.Plain\\CLSID"), idText(plainClass)},
        {OLESTR("VelkTest.Malformed\\CLSID"), OLESTR("no id")},
        {OLESTR("VelkTest.NoClass\\Other"), OLESTR("a description")},
        {OLESTR("VelkTest.One\\CurVer"), OLESTR("VelkTest.One.2")},
        {OLESTR("VelkTest.One.2\\CLSID"), idText(plainClass)},
        {OLESTR("VelkTest.Own\\CurVer"), OLESTR("VelkTest.One.2")},
        {OLESTR("VelkTest.Own\\CLSID"), idText(IID_IUnknown)},
        {OLESTR("VelkTest.Circle\\CurVer"), OLESTR("VelkTest.Circle")},
        {OLESTR("VelkTest.Nowhere\\CurVer"), OLESTR("VelkTest.Nothing")}};

    ProgIds() {
        for (auto const& [key, text] : texts) setClassesText(key, nullptr, text);
    }
    ~ProgIds() {
        for (auto const& [key, text] : texts) deleteClassesKey(key.substr(0, key.find(u'\\')));
    }
};

TEST(Identifiers, AreReadFromTextAndFromTheRegistry) {
    ProgIds const registered;
    expectTable("com/identifiers.tsv", [](DataRow const& row) {
        Text const text(row["text"].begin(), row["text"].end());
        auto const* const given = row["text"] == "(null)" ? nullptr : text.c_str();
        std::string all;
        using Read = HRESULT(STDAPICALLTYPE*)(LPCOLESTR, GUID*);
        for (Read const read :
             {Read(CLSIDFromString), Read(IIDFromString), Read(CLSIDFromProgID)}) {
            GUID id{};
            HRESULT const code = read(given, &id);
            all += (all.empty() ? "" : " ") + told(code, id);
            EXPECT_EQ(read(given, nullptr), E_INVALIDARG);
        }
        return all;
    });
}

TEST(Identifiers, WritingNeedsRoomForAllOfIt) {
    OLECHAR text[39] = {OLESTR('z'), 0};
    for (INT const capacity : {0, 1, 38}) {
        EXPECT_EQ(StringFromGUID2(IID_IUnknown, text, capacity), 0) << capacity;
        EXPECT_EQ(text[0], OLESTR('z')) << capacity;
    }
    EXPECT_EQ(StringFromGUID2(plainClass, text, 39), 39);
    EXPECT_EQ(Text(text), OLESTR("{4D0E5F10-6B1C-4C55-9A51-205E11000001}"));
}

TEST(Identifiers, NewOnesAreRandomAndMarkedSo) {
    std::set<Text> seen;
    for (int time = 0; time < 1000; ++time) {
        GUID id{};
        ASSERT_EQ(CoCreateGuid(&id), S_OK);
        EXPECT_EQ(id.Data3 >> 12, 4);
        EXPECT_EQ(id.Data4[0] >> 6, 2);
        seen.insert(idText(id));
    }
    EXPECT_EQ(seen.size(), 1000u);
    EXPECT_EQ(CoCreateGuid(nullptr), E_INVALIDARG);
}

TEST(TaskMemory, BlocksOfEverySizeAreBlocks) {
    for (SIZE_T const size : {SIZE_T{0}, SIZE_T{1}, SIZE_T{4096}, SIZE_T{1} << 20}) {
        auto* const block = static_cast<char*>(CoTaskMemAlloc(size));
        ASSERT_NE(block, nullptr) << size;
        std::fill_n(block, size, 'x');
        CoTaskMemFree(block);
    }
    CoTaskMemFree(nullptr);
    EXPECT_EQ(CoTaskMemAlloc(~SIZE_T{0} / 2), nullptr);
}

}  // namespace
