// Libraries made in memory: what they say about themselves, and their types by
// name, index and identifier.

#include "created_library.h"

#include <functional>

#include <gtest/gtest.h>

#include "support/expected_difference.h"

namespace velk::test {
namespace {

Wide text(OLECHAR const* characters) {
    return characters;
}

void expectCode(bool wineDiffers, char const* reason, HRESULT actual, HRESULT expected) {
    auto const check = [&] { EXPECT_EQ(actual, expected) << reason; };
    wineDiffers ? expectDifference(System::wine, reason, check) : check();
}

TEST(CreatedLibrary, IsOneObjectToWriteAndToRead) {
    auto const library = createLibrary();
    auto const reader = readLibrary(library.get());
    IID const ids[] = {IID_ICreateTypeLib, IID_ICreateTypeLib2, IID_ITypeLib, IID_ITypeLib2};
    IUnknown* identity = nullptr;
    ASSERT_EQ(library->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&identity)), S_OK);
    Owned<IUnknown> const owned(identity);
    for (auto const& id : ids) {
        void* found = nullptr;
        ASSERT_EQ(reader->QueryInterface(id, &found), S_OK);
        Owned<IUnknown> const view(static_cast<IUnknown*>(found));
        IUnknown* same = nullptr;
        EXPECT_EQ(view->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&same)), S_OK);
        EXPECT_EQ(Owned<IUnknown>(same).get(), identity);
    }
    void* none = &none;
    EXPECT_EQ(library->QueryInterface(IID_ICreateTypeInfo, &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
}

TEST(CreatedLibrary, TellsWhatItWasGiven) {
    auto const library = createLibrary();
    auto const reader = readLibrary(library.get());
    auto name = text(OLESTR("Made")), help = text(OLESTR("Help")), file = text(OLESTR("a.hlp"));
    EXPECT_EQ(library->SetName(name.data()), S_OK);
    EXPECT_EQ(library->SetDocString(help.data()), S_OK);
    EXPECT_EQ(library->SetHelpFileName(file.data()), S_OK);
    EXPECT_EQ(library->SetHelpContext(55), S_OK);
    EXPECT_EQ(library->SetVersion(3, 4), S_OK);
    EXPECT_EQ(library->SetGuid(shapesId(0x70)), S_OK);
    EXPECT_EQ(library->SetLcid(0x0409), S_OK);
    EXPECT_EQ(library->SetLibFlags(LIBFLAG_FHIDDEN), S_OK);
    BSTR texts[3] = {};
    DWORD context = 0;
    ASSERT_EQ(reader->GetDocumentation(-1, &texts[0], &texts[1], &context, &texts[2]), S_OK);
    EXPECT_EQ(taken(texts[0]), name);
    EXPECT_EQ(taken(texts[1]), help);
    EXPECT_EQ(taken(texts[2]), file);
    EXPECT_EQ(context, 55u);
    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(reader->GetLibAttr(&attributes), S_OK);
    EXPECT_TRUE(IsEqualGUID(attributes->guid, shapesId(0x70)));
    EXPECT_EQ(attributes->lcid, 0x0409u);
    EXPECT_EQ(attributes->syskind, SYS_WIN64);
    EXPECT_EQ(attributes->wMajorVerNum, 3);
    EXPECT_EQ(attributes->wMinorVerNum, 4);
    EXPECT_EQ(attributes->wLibFlags, LIBFLAG_FHIDDEN);
    reader->ReleaseTLibAttr(attributes);
}

TEST(CreatedLibrary, SaysNothingOfItselfAtFirst) {
    auto const library = createLibrary();
    auto const reader = readLibrary(library.get());
    EXPECT_EQ(reader->GetTypeInfoCount(), 0u);
    BSTR name = nullptr;
    EXPECT_EQ(reader->GetDocumentation(-1, &name, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(name, nullptr);
}

TEST(CreatedLibrary, HasAHelpStringModule) {
    auto const library = createLibrary();
    auto module = text(OLESTR("help.dll"));
    EXPECT_EQ(library->SetHelpStringDll(module.data()), S_OK);
    expectCode(true, "a library has no help string context", library->SetHelpStringContext(66),
               S_OK);
    BSTR found = nullptr;
    DWORD context = 0;
    ASSERT_EQ(readLibrary(library.get())->GetDocumentation2(-1, 0, nullptr, &context, &found),
              S_OK);
    EXPECT_EQ(taken(found), module);
    expectDifference(System::wine, "a library has no help string context",
                     [&] { EXPECT_EQ(context, 66u); });
}

TEST(CreatedLibrary, KeepsCustomData) {
    auto const library = createLibrary();
    auto const reader = readLibrary(library.get());
    VARIANT value = number(4);
    EXPECT_EQ(library->SetCustData(shapesId(0x71), &value), S_OK);
    value.lVal = 5;
    EXPECT_EQ(library->SetCustData(shapesId(0x71), &value), S_OK);
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocString(OLESTR("a text"));
    EXPECT_EQ(library->SetCustData(shapesId(0x72), &value), S_OK);
    VariantClear(&value);
    EXPECT_EQ(reader->GetCustData(shapesId(0x71), &value), S_OK);
    EXPECT_EQ(value.lVal, 5);
    EXPECT_EQ(reader->GetCustData(shapesId(0x72), &value), S_OK);
    ASSERT_EQ(value.vt, VT_BSTR);
    EXPECT_EQ(Wide(value.bstrVal), OLESTR("a text"));
    VariantClear(&value);
    // Objects, arrays and nothing at all have no form in a library.
    for (VARTYPE const type : {VT_ARRAY | VT_I4, VT_BYREF | VT_I4, 999, VT_EMPTY + 0}) {
        VARIANT bad{};
        bad.vt = type;
        EXPECT_EQ(library->SetCustData(shapesId(0x73), &bad), DISP_E_BADVARTYPE) << type;
    }
    EXPECT_EQ(library->SetCustData(shapesId(0x73), nullptr), E_INVALIDARG);
}

TEST(CreatedLibrary, FindsItsTypesByNameIndexAndIdentifier) {
    auto const library = createLibrary();
    auto const reader = readLibrary(library.get());
    auto const first = createType(library.get(), OLESTR("First"), TKIND_ENUM);
    auto const second = createType(library.get(), OLESTR("Second"), TKIND_RECORD);
    EXPECT_EQ(second->SetGuid(shapesId(0x74)), S_OK);
    ASSERT_EQ(reader->GetTypeInfoCount(), 2u);
    TYPEKIND kind = TKIND_MAX;
    EXPECT_EQ(reader->GetTypeInfoType(1, &kind), S_OK);
    EXPECT_EQ(kind, TKIND_RECORD);
    ITypeInfo* found = nullptr;
    ASSERT_EQ(reader->GetTypeInfoOfGuid(shapesId(0x74), &found), S_OK);
    Owned<ITypeInfo> const owned(found);
    EXPECT_EQ(nameOf(found), OLESTR("Second"));
    EXPECT_EQ(found, static_cast<ITypeInfo*>(readType(second.get()).get()));
    ITypeLib* containing = nullptr;
    UINT index = 0;
    ASSERT_EQ(found->GetContainingTypeLib(&containing, &index), S_OK);
    EXPECT_EQ(Owned<ITypeLib>(containing).get(), reader.get());
    EXPECT_EQ(index, 1u);
    EXPECT_EQ(reader->GetTypeInfo(2, &found), TYPE_E_ELEMENTNOTFOUND);
}

TEST(CreatedLibrary, FindsNamesAsSoonAsTheyAreGiven) {
    auto const library = createLibrary();
    auto const reader = readLibrary(library.get());
    auto const type = createType(library.get(), OLESTR("Color"), TKIND_ENUM);
    VARIANT value = number(3);
    VARDESC constant = variableShape(VAR_CONST, VT_I4);
    constant.lpvarValue = &value;
    for (OLECHAR const* const name : {OLESTR("Red"), OLESTR("Green")}) {
        Wide buffer = name;
        BOOL known = TRUE;
        EXPECT_EQ(reader->IsName(buffer.data(), 0, &known), S_OK);
        EXPECT_FALSE(known);
        addVariable(type.get(), constant, name);
        EXPECT_EQ(type->LayOut(), S_OK);
        EXPECT_EQ(reader->IsName(buffer.data(), 0, &known), S_OK);
        EXPECT_TRUE(known);
        ITypeInfo* found = nullptr;
        MEMBERID member = 0;
        USHORT count = 1;
        ASSERT_EQ(reader->FindName(buffer.data(), 0, &found, &member, &count), S_OK);
        ASSERT_EQ(count, 1);
        EXPECT_EQ(nameOf(Owned<ITypeInfo>(found).get(), member), name);
    }
}

TEST(CreatedLibrary, NamesEachTypeOnce) {
    auto const library = createLibrary();
    auto const first = createType(library.get(), OLESTR("First"), TKIND_ENUM);
    auto const second = createType(library.get(), OLESTR("Second"), TKIND_ENUM);
    for (Wide name : {OLESTR("First"), OLESTR("fIRST")}) {
        ICreateTypeInfo* none = nullptr;
        EXPECT_EQ(library->CreateTypeInfo(name.data(), TKIND_RECORD, &none), TYPE_E_NAMECONFLICT);
        EXPECT_EQ(none, nullptr);
        expectCode(true, "a type may be renamed to another one's name",
                   second->SetName(name.data()), TYPE_E_NAMECONFLICT);
        // Its own name in another spelling is free.
        EXPECT_EQ(first->SetName(name.data()), S_OK);
    }
}

TEST(CreatedLibrary, DeletesTypesAndKeepsTheOthersReferences) {
    auto const library = createLibrary();
    auto const reader = readLibrary(library.get());
    auto const gone = createType(library.get(), OLESTR("Gone"), TKIND_RECORD);
    auto const stays = createType(library.get(), OLESTR("Stays"), TKIND_RECORD);
    auto const user = createType(library.get(), OLESTR("User"), TKIND_RECORD);
    HREFTYPE const lost = referTo(user.get(), readType(gone.get()).get());
    HREFTYPE const kept = referTo(user.get(), readType(stays.get()).get());
    auto name = text(OLESTR("gone")), unknown = text(OLESTR("nothing"));
    expectDifference(System::wine, "types cannot be deleted", [&] {
        EXPECT_EQ(library->DeleteTypeInfo(name.data()), S_OK);
        EXPECT_EQ(library->DeleteTypeInfo(name.data()), TYPE_E_ELEMENTNOTFOUND);
        EXPECT_EQ(library->DeleteTypeInfo(unknown.data()), TYPE_E_ELEMENTNOTFOUND);
        EXPECT_EQ(library->DeleteTypeInfo(nullptr), E_INVALIDARG);
        EXPECT_EQ(reader->GetTypeInfoCount(), 2u);
        ITypeInfo* found = nullptr;
        EXPECT_EQ(readType(user.get())->GetRefTypeInfo(lost, &found), TYPE_E_ELEMENTNOTFOUND);
        BOOL known = TRUE;
        EXPECT_EQ(reader->IsName(name.data(), 0, &known), S_OK);
        EXPECT_FALSE(known);
        ITypeInfo* first = nullptr;
        EXPECT_EQ(reader->GetTypeInfo(0, &first), S_OK);
        ASSERT_NE(first, nullptr);
        EXPECT_EQ(nameOf(Owned<ITypeInfo>(first).get()), OLESTR("Stays"));
        UINT index = 0;
        EXPECT_EQ(readType(user.get())->GetContainingTypeLib(nullptr, &index), S_OK);
        EXPECT_EQ(index, 1u);
    });
    EXPECT_EQ(nameOf(referenced(readType(user.get()).get(), kept).get()), OLESTR("Stays"));
    EXPECT_EQ(nameOf(readType(gone.get()).get()), OLESTR("Gone"));
}

TEST(CreatedLibrary, LivesAsLongAsAnyOfItsTypes) {
    auto library = createLibrary();
    auto const type = createType(library.get(), OLESTR("Left"), TKIND_ENUM);
    library.reset();
    EXPECT_EQ(nameOf(readType(type.get()).get()), OLESTR("Left"));
    auto help = text(OLESTR("still writable"));
    EXPECT_EQ(type->SetDocString(help.data()), S_OK);
}

TEST(CreatedLibrary, MayReferToOtherLibrariesInOneDirection) {
    auto const one = createLibrary();
    auto const other = createLibrary();
    EXPECT_EQ(one->SetGuid(shapesId(0x75)), S_OK);
    EXPECT_EQ(other->SetGuid(shapesId(0x76)), S_OK);
    auto const first = createType(one.get(), OLESTR("First"), TKIND_RECORD);
    auto const second = createType(other.get(), OLESTR("Second"), TKIND_RECORD);
    HREFTYPE const reference = referTo(first.get(), readType(second.get()).get());
    expectDifference(System::wine, "what another library in memory has is not found", [&] {
        ITypeInfo* found = nullptr;
        ASSERT_EQ(readType(first.get())->GetRefTypeInfo(reference, &found), S_OK);
        EXPECT_EQ(nameOf(Owned<ITypeInfo>(found).get()), OLESTR("Second"));
    });
    expectDifference(System::wine, "libraries may refer to each other", [&] {
        HREFTYPE none = 0;
        EXPECT_EQ(second->AddRefTypeInfo(readType(first.get()).get(), &none), TYPE_E_CIRCULARTYPE);
    });
}

TEST(CreatedLibrary, IsNeverWritten) {
    ICreateTypeLib2* raw = nullptr;
    // Where a file can be written, others do write it.
    ASSERT_EQ(CreateTypeLib2(SYS_WIN64, OLESTR("/no/such/folder/x.tlb"), &raw), S_OK);
    EXPECT_EQ(Owned<ICreateTypeLib2>(raw)->SaveAllChanges(), TYPE_E_IOERROR);
}

TEST(CreatedLibrary, ComesByTheOlderInterfaceToo) {
    ICreateTypeLib* library = nullptr;
    expectDifference(System::wine, "the older function makes nothing", [&] {
        EXPECT_EQ(CreateTypeLib(SYS_WIN64, OLESTR("never_written.tlb"), &library), S_OK);
    });
    Owned<ICreateTypeLib> const owned(library);
    if (library) {
        EXPECT_EQ(readLibrary(library)->GetTypeInfoCount(), 0u);
    }
}

TEST(CreatedLibrary, RefusesWhatIsMissingOrUnknown) {
    auto const library = createLibrary();
    auto name = text(OLESTR("Name"));
    ICreateTypeLib2* none = nullptr;
    ICreateTypeInfo* type = nullptr;
    EXPECT_EQ(CreateTypeLib2(SYS_WIN64, nullptr, &none), E_INVALIDARG);
    EXPECT_EQ(none, nullptr);
    struct {
        char const* what;
        std::function<HRESULT()> call;
    } const cases[] = {
        {"name", [&] { return library->SetName(nullptr); }},
        {"help", [&] { return library->SetDocString(nullptr); }},
        {"help file", [&] { return library->SetHelpFileName(nullptr); }},
        {"help module", [&] { return library->SetHelpStringDll(nullptr); }},
        {"type name", [&] { return library->CreateTypeInfo(nullptr, TKIND_ENUM, &type); }},
        {"type", [&] { return library->CreateTypeInfo(name.data(), TKIND_ENUM, nullptr); }},
    };
    for (auto const& entry : cases) EXPECT_EQ(entry.call(), E_INVALIDARG) << entry.what;
    EXPECT_EQ(type, nullptr);
    EXPECT_EQ(readLibrary(library.get())->GetTypeInfoCount(), 0u);
}

TEST(CreatedLibrary, RefusesUnknownKinds) {
    auto const library = createLibrary();
    for (int const kind : {-1, int{TKIND_MAX}}) {
        expectDifference(System::wine, "types of any kind are made", [&] {
            ICreateTypeInfo* type = nullptr;
            Wide name = kind < 0 ? OLESTR("Before") : OLESTR("Beyond");
            HRESULT const result =
                library->CreateTypeInfo(name.data(), static_cast<TYPEKIND>(kind), &type);
            Owned<ICreateTypeInfo> const owned(type);
            EXPECT_EQ(result, E_INVALIDARG);
        });
    }
    expectDifference(System::wine, "libraries for any system are made", [&] {
        ICreateTypeLib2* made = nullptr;
        HRESULT const result = CreateTypeLib2(static_cast<SYSKIND>(9), OLESTR("x.tlb"), &made);
        Owned<ICreateTypeLib2> const owned(made);
        EXPECT_EQ(result, E_INVALIDARG);
    });
}

}  // namespace
}  // namespace velk::test
