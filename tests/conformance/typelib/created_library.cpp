#include "created_library.h"

#include <gtest/gtest.h>

namespace velk::test {
namespace {

template <typename Interface>
Owned<Interface> as(IUnknown* object, REFIID id) {
    void* found = nullptr;
    EXPECT_EQ(object->QueryInterface(id, &found), S_OK);
    return Owned<Interface>(static_cast<Interface*>(found));
}

}  // namespace

Owned<ICreateTypeLib2> createLibrary() {
    ICreateTypeLib2* library = nullptr;
    EXPECT_EQ(CreateTypeLib2(SYS_WIN64, OLESTR("never_written.tlb"), &library), S_OK);
    return Owned<ICreateTypeLib2>(library);
}

Owned<ICreateTypeInfo2> createType(ICreateTypeLib2* library, Wide name, TYPEKIND kind) {
    ICreateTypeInfo* type = nullptr;
    EXPECT_EQ(library->CreateTypeInfo(name.data(), kind, &type), S_OK);
    Owned<ICreateTypeInfo> const owned(type);
    return as<ICreateTypeInfo2>(type, IID_ICreateTypeInfo2);
}

Owned<ITypeInfo2> readType(IUnknown* created) {
    return as<ITypeInfo2>(created, IID_ITypeInfo2);
}

Owned<ITypeLib2> readLibrary(IUnknown* created) {
    return as<ITypeLib2>(created, IID_ITypeLib2);
}

Owned<ITypeInfo> standardType(REFIID id) {
    constexpr GUID standard = {0x00020430, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    ITypeLib* library = nullptr;
    EXPECT_EQ(LoadRegTypeLib(standard, 2, 0, 0, &library), S_OK);
    Owned<ITypeLib> const owned(library);
    ITypeInfo* type = nullptr;
    EXPECT_EQ(library->GetTypeInfoOfGuid(id, &type), S_OK);
    return Owned<ITypeInfo>(type);
}

HREFTYPE referTo(ICreateTypeInfo* from, ITypeInfo* to) {
    HREFTYPE reference = 0;
    EXPECT_EQ(from->AddRefTypeInfo(to, &reference), S_OK);
    return reference;
}

void implement(ICreateTypeInfo* type, ITypeInfo* base) {
    EXPECT_EQ(type->AddImplType(0, referTo(type, base)), S_OK);
}

TYPEDESC plain(VARTYPE type) {
    TYPEDESC result{};
    result.vt = type;
    return result;
}

TYPEDESC userDefined(HREFTYPE reference) {
    TYPEDESC result{};
    result.vt = VT_USERDEFINED;
    result.hreftype = reference;
    return result;
}

VARIANT number(LONG value) {
    VARIANT result{};
    result.vt = VT_I4;
    result.lVal = value;
    return result;
}

FunctionShape::FunctionShape(MEMBERID id, INVOKEKIND invocation, FUNCKIND kind) : FUNCDESC{} {
    memid = id;
    invkind = invocation;
    funckind = kind;
    callconv = CC_STDCALL;
    elemdescFunc.tdesc.vt = VT_HRESULT;
}

FunctionShape& FunctionShape::with(TYPEDESC type, USHORT flags, PARAMDESCEX* value) {
    ELEMDESC parameter{};
    parameter.tdesc = type;
    parameter.paramdesc.wParamFlags = flags;
    parameter.paramdesc.pparamdescex = value;
    parameters_.push_back(parameter);
    lprgelemdescParam = parameters_.data();
    cParams = static_cast<SHORT>(parameters_.size());
    return *this;
}

FunctionShape& FunctionShape::returning(VARTYPE type) {
    elemdescFunc.tdesc.vt = type;
    return *this;
}

VARDESC variableShape(VARKIND kind, VARTYPE type, MEMBERID id) {
    VARDESC result{};
    result.varkind = kind;
    result.memid = id;
    result.elemdescVar.tdesc.vt = type;
    return result;
}

void addFunction(ICreateTypeInfo* type, FunctionShape& function, std::vector<Wide> names) {
    UINT const index = attributesOf(readType(type).get())->cFuncs;
    ASSERT_EQ(type->AddFuncDesc(index, &function), S_OK);
    std::vector<LPOLESTR> pointers;
    for (auto& name : names) pointers.push_back(name.data());
    EXPECT_EQ(type->SetFuncAndParamNames(index, pointers.data(), static_cast<UINT>(names.size())),
              S_OK);
}

void addVariable(ICreateTypeInfo* type, VARDESC variable, Wide name) {
    UINT const index = attributesOf(readType(type).get())->cVars;
    ASSERT_EQ(type->AddVarDesc(index, &variable), S_OK);
    EXPECT_EQ(type->SetVarName(index, name.data()), S_OK);
}

}  // namespace velk::test
