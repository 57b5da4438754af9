// What a library says about itself, and how its types are found.

#include <filesystem>
#include <fstream>

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

TEST(Library, FindNameGivesNoMoreThanThereIsRoomFor) {
    auto const library = loadShapes();
    Wide name = OLESTR("Title");
    ITypeInfo* type = nullptr;
    MEMBERID member = 0;
    USHORT count = 1;
    ASSERT_EQ(library->FindName(name.data(), 0, &type, &member, &count), S_OK);
    ASSERT_EQ(count, 1);
    EXPECT_EQ(nameOf(type), OLESTR("IRecorder"));
    EXPECT_EQ(member, 2);
    type->Release();
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
