// ITypeComp: names of a compiler's source text bound to types and members.

#include <algorithm>

#include "platform/typelib/type_info.h"

namespace velk::typelib {
namespace {

bool accepts(FunctionModel const& function, WORD flags) {
    return flags == 0 || (function.invocation & flags);
}

// Variables are read and written like properties.
bool accepts(VariableModel const& variable, WORD flags) {
    if (flags == 0) return true;
    if (variable.kind == VAR_CONST) return flags & INVOKE_PROPERTYGET;
    return flags & (INVOKE_PROPERTYGET | INVOKE_PROPERTYPUT | INVOKE_PROPERTYPUTREF);
}

}  // namespace

HRESULT TypeInfo::Bind(LPOLESTR name, ULONG, WORD flags, ITypeInfo** type, DESCKIND* kind,
                       BINDPTR* found) noexcept {
    if (!name || !type || !kind || !found) return E_INVALIDARG;
    *type = nullptr;
    *kind = DESCKIND_NONE;
    *found = {};
    return guarded([&] {
        auto const candidates = findByName(name);
        for (auto const& candidate : candidates) {
            auto& owner = *candidate.owner;
            if (candidate.function && accepts(*candidate.function, flags)) {
                // A dual interface binds to what it looks like from this side.
                found->lpfuncdesc = describe({candidate.owner, candidate.function});
                *kind = DESCKIND_FUNCDESC;
                *type = Reference<TypeInfo>(this).release();
                return S_OK;
            }
            if (candidate.variable && accepts(*candidate.variable, flags)) {
                auto const index = candidate.variable - owner.model().variables.data();
                HRESULT const result =
                    owner.GetVarDesc(static_cast<UINT>(index), &found->lpvardesc);
                if (FAILED(result)) return result;
                *kind = DESCKIND_VARDESC;
                *type = Reference<TypeInfo>(candidate.owner).release();
                return S_OK;
            }
        }
        return candidates.empty() ? S_OK : TYPE_E_TYPEMISMATCH;
    });
}

// A type declares no types of its own.
HRESULT TypeInfo::BindType(LPOLESTR name, ULONG, ITypeInfo** type, ITypeComp** binder) noexcept {
    if (!name || !type || !binder) return E_INVALIDARG;
    *type = nullptr;
    *binder = nullptr;
    return S_OK;
}

Reference<TypeInfo> TypeLibrary::typeOfKind(Text name, std::vector<TYPEKIND> const& kinds) {
    for (auto const& place : index().named(folded(name))) {
        if (place.member != MEMBERID_NIL) continue;
        auto found = type(place.type);
        if (kinds.empty() || std::count(kinds.begin(), kinds.end(), found->kind())) return found;
    }
    return {};
}

// At the level of a library names mean modules and enumerations, the members
// of those, and the members of objects that are there without being named.
HRESULT TypeLibrary::Bind(LPOLESTR name, ULONG hash, WORD flags, ITypeInfo** outType,
                          DESCKIND* kind, BINDPTR* found) noexcept {
    if (!name || !outType || !kind || !found) return E_INVALIDARG;
    *outType = nullptr;
    *kind = DESCKIND_NONE;
    *found = {};
    return guarded([&] {
        if (auto group = typeOfKind(name, {TKIND_MODULE, TKIND_ENUM})) {
            *kind = DESCKIND_TYPECOMP;
            found->lptcomp = group.release();
            return S_OK;
        }
        bool mismatch = false;
        for (std::size_t i = 0; i < model_->types.size(); ++i) {
            auto const& candidate = model_->types[i];
            if (candidate.deleted) continue;
            bool const group = candidate.kind == TKIND_MODULE || candidate.kind == TKIND_ENUM;
            bool const implicit =
                candidate.kind == TKIND_COCLASS && (candidate.flags & TYPEFLAG_FAPPOBJECT);
            if (!group && !implicit) continue;
            auto const scope = type(i);
            auto target = scope;
            if (implicit) {
                auto const& list = candidate.implemented;
                auto const entry = std::find_if(list.begin(), list.end(), [](auto const& e) {
                    return (e.flags & IMPLTYPEFLAG_FDEFAULT) && !(e.flags & IMPLTYPEFLAG_FSOURCE);
                });
                if (entry == list.end()) continue;
                target = resolve(entry->reference);
            }
            HRESULT const result = target->Bind(name, hash, flags, outType, kind, found);
            mismatch = mismatch || result == TYPE_E_TYPEMISMATCH;
            if (FAILED(result) || *kind == DESCKIND_NONE) continue;
            return S_OK;
        }
        return mismatch ? TYPE_E_TYPEMISMATCH : S_OK;
    });
}

HRESULT TypeLibrary::BindType(LPOLESTR name, ULONG, ITypeInfo** outType,
                              ITypeComp** binder) noexcept {
    if (!name || !outType || !binder) return E_INVALIDARG;
    *outType = nullptr;
    *binder = nullptr;
    return guarded([&] {
        // The second result is reserved and stays null.
        if (auto found = typeOfKind(name, {})) *outType = found.release();
    });
}

}  // namespace velk::typelib
