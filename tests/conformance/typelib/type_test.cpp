// Types of every kind, and their members.

#include <gtest/gtest.h>

#include "shapes.h"
#include "support/expected_difference.h"

namespace velk::test {
namespace {

TEST(Type, HasTheAttributesOfItsKind) {
    auto const library = loadShapes();
    struct {
        OLECHAR const* name;
        TYPEKIND kind;
        WORD functions, variables, implemented;
        ULONG size;
        WORD alignment;
    } const cases[] = {{OLESTR("Color"), TKIND_ENUM, 0, 3, 0, 4, 4},
                       {OLESTR("Point"), TKIND_RECORD, 0, 5, 0, 64, 8},
                       {OLESTR("Quantity"), TKIND_UNION, 0, 2, 0, 8, 8},
                       {OLESTR("Paint"), TKIND_ALIAS, 0, 0, 0, 4, 4},
                       {OLESTR("IRecorder"), TKIND_DISPATCH, 22, 0, 1, 8, 8},
                       {OLESTR("IRecorder2"), TKIND_DISPATCH, 23, 0, 1, 8, 8},
                       {OLESTR("Events"), TKIND_DISPATCH, 1, 2, 1, 8, 8},
                       {OLESTR("IBase"), TKIND_INTERFACE, 2, 0, 1, 8, 8},
                       {OLESTR("Recorder"), TKIND_COCLASS, 0, 0, 3, 8, 4}};
    for (auto const& entry : cases) {
        auto const type = typeNamed(library.get(), entry.name);
        auto const attributes = attributesOf(type.get());
        EXPECT_EQ(attributes->typekind, entry.kind);
        EXPECT_EQ(attributes->cFuncs, entry.functions);
        EXPECT_EQ(attributes->cVars, entry.variables);
        EXPECT_EQ(attributes->cImplTypes, entry.implemented);
        EXPECT_EQ(attributes->cbSizeInstance, entry.size);
        EXPECT_EQ(attributes->cbAlignment, entry.alignment);
    }
}

TEST(Type, EnumerationHasItsConstants) {
    auto const library = loadShapes();
    auto const type = typeNamed(library.get(), OLESTR("Color"));
    LONG const expected[] = {-5, 7, 0x12345678};
    OLECHAR const* const names[] = {OLESTR("Red"), OLESTR("Green"), OLESTR("Blue")};
    for (UINT i = 0; i < 3; ++i) {
        auto const constant = variableOf(type.get(), i);
        EXPECT_EQ(constant->varkind, VAR_CONST);
        EXPECT_EQ(constant->lpvarValue->lVal, expected[i]);
        EXPECT_EQ(nameOf(type.get(), constant->memid), names[i]);
    }
    VARDESC* none = nullptr;
    EXPECT_EQ(type->GetVarDesc(3, &none), TYPE_E_ELEMENTNOTFOUND);
}

TEST(Type, RecordHasOffsetsAndTypes) {
    auto const library = loadShapes();
    auto const type = typeNamed(library.get(), OLESTR("Point"));
    ULONG const offsets[] = {0, 8, 16, 24, 48};
    VARTYPE const types[] = {VT_I4, VT_R8, VT_BSTR, VT_VARIANT, VT_CARRAY};
    for (UINT i = 0; i < 5; ++i) {
        auto const field = variableOf(type.get(), i);
        EXPECT_EQ(field->varkind, VAR_PERINSTANCE);
        EXPECT_EQ(field->oInst, offsets[i]);
        EXPECT_EQ(field->elemdescVar.tdesc.vt, types[i]);
    }
    auto const grid = variableOf(type.get(), 4);
    auto const& array = *grid->elemdescVar.tdesc.lpadesc;
    EXPECT_EQ(array.tdescElem.vt, VT_I2);
    ASSERT_EQ(array.cDims, 2);
    EXPECT_EQ(array.rgbounds[0].cElements, 4u);
    EXPECT_EQ(array.rgbounds[1].cElements, 2u);
}

TEST(Type, AliasLeadsToItsTarget) {
    auto const library = loadShapes();
    auto const alias = typeNamed(library.get(), OLESTR("Paint"));
    auto const attributes = attributesOf(alias.get());
    ASSERT_EQ(attributes->tdescAlias.vt, VT_USERDEFINED);
    auto const target = referenced(alias.get(), attributes->tdescAlias.hreftype);
    EXPECT_EQ(nameOf(target.get()), OLESTR("Color"));
    auto const money = typeNamed(library.get(), OLESTR("Money"));
    EXPECT_EQ(attributesOf(money.get())->tdescAlias.vt, VT_I4);
}

TEST(Type, DispatchViewTurnsTheLastParameterIntoTheResult) {
    auto const library = loadShapes();
    auto const type = typeNamed(library.get(), OLESTR("IRecorder"));
    // Seven inherited functions come first.
    auto const add = functionOf(type.get(), 7);
    EXPECT_EQ(add->memid, 1);
    EXPECT_EQ(add->funckind, FUNC_DISPATCH);
    EXPECT_EQ(add->elemdescFunc.tdesc.vt, VT_I4);
    ASSERT_EQ(add->cParams, 2);
    auto const& second = add->lprgelemdescParam[1].paramdesc;
    ASSERT_TRUE(second.wParamFlags & PARAMFLAG_FHASDEFAULT);
    EXPECT_EQ(second.pparamdescex->varDefaultValue.lVal, 5);
    auto const inherited = functionOf(type.get(), 0);
    EXPECT_EQ(nameOf(type.get(), inherited->memid), OLESTR("QueryInterface"));
}

TEST(Type, VtableViewShowsFunctionsAsTheyAre) {
    auto const library = loadShapes();
    auto const type = typeNamed(library.get(), OLESTR("IRecorder"));
    auto const view = otherView(type.get());
    auto const attributes = attributesOf(view.get());
    EXPECT_EQ(attributes->typekind, TKIND_INTERFACE);
    EXPECT_EQ(attributes->cFuncs, 15);
    EXPECT_EQ(attributes->cbSizeVft, 22 * sizeof(void*));
    auto const add = functionOf(view.get(), 0);
    EXPECT_EQ(add->funckind, FUNC_PUREVIRTUAL);
    EXPECT_EQ(add->oVft, static_cast<SHORT>(7 * sizeof(void*)));
    EXPECT_EQ(add->elemdescFunc.tdesc.vt, VT_HRESULT);
    ASSERT_EQ(add->cParams, 3);
    EXPECT_EQ(add->lprgelemdescParam[2].paramdesc.wParamFlags, PARAMFLAG_FOUT | PARAMFLAG_FRETVAL);
    ASSERT_EQ(add->lprgelemdescParam[2].tdesc.vt, VT_PTR);
    EXPECT_EQ(add->lprgelemdescParam[2].tdesc.lptdesc->vt, VT_I4);
    EXPECT_EQ(nameOf(otherView(view.get()).get()), OLESTR("IRecorder"));
}

TEST(Type, ClassNamesItsInterfaces) {
    auto const library = loadShapes();
    auto const type = typeNamed(library.get(), OLESTR("Recorder"));
    OLECHAR const* const names[] = {OLESTR("IRecorder"), OLESTR("IBase"), OLESTR("Events")};
    INT const flags[] = {IMPLTYPEFLAG_FDEFAULT, 0, IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE};
    for (UINT i = 0; i < 3; ++i) {
        HREFTYPE reference = 0;
        INT found = 0;
        ASSERT_EQ(type->GetRefTypeOfImplType(i, &reference), S_OK);
        ASSERT_EQ(type->GetImplTypeFlags(i, &found), S_OK);
        EXPECT_EQ(nameOf(referenced(type.get(), reference).get()), names[i]);
        EXPECT_EQ(found, flags[i]);
    }
    HREFTYPE reference = 0;
    EXPECT_EQ(type->GetRefTypeOfImplType(3, &reference), TYPE_E_ELEMENTNOTFOUND);
    void* object = nullptr;
    auto const color = typeNamed(library.get(), OLESTR("Color"));
    expectDifference(System::wine, "creation from no class is an invalid argument", [&] {
        EXPECT_EQ(color->CreateInstance(nullptr, IID_IUnknown, &object), TYPE_E_WRONGTYPEKIND);
    });
}

ULONG flagsOf(ITypeInfo* type) {
    ITypeInfo2* extended = nullptr;
    EXPECT_EQ(type->QueryInterface(IID_ITypeInfo2, reinterpret_cast<void**>(&extended)), S_OK);
    ULONG flags = 0;
    EXPECT_EQ(Owned<ITypeInfo2>(extended)->GetTypeFlags(&flags), S_OK);
    return flags;
}

TEST(Type, OnlyTheVtableViewIsForAutomation) {
    auto const library = loadShapes();
    auto const type = typeNamed(library.get(), OLESTR("IRecorder"));
    auto const view = otherView(type.get());
    constexpr ULONG common = TYPEFLAG_FDUAL | TYPEFLAG_FNONEXTENSIBLE | TYPEFLAG_FDISPATCHABLE;
    EXPECT_EQ(attributesOf(view.get())->wTypeFlags, common | TYPEFLAG_FOLEAUTOMATION);
    EXPECT_EQ(flagsOf(view.get()), common | TYPEFLAG_FOLEAUTOMATION);
    EXPECT_EQ(attributesOf(type.get())->wTypeFlags, common);
    expectDifference(System::wine, "the flags of a dispinterface say that it is for automation",
                     [&] { EXPECT_EQ(flagsOf(type.get()), common); });
}

TEST(Type, ModuleTellsItsEntries) {
    auto const library = loadShapes();
    auto const type = typeNamed(library.get(), OLESTR("Tools"));
    auto const function = functionOf(type.get(), 0);
    BSTR module = nullptr;
    BSTR name = nullptr;
    WORD ordinal = 0;
    ASSERT_EQ(type->GetDllEntry(function->memid, INVOKE_FUNC, &module, &name, &ordinal), S_OK);
    EXPECT_EQ(taken(module), OLESTR("shapes.dll"));
    EXPECT_EQ(name, nullptr);
    EXPECT_EQ(ordinal, 5);
    auto const color = typeNamed(library.get(), OLESTR("Color"));
    EXPECT_EQ(color->GetDllEntry(1, INVOKE_FUNC, nullptr, nullptr, nullptr), TYPE_E_BADMODULEKIND);
}

TEST(Type, MembersCarryHelpAndCustomData) {
    auto const library = loadShapes();
    auto const type = typeNamed(library.get(), OLESTR("IRecorder"));
    BSTR help = nullptr;
    DWORD context = 0;
    ASSERT_EQ(type->GetDocumentation(1, nullptr, &help, &context, nullptr), S_OK);
    EXPECT_EQ(taken(help), OLESTR("Adds"));
    EXPECT_EQ(context, 99u);
    EXPECT_EQ(type->GetDocumentation(4711, &help, nullptr, nullptr, nullptr),
              TYPE_E_ELEMENTNOTFOUND);
    ITypeInfo2* raw = nullptr;
    ASSERT_EQ(type->QueryInterface(IID_ITypeInfo2, reinterpret_cast<void**>(&raw)), S_OK);
    Owned<ITypeInfo2> const extended(raw);
    VARIANT value;
    VariantInit(&value);
    ASSERT_EQ(raw->GetFuncCustData(7, shapesId(0xAC), &value), S_OK);
    ASSERT_EQ(value.vt, VT_BSTR);
    EXPECT_EQ(Wide(value.bstrVal), OLESTR("member"));
    VariantClear(&value);
}

}  // namespace
}  // namespace velk::test
