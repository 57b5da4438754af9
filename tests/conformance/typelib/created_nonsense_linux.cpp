// Descriptions at which Wine ends the process, or goes on for ever.

#include <cstdint>
#include <functional>

#include <gtest/gtest.h>

#include "created_library.h"

namespace velk::test {
namespace {

using CreatedNonsense = CreatedTypes;

TEST_F(CreatedNonsense, NullPointersAreRefused) {
    auto const type = make(OLESTR("IType"), TKIND_INTERFACE);
    auto const record = make(OLESTR("Record"), TKIND_RECORD);
    auto const constants = make(OLESTR("Constants"), TKIND_ENUM);
    FunctionShape plainFunction(1);
    ASSERT_EQ(type->AddFuncDesc(0, &plainFunction), S_OK);
    FunctionShape parameterless(MEMBERID_NIL), pointer(MEMBERID_NIL), array(MEMBERID_NIL),
        valueless(MEMBERID_NIL);
    parameterless.cParams = 1;
    pointer.returning(VT_PTR);
    array.with(plain(VT_CARRAY));
    valueless.with(plain(VT_I4), PARAMFLAG_FHASDEFAULT);
    VARDESC constant = variableShape(VAR_CONST, VT_I4);
    LPOLESTR names[] = {nullptr};
    struct {
        char const* what;
        std::function<HRESULT()> call;
    } const cases[] = {
        {"library", [] { return CreateTypeLib2(SYS_WIN64, OLESTR("x.tlb"), nullptr); }},
        {"older library", [] { return CreateTypeLib(SYS_WIN64, OLESTR("x.tlb"), nullptr); }},
        {"variable", [&] { return record->AddVarDesc(0, nullptr); }},
        {"value of a constant", [&] { return constants->AddVarDesc(0, &constant); }},
        {"parameters", [&] { return type->AddFuncDesc(0, &parameterless); }},
        {"target of a pointer", [&] { return type->AddFuncDesc(0, &pointer); }},
        {"description of an array", [&] { return type->AddFuncDesc(0, &array); }},
        {"default value", [&] { return type->AddFuncDesc(0, &valueless); }},
        {"name of a function", [&] { return type->SetFuncAndParamNames(0, names, 1); }},
    };
    for (auto const& entry : cases) EXPECT_EQ(entry.call(), E_INVALIDARG) << entry.what;
    EXPECT_EQ(attributesOf(readType(type.get()).get())->cFuncs, 1);
    EXPECT_EQ(type->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(library->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

// Wine takes these, and ends the process when the type is read.
TEST_F(CreatedNonsense, FunctionsThatContradictThemselvesAreRefused) {
    auto const type = make(OLESTR("IStrict"), TKIND_INTERFACE);
    struct {
        char const* what;
        void (*change)(FUNCDESC&);
        HRESULT expected;
    } const cases[] = {
        {"a slot before the first", [](FUNCDESC& f) { f.oVft = -8; }, E_INVALIDARG},
        {"no invocation", [](FUNCDESC& f) { f.invkind = static_cast<INVOKEKIND>(0); },
         E_INVALIDARG},
        {"two invocations", [](FUNCDESC& f) { f.invkind = static_cast<INVOKEKIND>(3); },
         E_INVALIDARG},
        {"unknown convention", [](FUNCDESC& f) { f.callconv = static_cast<CALLCONV>(50); },
         E_INVALIDARG},
        {"too many optional", [](FUNCDESC& f) { f.cParamsOpt = 1; }, E_INVALIDARG},
        {"too few optional", [](FUNCDESC& f) { f.cParamsOpt = -2; }, E_INVALIDARG},
        {"too few parameters", [](FUNCDESC& f) { f.cParams = -1; }, E_INVALIDARG},
        {"unknown type", [](FUNCDESC& f) { f.elemdescFunc.tdesc.vt = 900; }, E_INVALIDARG},
        {"unknown reference", [](FUNCDESC& f) { f.elemdescFunc.tdesc = userDefined(0x4444); },
         TYPE_E_ELEMENTNOTFOUND},
    };
    for (auto const& entry : cases) {
        FunctionShape function(MEMBERID_NIL);
        entry.change(function);
        EXPECT_EQ(type->AddFuncDesc(0, &function), entry.expected) << entry.what;
    }
    EXPECT_EQ(attributesOf(readType(type.get()).get())->cFuncs, 0);
}

TEST_F(CreatedNonsense, BasesThatAreNoInterfacesAreRefused) {
    auto const type = make(OLESTR("IType"), TKIND_INTERFACE);
    auto const record = make(OLESTR("Record"), TKIND_RECORD);
    HREFTYPE const wrong = referTo(type.get(), readType(record.get()).get());
    EXPECT_EQ(type->AddImplType(0, wrong), TYPE_E_WRONGTYPEKIND);
    for (HREFTYPE const unknown : {0xdeadbee0u, 0xdeadbee1u, 0xdeadbee2u, 0xdeadbee3u, ~0u}) {
        EXPECT_EQ(type->AddImplType(0, unknown), TYPE_E_ELEMENTNOTFOUND) << unknown;
    }
    EXPECT_EQ(attributesOf(readType(type.get()).get())->cImplTypes, 0);
}

TEST_F(CreatedNonsense, TypesThatPointAtThemselvesAreRefused) {
    auto const type = make(OLESTR("IType"), TKIND_INTERFACE);
    TYPEDESC circle = plain(VT_PTR);
    circle.lptdesc = &circle;
    FunctionShape function(MEMBERID_NIL);
    function.with(circle);
    EXPECT_EQ(type->AddFuncDesc(0, &function), E_INVALIDARG);
    ARRAYDESC endless{};
    endless.cDims = 1;
    endless.tdescElem = plain(VT_CARRAY);
    endless.tdescElem.lpadesc = &endless;
    TYPEDESC alias = plain(VT_CARRAY);
    alias.lpadesc = &endless;
    EXPECT_EQ(make(OLESTR("Alias"), TKIND_ALIAS)->SetTypeDescAlias(&alias), E_INVALIDARG);
}

TEST_F(CreatedNonsense, InterfacesThatDeriveFromThemselvesAreRefused) {
    auto const one = make(OLESTR("IOne"), TKIND_INTERFACE);
    auto const two = make(OLESTR("ITwo"), TKIND_INTERFACE);
    HREFTYPE const self = referTo(one.get(), readType(one.get()).get());
    EXPECT_EQ(one->AddImplType(0, self), TYPE_E_CIRCULARTYPE);
    implement(two.get(), readType(one.get()).get());
    HREFTYPE const derived = referTo(one.get(), readType(two.get()).get());
    EXPECT_EQ(one->AddImplType(0, derived), TYPE_E_CIRCULARTYPE);
    EXPECT_EQ(one->LayOut(), S_OK);
    EXPECT_EQ(attributesOf(readType(one.get()).get())->cImplTypes, 0);
}

TEST_F(CreatedNonsense, VtablesEndWhereOffsetsDo) {
    auto const type = make(OLESTR("ILong"), TKIND_INTERFACE);
    FunctionShape function(MEMBERID_NIL);
    UINT const most = 0x8000 / sizeof(void*);
    for (UINT i = 0; i < most; ++i) ASSERT_EQ(type->AddFuncDesc(i, &function), S_OK);
    EXPECT_EQ(type->AddFuncDesc(most, &function), TYPE_E_SIZETOOBIG);
    EXPECT_EQ(type->LayOut(), S_OK);
    auto const reader = readType(type.get());
    EXPECT_EQ(attributesOf(reader.get())->cFuncs, most);
    EXPECT_EQ(functionOf(reader.get(), most - 1)->oVft, 0x7ff8);
}

// Any bits in a description give a code, whatever they claim to be.
TEST_F(CreatedNonsense, DescriptionsOfAnyBitsGiveACode) {
    auto const type = make(OLESTR("IAny"), TKIND_INTERFACE);
    int refused = 0;
    // A fixed sequence, so that a finding can be repeated.
    std::uint32_t state = 1;
    for (int round = 0; round < 2000; ++round) {
        FunctionShape function(MEMBERID_NIL);
        function.with(plain(VT_I4)).with(plain(VT_BSTR));
        auto const next = [&state] { return (state = state * 1664525u + 1013904223u) >> 8; };
        function.memid ^= static_cast<MEMBERID>(next() & 0xffff);
        function.oVft = static_cast<SHORT>(next() % 64 * 4);
        function.invkind = static_cast<INVOKEKIND>(next() % 10);
        function.funckind = next() % 4 ? FUNC_PUREVIRTUAL : static_cast<FUNCKIND>(next() % 8);
        function.callconv = static_cast<CALLCONV>(next() % 12);
        function.cParams = static_cast<SHORT>(next() % 4 - 1);
        if (function.cParams == 3) function.cParams = 2;
        function.cParamsOpt = static_cast<SHORT>(next() % 6 - 2);
        TYPEDESC target = plain(static_cast<VARTYPE>(next() % 80));
        auto& parameter = function.lprgelemdescParam[0];
        parameter.tdesc = plain(static_cast<VARTYPE>(next() % 80));
        bool const array = parameter.tdesc.vt == VT_CARRAY;
        if (!array && next() % 2) parameter.tdesc.lptdesc = &target;
        if (target.vt == VT_PTR || target.vt == VT_SAFEARRAY) target.lptdesc = nullptr;
        parameter.paramdesc.wParamFlags = static_cast<USHORT>(next() & ~PARAMFLAG_FHASDEFAULT);
        HRESULT const result = type->AddFuncDesc(0, &function);
        refused += FAILED(result);
        EXPECT_EQ(type->LayOut(), S_OK);
    }
    EXPECT_GT(refused, 0);
    EXPECT_LT(refused, 2000);
}

}  // namespace
}  // namespace velk::test
