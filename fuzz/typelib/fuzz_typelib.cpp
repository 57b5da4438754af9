// Reads any bytes as a type library and asks it everything that a reader could.

#include <cstddef>
#include <cstdint>
#include <string>

#include "objbase.h"
#include "platform/typelib/msft_reader.h"
#include "platform/typelib/pe_resources.h"
#include "platform/typelib/type_info.h"
#include "platform/typelib/type_library.h"

namespace {

using namespace velk::typelib;

// Enough members of each kind to meet every branch, few enough to stay quick.
constexpr UINT mostMembers = 64;

void walkType(ITypeInfo* type, TYPEDESC const& description, int depth) {
    // The reader bounds the nesting itself.
    if (depth > 100) __builtin_trap();
    switch (description.vt) {
        case VT_PTR:
        case VT_SAFEARRAY:
            walkType(type, *description.lptdesc, depth + 1);
            break;
        case VT_CARRAY:
            walkType(type, description.lpadesc->tdescElem, depth + 1);
            break;
        case VT_USERDEFINED: {
            Reference<ITypeInfo> target;
            type->GetRefTypeInfo(description.hreftype, target.out());
            break;
        }
        default:
            break;
    }
}

void drop(CUSTDATA& data) {
    for (ULONG i = 0; i < data.cCustData; ++i) VariantClear(&data.prgCustData[i].varValue);
    CoTaskMemFree(data.prgCustData);
    data = {};
}

void askMember(TypeInfo& type, MEMBERID member) {
    Bstr name;
    Bstr help;
    Bstr file;
    DWORD context = 0;
    type.GetDocumentation(member, name.out(), help.out(), &context, file.out());
    BSTR names[8] = {};
    UINT count = 0;
    type.GetNames(member, names, 8, &count);
    for (UINT i = 0; i < count; ++i) SysFreeString(names[i]);
    Bstr module;
    Bstr entry;
    WORD ordinal = 0;
    type.GetDllEntry(member, INVOKE_FUNC, module.out(), entry.out(), &ordinal);
    UINT index = 0;
    type.GetFuncIndexOfMemId(member, INVOKE_FUNC, &index);
    if (!name.get()) return;
    LPOLESTR text = name.get();
    MEMBERID id = 0;
    type.GetIDsOfNames(&text, 1, &id);
    Reference<ITypeInfo> owner;
    DESCKIND kind = DESCKIND_NONE;
    BINDPTR bound{};
    if (FAILED(type.Bind(text, 0, 0, owner.out(), &kind, &bound))) return;
    if (kind == DESCKIND_FUNCDESC) owner->ReleaseFuncDesc(bound.lpfuncdesc);
    if (kind == DESCKIND_VARDESC) owner->ReleaseVarDesc(bound.lpvardesc);
}

void askFunctions(TypeInfo& type, UINT count) {
    for (UINT i = 0; i < count && i < mostMembers; ++i) {
        FUNCDESC* function = nullptr;
        if (FAILED(type.GetFuncDesc(i, &function))) continue;
        walkType(&type, function->elemdescFunc.tdesc, 0);
        for (SHORT p = 0; p < function->cParams; ++p) {
            walkType(&type, function->lprgelemdescParam[p].tdesc, 0);
            CUSTDATA data{};
            type.GetAllParamCustData(i, static_cast<UINT>(p), &data);
            drop(data);
        }
        askMember(type, function->memid);
        type.ReleaseFuncDesc(function);
        CUSTDATA data{};
        type.GetAllFuncCustData(i, &data);
        drop(data);
    }
}

void askVariables(TypeInfo& type, UINT count) {
    for (UINT i = 0; i < count && i < mostMembers; ++i) {
        VARDESC* variable = nullptr;
        if (FAILED(type.GetVarDesc(i, &variable))) continue;
        walkType(&type, variable->elemdescVar.tdesc, 0);
        Value copy;
        if (variable->varkind == VAR_CONST) VariantCopy(copy.get(), variable->lpvarValue);
        askMember(type, variable->memid);
        type.ReleaseVarDesc(variable);
    }
}

void askType(TypeInfo& type) {
    TYPEATTR* attributes = nullptr;
    if (FAILED(type.GetTypeAttr(&attributes))) return;
    if (attributes->typekind == TKIND_ALIAS) walkType(&type, attributes->tdescAlias, 0);
    for (UINT i = 0; i < attributes->cImplTypes && i < mostMembers; ++i) {
        HREFTYPE reference = 0;
        Reference<ITypeInfo> target;
        if (SUCCEEDED(type.GetRefTypeOfImplType(i, &reference))) {
            type.GetRefTypeInfo(reference, target.out());
        }
    }
    askFunctions(type, attributes->cFuncs);
    askVariables(type, attributes->cVars);
    type.ReleaseTypeAttr(attributes);
    // A call without arguments never reaches a slot unless it is forwarded.
    CUSTDATA data{};
    type.GetAllCustData(&data);
    drop(data);
}

void askLibrary(TypeLibrary& library) {
    TLIBATTR* attributes = nullptr;
    if (SUCCEEDED(library.GetLibAttr(&attributes))) library.ReleaseTLibAttr(attributes);
    for (UINT i = 0; i < library.GetTypeInfoCount(); ++i) {
        auto const type = library.type(i);
        askType(*type);
        HREFTYPE reference = 0;
        if (SUCCEEDED(type->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference))) {
            askType(*library.resolve(reference));
        }
        Bstr name;
        if (FAILED(library.GetDocumentation(static_cast<INT>(i), name.out(), nullptr, nullptr,
                                            nullptr)) ||
            !name.get()) {
            continue;
        }
        BOOL found = FALSE;
        library.IsName(name.get(), 0, &found);
        ITypeInfo* types[2] = {};
        MEMBERID members[2] = {};
        USHORT count = 2;
        library.FindName(name.get(), 0, types, members, &count);
        for (USHORT at = 0; at < count; ++at) types[at]->Release();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    ByteView bytes(std::as_bytes(std::span(data, size)));
    guarded([&] {
        if (isPortableExecutable(bytes)) {
            auto const read = [&](std::uint64_t offset, std::size_t length) {
                auto const part = bytes.part(offset, length);
                return std::vector<std::byte>(part.data(), part.data() + part.size());
            };
            auto const resource = portableResource(read, u"TYPELIB", 1);
            if (resource) askLibrary(*TypeLibrary::create(readMsftLibrary(ByteView(*resource))));
            return;
        }
        askLibrary(*TypeLibrary::create(readMsftLibrary(bytes)));
    });
    return 0;
}
