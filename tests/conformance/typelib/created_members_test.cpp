// Types made in memory that are no interfaces: attributes, variables, layout.

#include <functional>

#include <gtest/gtest.h>

#include "created_library.h"
#include "support/expected_difference.h"

namespace velk::test {
namespace {

void check(bool wineDiffers, char const* reason, std::function<void()> const& assertions) {
    wineDiffers ? expectDifference(System::wine, reason, assertions) : assertions();
}

using CreatedType = CreatedTypes;

TEST_F(CreatedType, HasTheAttributesOfItsKindFromTheStart) {
    struct {
        OLECHAR const* name;
        TYPEKIND kind;
        ULONG size;
        WORD alignment;
        WORD vtable;
        bool wineDiffers;
    } const cases[] = {{OLESTR("Enum"), TKIND_ENUM, 4, 4, 0, true},
                       {OLESTR("Record"), TKIND_RECORD, 0, 1, 0, true},
                       {OLESTR("Module"), TKIND_MODULE, 2, 4, 0, false},
                       {OLESTR("Interface"), TKIND_INTERFACE, 8, 8, 0, true},
                       {OLESTR("Dispatch"), TKIND_DISPATCH, 8, 8, 56, true},
                       {OLESTR("Class"), TKIND_COCLASS, 8, 4, 0, false},
                       {OLESTR("Alias"), TKIND_ALIAS, 0, 1, 0, true},
                       {OLESTR("Union"), TKIND_UNION, 0, 1, 0, true}};
    for (auto const& entry : cases) {
        auto const attributes = attributesOf(readType(make(entry.name, entry.kind).get()).get());
        EXPECT_EQ(attributes->typekind, entry.kind);
        EXPECT_EQ(attributes->cFuncs, 0);
        EXPECT_EQ(attributes->cVars, 0);
        EXPECT_EQ(attributes->cImplTypes, 0);
        EXPECT_EQ(attributes->cbSizeVft, entry.vtable);
        EXPECT_EQ(attributes->lpstrSchema, nullptr);
        check(entry.wineDiffers, "sizes before the layout", [&] {
            EXPECT_EQ(attributes->cbSizeInstance, entry.size);
            EXPECT_EQ(attributes->cbAlignment, entry.alignment);
        });
    }
}

TEST_F(CreatedType, TellsWhatItWasGiven) {
    auto const type = make(OLESTR("Before"), TKIND_RECORD);
    auto const reader = readType(type.get());
    Wide name = OLESTR("After"), help = OLESTR("Help"), schema = OLESTR("Schema");
    IDLDESC idl{0, IDLFLAG_FIN};
    EXPECT_EQ(type->SetName(name.data()), S_OK);
    EXPECT_EQ(type->SetDocString(help.data()), S_OK);
    EXPECT_EQ(type->SetHelpContext(12), S_OK);
    EXPECT_EQ(type->SetVersion(5, 6), S_OK);
    EXPECT_EQ(type->SetGuid(shapesId(0x90)), S_OK);
    EXPECT_EQ(type->SetTypeFlags(TYPEFLAG_FHIDDEN), S_OK);
    EXPECT_EQ(type->SetSchema(schema.data()), S_OK);
    EXPECT_EQ(type->SetTypeIdldesc(&idl), S_OK);
    EXPECT_EQ(library->SetLcid(0x0407), S_OK);
    BSTR texts[2] = {};
    DWORD context = 0;
    ASSERT_EQ(reader->GetDocumentation(MEMBERID_NIL, &texts[0], &texts[1], &context, nullptr),
              S_OK);
    EXPECT_EQ(taken(texts[0]), name);
    EXPECT_EQ(taken(texts[1]), help);
    EXPECT_EQ(context, 12u);
    auto const attributes = attributesOf(reader.get());
    EXPECT_TRUE(IsEqualGUID(attributes->guid, shapesId(0x90)));
    EXPECT_EQ(attributes->wMajorVerNum, 5);
    EXPECT_EQ(attributes->wMinorVerNum, 6);
    EXPECT_EQ(attributes->wTypeFlags, TYPEFLAG_FHIDDEN);
    EXPECT_EQ(attributes->idldescType.wIDLFlags, IDLFLAG_FIN);
    EXPECT_EQ(Wide(attributes->lpstrSchema), schema);
    expectDifference(System::wine, "types do not take on their library's locale",
                     [&] { EXPECT_EQ(attributes->lcid, 0x0407u); });
}

TEST_F(CreatedType, TakesFunctionsOfItsKindOnly) {
    struct {
        OLECHAR const* name;
        TYPEKIND kind;
        int accepted;
    } const cases[] = {
        {OLESTR("Enum"), TKIND_ENUM, -1},
        {OLESTR("Record"), TKIND_RECORD, -1},
        {OLESTR("Module"), TKIND_MODULE, FUNC_STATIC},
        {OLESTR("Interface"), TKIND_INTERFACE, FUNC_PUREVIRTUAL},
        {OLESTR("Dispatch"), TKIND_DISPATCH, FUNC_DISPATCH},
        {OLESTR("Class"), TKIND_COCLASS, -1},
        {OLESTR("Alias"), TKIND_ALIAS, -1},
        {OLESTR("Union"), TKIND_UNION, -1},
    };
    for (auto const& entry : cases) {
        auto const type = make(entry.name, entry.kind);
        check(entry.accepted < 0, "functions of what has none", [&] {
            for (int kind = FUNC_VIRTUAL; kind <= FUNC_DISPATCH; ++kind) {
                FunctionShape function(1, INVOKE_FUNC, static_cast<FUNCKIND>(kind));
                EXPECT_EQ(type->AddFuncDesc(0, &function),
                          kind == entry.accepted ? S_OK : TYPE_E_BADMODULEKIND)
                    << entry.kind << ", " << kind;
            }
        });
    }
}

TEST_F(CreatedType, TakesVariablesOfItsKindOnly) {
    struct {
        OLECHAR const* name;
        TYPEKIND kind;
        unsigned accepted;  // a bit for each kind of variable
    } const cases[] = {
        {OLESTR("Enum"), TKIND_ENUM, 1 << VAR_CONST},
        {OLESTR("Record"), TKIND_RECORD, 1 << VAR_PERINSTANCE},
        {OLESTR("Module"), TKIND_MODULE, 1 << VAR_CONST | 1 << VAR_STATIC},
        {OLESTR("Interface"), TKIND_INTERFACE, 0},
        {OLESTR("Dispatch"), TKIND_DISPATCH, 1 << VAR_DISPATCH},
        {OLESTR("Class"), TKIND_COCLASS, 0},
        {OLESTR("Alias"), TKIND_ALIAS, 0},
        {OLESTR("Union"), TKIND_UNION, 1 << VAR_PERINSTANCE},
    };
    for (auto const& entry : cases) {
        auto const type = make(entry.name, entry.kind);
        expectDifference(System::wine, "variables of any kind", [&] {
            for (int kind = VAR_PERINSTANCE; kind <= VAR_DISPATCH; ++kind) {
                VARIANT value = number(1);
                VARDESC variable = variableShape(static_cast<VARKIND>(kind), VT_I4);
                if (kind == VAR_CONST) variable.lpvarValue = &value;
                bool const fits = entry.accepted >> kind & 1;
                EXPECT_EQ(type->AddVarDesc(0, &variable), fits ? S_OK : TYPE_E_BADMODULEKIND)
                    << entry.kind << ", " << kind;
            }
        });
    }
}

TEST_F(CreatedType, EnumerationKeepsItsConstants) {
    auto const type = make(OLESTR("Color"), TKIND_ENUM);
    VARIANT value = number(7);
    VARDESC constant = variableShape(VAR_CONST, VT_I4);
    constant.lpvarValue = &value;
    addVariable(type.get(), constant, OLESTR("One"));
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocString(OLESTR("a text"));
    constant.memid = 0x55;
    constant.elemdescVar.tdesc.vt = VT_BSTR;
    addVariable(type.get(), constant, OLESTR("Text"));
    VariantClear(&value);
    EXPECT_EQ(type->LayOut(), S_OK);
    auto const reader = readType(type.get());
    auto const first = variableOf(reader.get(), 0);
    EXPECT_EQ(first->memid, 0x40000000);
    EXPECT_EQ(first->varkind, VAR_CONST);
    EXPECT_EQ(first->lpvarValue->lVal, 7);
    auto const second = variableOf(reader.get(), 1);
    EXPECT_EQ(second->memid, 0x55);
    ASSERT_EQ(second->lpvarValue->vt, VT_BSTR);
    EXPECT_EQ(Wide(second->lpvarValue->bstrVal), OLESTR("a text"));
    EXPECT_EQ(nameOf(reader.get(), 0x55), OLESTR("Text"));
    // It binds at the level of the library, like one that was loaded.
    ITypeComp* rawBinder = nullptr;
    ASSERT_EQ(readLibrary(library.get())->GetTypeComp(&rawBinder), S_OK);
    Owned<ITypeComp> const binder(rawBinder);
    Wide name = OLESTR("One");
    ITypeInfo* found = nullptr;
    DESCKIND kind = DESCKIND_NONE;
    BINDPTR bound{};
    ASSERT_EQ(binder->Bind(name.data(), 0, 0, &found, &kind, &bound), S_OK);
    ASSERT_EQ(kind, DESCKIND_VARDESC);
    EXPECT_EQ(bound.lpvardesc->lpvarValue->lVal, 7);
    found->ReleaseVarDesc(bound.lpvardesc);
    found->Release();
}

TEST_F(CreatedType, VariablesAreNamedAndDescribed) {
    auto const type = make(OLESTR("Record"), TKIND_RECORD);
    for (auto* const name : {OLESTR("a"), OLESTR("b")}) {
        addVariable(type.get(), variableShape(VAR_PERINSTANCE, VT_I4), name);
    }
    Wide help = OLESTR("Help"), a = OLESTR("a"), c = OLESTR("c");
    EXPECT_EQ(type->SetVarDocString(1, help.data()), S_OK);
    EXPECT_EQ(type->SetVarHelpContext(1, 4), S_OK);
    EXPECT_EQ(type->SetVarName(1, c.data()), S_OK);
    auto const reader = readType(type.get());
    BSTR texts[2] = {};
    DWORD context = 0;
    MEMBERID const id = variableOf(reader.get(), 1)->memid;
    ASSERT_EQ(reader->GetDocumentation(id, &texts[0], &texts[1], &context, nullptr), S_OK);
    EXPECT_EQ(taken(texts[0]), c);
    EXPECT_EQ(taken(texts[1]), help);
    EXPECT_EQ(context, 4u);
    EXPECT_EQ(type->SetVarName(2, c.data()), TYPE_E_ELEMENTNOTFOUND);
    EXPECT_EQ(type->SetVarDocString(2, help.data()), TYPE_E_ELEMENTNOTFOUND);
    EXPECT_EQ(type->SetVarHelpContext(2, 4), TYPE_E_ELEMENTNOTFOUND);
    EXPECT_EQ(type->SetVarName(1, nullptr), E_INVALIDARG);
    EXPECT_EQ(type->SetVarDocString(1, nullptr), E_INVALIDARG);
    expectDifference(System::wine, "variables may share a name",
                     [&] { EXPECT_EQ(type->SetVarName(1, a.data()), TYPE_E_AMBIGUOUSNAME); });
    VARDESC late = variableShape(VAR_PERINSTANCE, VT_I4);
    expectDifference(System::wine, "variables are added wherever the place is",
                     [&] { EXPECT_EQ(type->AddVarDesc(9, &late), TYPE_E_ELEMENTNOTFOUND); });
}

TEST_F(CreatedType, VariablesCanBeDeleted) {
    auto const type = make(OLESTR("Record"), TKIND_RECORD);
    for (auto* const name : {OLESTR("a"), OLESTR("b"), OLESTR("c")}) {
        addVariable(type.get(), variableShape(VAR_PERINSTANCE, VT_I4), name);
    }
    auto const reader = readType(type.get());
    expectDifference(System::wine, "variables cannot be deleted", [&] {
        EXPECT_EQ(type->DeleteVarDesc(0), S_OK);
        EXPECT_EQ(type->DeleteVarDesc(2), TYPE_E_ELEMENTNOTFOUND);
        MEMBERID const last = variableOf(reader.get(), 1)->memid;
        EXPECT_EQ(type->DeleteVarDescByMemId(last), S_OK);
        EXPECT_EQ(type->DeleteVarDescByMemId(last), TYPE_E_ELEMENTNOTFOUND);
        EXPECT_EQ(attributesOf(reader.get())->cVars, 1);
        EXPECT_EQ(nameOf(reader.get(), variableOf(reader.get(), 0)->memid), OLESTR("b"));
    });
}

TEST_F(CreatedType, ModuleTellsItsEntries) {
    auto const type = make(OLESTR("Tools"), TKIND_MODULE);
    auto const reader = readType(type.get());
    Wide dll = OLESTR("tools.dll"), entry = OLESTR("EntryA"), other = OLESTR("other.dll");
    for (MEMBERID id = 1; id <= 2; ++id) {
        FunctionShape function(id, INVOKE_FUNC, FUNC_STATIC);
        addFunction(type.get(), function, {id == 1 ? OLESTR("Named") : OLESTR("Numbered")});
    }
    expectDifference(System::wine, "entries of a module cannot be set", [&] {
        EXPECT_EQ(type->DefineFuncAsDllEntry(0, dll.data(), entry.data()), S_OK);
        EXPECT_EQ(type->DefineFuncAsDllEntry(1, dll.data(), reinterpret_cast<LPOLESTR>(5)), S_OK);
        BSTR module = nullptr, name = nullptr;
        WORD ordinal = 0;
        EXPECT_EQ(reader->GetDllEntry(1, INVOKE_FUNC, &module, &name, &ordinal), S_OK);
        EXPECT_EQ(taken(module), dll);
        EXPECT_EQ(taken(name), entry);
        EXPECT_EQ(reader->GetDllEntry(2, INVOKE_FUNC, nullptr, &name, &ordinal), S_OK);
        EXPECT_EQ(name, nullptr);
        EXPECT_EQ(ordinal, 5);
        EXPECT_EQ(type->DefineFuncAsDllEntry(2, dll.data(), entry.data()), TYPE_E_ELEMENTNOTFOUND);
        EXPECT_EQ(type->DefineFuncAsDllEntry(0, nullptr, entry.data()), E_INVALIDARG);
        EXPECT_EQ(type->DefineFuncAsDllEntry(0, dll.data(), nullptr), E_INVALIDARG);
        EXPECT_EQ(type->DefineFuncAsDllEntry(0, other.data(), entry.data()), E_INVALIDARG);
        EXPECT_EQ(make(OLESTR("Enum"), TKIND_ENUM)->DefineFuncAsDllEntry(0, dll.data(), nullptr),
                  TYPE_E_BADMODULEKIND);
    });
}

TEST_F(CreatedType, ClassNamesItsInterfaces) {
    auto const first = make(OLESTR("IFirst"), TKIND_INTERFACE);
    auto const second = make(OLESTR("ISecond"), TKIND_INTERFACE);
    auto const type = make(OLESTR("Class"), TKIND_COCLASS);
    HREFTYPE const one = referTo(type.get(), readType(first.get()).get());
    HREFTYPE const two = referTo(type.get(), readType(second.get()).get());
    EXPECT_EQ(type->SetImplTypeFlags(0, 0), TYPE_E_ELEMENTNOTFOUND);
    EXPECT_EQ(type->AddImplType(0, one), S_OK);
    for (UINT const index : {0u, 2u}) {
        EXPECT_EQ(type->AddImplType(index, two), TYPE_E_ELEMENTNOTFOUND);
    }
    EXPECT_EQ(type->AddImplType(1, two), S_OK);
    EXPECT_EQ(type->SetImplTypeFlags(1, IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE), S_OK);
    EXPECT_EQ(type->SetImplTypeFlags(7, 0), TYPE_E_ELEMENTNOTFOUND);
    EXPECT_EQ(type->LayOut(), S_OK);
    auto const reader = readType(type.get());
    ASSERT_EQ(attributesOf(reader.get())->cImplTypes, 2);
    OLECHAR const* const names[] = {OLESTR("IFirst"), OLESTR("ISecond")};
    INT const flags[] = {0, IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE};
    for (UINT i = 0; i < 2; ++i) {
        HREFTYPE reference = 0;
        INT found = 0;
        ASSERT_EQ(reader->GetRefTypeOfImplType(i, &reference), S_OK);
        EXPECT_EQ(nameOf(referenced(reader.get(), reference).get()), names[i]);
        EXPECT_EQ(reader->GetImplTypeFlags(i, &found), S_OK);
        EXPECT_EQ(found, flags[i]);
    }
    EXPECT_EQ(type->DeleteImplType(0), S_OK);
    EXPECT_EQ(attributesOf(reader.get())->cImplTypes, 1);
    expectDifference(System::wine, "implementing is not implemented for other kinds", [&] {
        EXPECT_EQ(make(OLESTR("Enum"), TKIND_ENUM)->AddImplType(0, one), TYPE_E_BADMODULEKIND);
    });
}

TEST_F(CreatedType, DispatchInterfaceHasItsOwnMembersOnly) {
    auto const type = make(OLESTR("Events"), TKIND_DISPATCH);
    FunctionShape function(1, INVOKE_FUNC, FUNC_DISPATCH);
    addFunction(type.get(), function.returning(VT_R8), {OLESTR("Compute")});
    addVariable(type.get(), variableShape(VAR_DISPATCH, VT_BSTR, 2), OLESTR("Title"));
    EXPECT_EQ(type->LayOut(), S_OK);
    auto const reader = readType(type.get());
    Wide name = OLESTR("title");
    LPOLESTR names[] = {name.data()};
    MEMBERID id = 0;
    EXPECT_EQ(reader->GetIDsOfNames(names, 1, &id), S_OK);
    EXPECT_EQ(id, 2);
    EXPECT_EQ(attributesOf(reader.get())->cbSizeVft, 7 * sizeof(void*));
    expectDifference(System::wine, "functions of IDispatch come first", [&] {
        EXPECT_EQ(attributesOf(reader.get())->cFuncs, 1);
        EXPECT_EQ(functionOf(reader.get(), 0)->memid, 1);
    });
    expectDifference(System::wine, "dispatch interfaces may be dual",
                     [&] { EXPECT_EQ(type->SetTypeFlags(TYPEFLAG_FDUAL), TYPE_E_BADMODULEKIND); });
}

TEST_F(CreatedType, MembersCarryHelpAndCustomData) {
    auto const type = make(OLESTR("IHelped"), TKIND_INTERFACE);
    FunctionShape function(1);
    addFunction(type.get(), function.with(plain(VT_I4)), {OLESTR("Do"), OLESTR("what")});
    implement(type.get(), standardType(IID_IUnknown).get());
    auto const reader = readType(type.get());
    Wide help = OLESTR("Help");
    EXPECT_EQ(type->SetFuncDocString(0, help.data()), S_OK);
    EXPECT_EQ(type->SetFuncHelpContext(0, 12), S_OK);
    EXPECT_EQ(type->SetFuncDocString(0, nullptr), E_INVALIDARG);
    EXPECT_EQ(type->SetFuncDocString(1, help.data()), TYPE_E_ELEMENTNOTFOUND);
    EXPECT_EQ(type->SetFuncHelpContext(1, 12), TYPE_E_ELEMENTNOTFOUND);
    BSTR text = nullptr;
    DWORD context = 0;
    ASSERT_EQ(reader->GetDocumentation(1, nullptr, &text, &context, nullptr), S_OK);
    EXPECT_EQ(taken(text), help);
    EXPECT_EQ(context, 12u);
    VARIANT value = number(3), found;
    VariantInit(&found);
    EXPECT_EQ(type->SetCustData(shapesId(0x91), &value), S_OK);
    EXPECT_EQ(reader->GetCustData(shapesId(0x91), &found), S_OK);
    EXPECT_EQ(found.lVal, 3);
    expectDifference(System::wine, "only types have custom data and help string contexts", [&] {
        EXPECT_EQ(type->SetFuncHelpStringContext(0, 13), S_OK);
        EXPECT_EQ(reader->GetDocumentation2(1, 0, nullptr, &context, nullptr), S_OK);
        EXPECT_EQ(context, 13u);
        EXPECT_EQ(type->SetFuncCustData(0, shapesId(0x91), &value), S_OK);
        EXPECT_EQ(type->SetFuncCustData(1, shapesId(0x91), &value), TYPE_E_ELEMENTNOTFOUND);
        EXPECT_EQ(type->SetParamCustData(0, 0, shapesId(0x91), &value), S_OK);
        EXPECT_EQ(type->SetParamCustData(0, 1, shapesId(0x91), &value), TYPE_E_ELEMENTNOTFOUND);
        EXPECT_EQ(type->SetImplTypeCustData(0, shapesId(0x91), &value), S_OK);
        EXPECT_EQ(type->SetImplTypeCustData(1, shapesId(0x91), &value), TYPE_E_ELEMENTNOTFOUND);
        found.lVal = 0;
        EXPECT_EQ(reader->GetFuncCustData(0, shapesId(0x91), &found), S_OK);
        EXPECT_EQ(found.lVal, 3);
        found.lVal = 0;
        EXPECT_EQ(reader->GetParamCustData(0, 0, shapesId(0x91), &found), S_OK);
        EXPECT_EQ(found.lVal, 3);
    });
}

TEST_F(CreatedType, VariablesCarryCustomData) {
    auto const type = make(OLESTR("Record"), TKIND_RECORD);
    addVariable(type.get(), variableShape(VAR_PERINSTANCE, VT_I4), OLESTR("a"));
    VARIANT value = number(3), found;
    VariantInit(&found);
    DWORD context = 0;
    auto const reader = readType(type.get());
    expectDifference(System::wine, "only types have custom data and help string contexts", [&] {
        EXPECT_EQ(type->SetVarCustData(0, shapesId(0x92), &value), S_OK);
        EXPECT_EQ(type->SetVarCustData(0, shapesId(0x92), nullptr), E_INVALIDARG);
        EXPECT_EQ(type->SetVarCustData(1, shapesId(0x92), &value), TYPE_E_ELEMENTNOTFOUND);
        EXPECT_EQ(reader->GetVarCustData(0, shapesId(0x92), &found), S_OK);
        EXPECT_EQ(found.lVal, 3);
        EXPECT_EQ(type->SetVarHelpStringContext(0, 14), S_OK);
        MEMBERID const id = variableOf(reader.get(), 0)->memid;
        EXPECT_EQ(reader->GetDocumentation2(id, 0, nullptr, &context, nullptr), S_OK);
        EXPECT_EQ(context, 14u);
    });
}

TEST_F(CreatedType, RefusesNullPointers) {
    auto const type = make(OLESTR("IType"), TKIND_INTERFACE);
    auto const unknown = standardType(IID_IUnknown);
    HREFTYPE reference = 0;
    struct {
        char const* what;
        std::function<HRESULT()> call;
    } const cases[] = {
        {"name", [&] { return type->SetName(nullptr); }},
        {"help", [&] { return type->SetDocString(nullptr); }},
        {"schema", [&] { return type->SetSchema(nullptr); }},
        {"marshalling", [&] { return type->SetTypeIdldesc(nullptr); }},
        {"custom data", [&] { return type->SetCustData(shapesId(1), nullptr); }},
        {"type", [&] { return type->AddRefTypeInfo(nullptr, &reference); }},
        {"reference", [&] { return type->AddRefTypeInfo(unknown.get(), nullptr); }},
    };
    for (auto const& entry : cases) EXPECT_EQ(entry.call(), E_INVALIDARG) << entry.what;
}

}  // namespace
}  // namespace velk::test
