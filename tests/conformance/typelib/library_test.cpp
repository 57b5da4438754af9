// What a library says about itself, and how its types are found.

#include <filesystem>
#include <fstream>
#include <vector>

#include <gtest/gtest.h>

#include "shapes.h"
#include "support/expected_difference.h"

namespace velk::test {
namespace {

TEST(Library, HasTheAttributesOfItsDescription) {
    auto const library = loadShapes();
    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(library->GetLibAttr(&attributes), S_OK);
    EXPECT_TRUE(IsEqualGUID(attributes->guid, shapesId(0x01)));
    EXPECT_EQ(attributes->lcid, 0x0407u);
    EXPECT_EQ(attributes->syskind, SYS_WIN64);
    EXPECT_EQ(attributes->wMajorVerNum, 1);
    EXPECT_EQ(attributes->wMinorVerNum, 2);
    library->ReleaseTLibAttr(attributes);
}

TEST(Library, TellsItsDocumentation) {
    auto const library = loadShapes();
    BSTR name = nullptr;
    BSTR help = nullptr;
    BSTR file = nullptr;
    ASSERT_EQ(library->GetDocumentation(-1, &name, &help, nullptr, &file), S_OK);
    EXPECT_EQ(taken(name), OLESTR("Shapes"));
    EXPECT_EQ(taken(help), OLESTR("Shapes of the tests"));
    EXPECT_NE(taken(file).find(OLESTR("shapes.hlp")), Wide::npos);
    DWORD context = 0;
    EXPECT_EQ(library->GetDocumentation(-1, nullptr, nullptr, &context, nullptr), S_OK);
    expectDifference(System::wine, "a library has no help context",
                     [&] { EXPECT_EQ(context, 77u); });
    // Every out-parameter may be left out.
    EXPECT_EQ(library->GetDocumentation(-1, nullptr, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(library->GetDocumentation(1000, &name, nullptr, nullptr, nullptr),
              TYPE_E_ELEMENTNOTFOUND);
}

TEST(Library, FindsTypesByIndexAndIdentifier) {
    auto const library = loadShapes();
    ITypeInfo* type = nullptr;
    EXPECT_EQ(library->GetTypeInfo(1000, &type), TYPE_E_ELEMENTNOTFOUND);
    EXPECT_EQ(library->GetTypeInfoOfGuid(shapesId(0xFF), &type), TYPE_E_ELEMENTNOTFOUND);
    ASSERT_EQ(library->GetTypeInfoOfGuid(shapesId(0x02), &type), S_OK);
    EXPECT_EQ(nameOf(type), OLESTR("Color"));
    ITypeLib* containing = nullptr;
    UINT index = 0;
    ASSERT_EQ(type->GetContainingTypeLib(&containing, &index), S_OK);
    EXPECT_EQ(containing, library.get());
    TYPEKIND kind = TKIND_MAX;
    EXPECT_EQ(library->GetTypeInfoType(index, &kind), S_OK);
    EXPECT_EQ(kind, TKIND_ENUM);
    containing->Release();
    type->Release();
}

void expectName(ITypeLib* library, Wide name, bool expected, Wide const& spelling) {
    BOOL found = FALSE;
    EXPECT_EQ(library->IsName(name.data(), 0, &found), S_OK);
    EXPECT_EQ(found != FALSE, expected);
    ITypeInfo* types[4] = {};
    MEMBERID members[4] = {};
    USHORT count = 4;
    EXPECT_EQ(library->FindName(name.data(), 0, types, members, &count), S_OK);
    EXPECT_EQ(count > 0, expected);
    EXPECT_EQ(name, spelling);
    for (USHORT i = 0; i < count; ++i) types[i]->Release();
}

TEST(Library, FindsNames) {
    auto const library = loadShapes();
    for (Wide const name : {OLESTR("Recorder"), OLESTR("Green"), OLESTR("Compute")}) {
        expectName(library.get(), name, true, name);
    }
    expectName(library.get(), OLESTR("nothing"), false, OLESTR("nothing"));
}

TEST(Library, FindsNamesInWhateverCase) {
    auto const library = loadShapes();
    struct {
        Wide name, spelling;
    } const cases[] = {{OLESTR("recorder"), OLESTR("Recorder")},
                       {OLESTR("GREEN"), OLESTR("Green")},
                       {OLESTR("compute"), OLESTR("Compute")}};
    for (auto const& entry : cases) {
        expectDifference(System::wine, "a library compares names with regard to case",
                         [&] { expectName(library.get(), entry.name, true, entry.spelling); });
    }
}

struct Hit {
    Wide type;
    MEMBERID member;
    bool operator==(Hit const&) const = default;
};

std::vector<Hit> hitsOf(ITypeLib* library, Wide& name, ULONG hash, USHORT room) {
    ITypeInfo* types[8] = {};
    MEMBERID members[8] = {};
    USHORT count = room;
    EXPECT_EQ(library->FindName(name.data(), hash, types, members, &count), S_OK);
    EXPECT_LE(count, room);
    std::vector<Hit> hits;
    for (USHORT i = 0; i < count; ++i) {
        hits.push_back({nameOf(types[i]), members[i]});
        types[i]->Release();
    }
    for (USHORT i = count; i < 8; ++i) EXPECT_EQ(types[i], nullptr);
    return hits;
}

TEST(Library, FindNameGivesTypesAndMembersInTheirOrder) {
    auto const library = loadShapes();
    struct {
        Wide name;
        USHORT room;
        std::vector<Hit> hits;
    } const cases[] = {
        {OLESTR("Recorder"), 8, {{OLESTR("Recorder"), MEMBERID_NIL}}},
        {OLESTR("Add"), 8, {{OLESTR("IRecorder"), 1}}},
        {OLESTR("Secret"), 1, {{OLESTR("IRecorder"), 12}}},
        // The accessors of a property are one occurrence.
        {OLESTR("Item"), 8, {{OLESTR("IRecorder"), 0}}},
        {OLESTR("Title"), 8, {{OLESTR("IRecorder"), 2}, {OLESTR("Events"), 11}}},
        {OLESTR("Count"), 8, {{OLESTR("IRecorder"), 3}, {OLESTR("Events"), 10}}},
        {OLESTR("Count"), 2, {{OLESTR("IRecorder"), 3}, {OLESTR("Events"), 10}}},
        {OLESTR("Count"), 1, {{OLESTR("IRecorder"), 3}}},
        {OLESTR("Count"), 0, {}},
        // Parameters and the library itself are no occurrences.
        {OLESTR("left"), 8, {}},
        {OLESTR("Shapes"), 8, {}},
        {OLESTR("nothing"), 8, {}},
        {OLESTR(""), 8, {}},
    };
    for (auto const& entry : cases) {
        for (ULONG const hash :
             {ULONG{0}, LHashValOfNameSys(SYS_WIN64, 0x0407, entry.name.c_str())}) {
            Wide name = entry.name;
            EXPECT_EQ(hitsOf(library.get(), name, hash, entry.room), entry.hits)
                << testing::PrintToString(entry.name);
            EXPECT_EQ(name, entry.name);
        }
    }
}

TEST(Library, FindNameWritesTheSpellingOfTheFirstHit) {
    auto const library = loadShapes();
    for (ULONG const hash : {ULONG{0}, LHashValOfNameSys(SYS_WIN64, 0x0407, OLESTR("count"))}) {
        expectDifference(System::wine, "a library compares names with regard to case", [&] {
            Wide name = OLESTR("cOUNT");
            std::vector<Hit> const hits = {{OLESTR("IRecorder"), 3}, {OLESTR("Events"), 10}};
            EXPECT_EQ(hitsOf(library.get(), name, hash, 8), hits);
            EXPECT_EQ(name, OLESTR("Count"));
        });
    }
    Wide unknown = OLESTR("noTHing");
    EXPECT_TRUE(hitsOf(library.get(), unknown, 0, 8).empty());
    EXPECT_EQ(unknown, OLESTR("noTHing"));
}

TEST(Library, IsNameKnowsParametersToo) {
    auto const library = loadShapes();
    struct {
        OLECHAR const* name;
        bool known;
    } const cases[] = {{OLESTR("left"), true},
                       {OLESTR("Add"), true},
                       {OLESTR("Recorder"), true},
                       {OLESTR("nothing"), false}};
    for (auto const& entry : cases) {
        Wide name = entry.name;
        BOOL found = !entry.known;
        EXPECT_EQ(library->IsName(name.data(), 0, &found), S_OK);
        EXPECT_EQ(found != FALSE, entry.known) << testing::PrintToString(name);
    }
}

TEST(Library, FindNameRefusesNullPointers) {
    auto const library = loadShapes();
    Wide name = OLESTR("Count");
    ITypeInfo* types[1] = {};
    MEMBERID members[1] = {};
    USHORT count = 1;
    EXPECT_EQ(library->FindName(nullptr, 0, types, members, &count), E_INVALIDARG);
    EXPECT_EQ(library->FindName(name.data(), 0, nullptr, members, &count), E_INVALIDARG);
    EXPECT_EQ(library->FindName(name.data(), 0, types, nullptr, &count), E_INVALIDARG);
    EXPECT_EQ(library->FindName(name.data(), 0, types, members, nullptr), E_INVALIDARG);
    EXPECT_EQ(types[0], nullptr);
}

TEST(Library, IsReadOnceWhileInUse) {
    auto const first = loadShapes();
    auto const second = loadShapes();
    EXPECT_EQ(first.get(), second.get());
}

TEST(Library, OutlivesItsOwnRelease) {
    auto library = loadShapes();
    auto const type = typeNamed(library.get(), OLESTR("Color"));
    library.reset();
    EXPECT_EQ(nameOf(type.get()), OLESTR("Color"));
}

TEST(Library, RefusesWhatIsNoLibrary) {
    ITypeLib* library = nullptr;
    EXPECT_EQ(LoadTypeLibEx(OLESTR("/no/such/file.tlb"), REGKIND_NONE, &library),
              TYPE_E_CANTLOADLIBRARY);
    EXPECT_EQ(library, nullptr);
    EXPECT_EQ(LoadTypeLibEx(nullptr, REGKIND_NONE, &library), E_INVALIDARG);
    EXPECT_EQ(LoadTypeLibEx(shapesPath().c_str(), REGKIND_NONE, nullptr), E_INVALIDARG);
    auto const file = std::filesystem::temp_directory_path() / "velk_no_library.tlb";
    std::ofstream(file) << "this is a text";
    EXPECT_EQ(LoadTypeLibEx(file.string<OLECHAR>().c_str(), REGKIND_NONE, &library),
              TYPE_E_CANTLOADLIBRARY);
    std::filesystem::remove(file);
}

TEST(Library, KeepsCustomData) {
    auto const library = loadShapes();
    ITypeLib2* extended = nullptr;
    ASSERT_EQ(library->QueryInterface(IID_ITypeLib2, reinterpret_cast<void**>(&extended)), S_OK);
    Owned<ITypeLib2> const owned(extended);
    VARIANT value;
    VariantInit(&value);
    ASSERT_EQ(extended->GetCustData(shapesId(0xAA), &value), S_OK);
    ASSERT_EQ(value.vt, VT_BSTR);
    EXPECT_EQ(Wide(value.bstrVal), OLESTR("library value"));
    VariantClear(&value);
}

}  // namespace
}  // namespace velk::test
