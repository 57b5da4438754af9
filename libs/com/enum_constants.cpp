#include "com/enum_constants.h"

namespace velk::com {
namespace {

bool isNamed(ComPtr<ITypeInfo> const& type, MEMBERID member, TextView name) {
    Bstr actual;
    return SUCCEEDED(type->GetDocumentation(member, actual.put(), nullptr, nullptr, nullptr)) &&
           viewBstr(actual) == name;
}

ComPtr<ITypeInfo> enumerationAt(ComPtr<ITypeLib> const& library, UINT index) {
    TYPEKIND kind = TKIND_MAX;
    ComPtr<ITypeInfo> type;
    if (FAILED(library->GetTypeInfoType(index, &kind)) || kind != TKIND_ENUM) return {};
    if (FAILED(library->GetTypeInfo(index, type.put()))) return {};
    return type;
}

std::optional<std::int32_t> constantOf(ComPtr<ITypeInfo> const& type, TextView name) {
    TypeAttributes attributes(type.get());
    if (FAILED(type->GetTypeAttr(attributes.put())) || !attributes) return std::nullopt;
    for (UINT i = 0; i < attributes->cVars; ++i) {
        VariableDescription variable(type.get());
        if (FAILED(type->GetVarDesc(i, variable.put())) || !variable) continue;
        if (!isNamed(type, variable->memid, name)) continue;
        if (variable->varkind == VAR_CONST && variable->lpvarValue) {
            return variable->lpvarValue->lVal;
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::int32_t> findEnumConstant(ComPtr<ITypeLib> const& library, TextView enumeration,
                                             TextView constant) {
    UINT const count = library->GetTypeInfoCount();
    for (UINT i = 0; i < count; ++i) {
        ComPtr<ITypeInfo> const type = enumerationAt(library, i);
        if (!type || !isNamed(type, MEMBERID_NIL, enumeration)) continue;
        if (auto const value = constantOf(type, constant)) return value;
    }
    return std::nullopt;
}

}  // namespace velk::com
