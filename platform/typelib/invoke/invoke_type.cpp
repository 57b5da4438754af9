#include "platform/typelib/invoke/invoke_type.h"

#include <algorithm>

namespace velk::typelib {
namespace {

// Aliases of aliases beyond this are taken for a circle.
constexpr int deepestAlias = 64;

bool derivesFromDispatch(Reference<TypeInfo> type) {
    for (int depth = 0; type && depth < deepestAlias; ++depth) {
        if (type->model().id == IID_IDispatch || type->model().kind == TKIND_DISPATCH) return true;
        type = type->base();
    }
    return false;
}

// What a pointer to the class of an object points at: its default interface.
Reference<TypeInfo> defaultInterface(TypeInfo& coclass) {
    for (auto const& entry : coclass.model().implemented) {
        bool const source = entry.flags & IMPLTYPEFLAG_FSOURCE;
        if (!source && (entry.flags & IMPLTYPEFLAG_FDEFAULT)) {
            return coclass.library().resolve(entry.reference);
        }
    }
    return {};
}

InvokeType interfaceOf(Reference<TypeInfo> const& type) {
    InvokeType result;
    result.type = derivesFromDispatch(type) ? VT_DISPATCH : VT_UNKNOWN;
    // An interface by value counts as one pointer less.
    result.pointers = -1;
    // What a dispatch interface is called by is IDispatch itself.
    bool const plainDispatch = type->model().kind == TKIND_DISPATCH && !type->model().dual();
    result.interfaceId = plainDispatch ? IID_IDispatch : type->model().id;
    return result;
}

InvokeType resolve(TypeLibrary& library, TYPEDESC const& type, int depth);

InvokeType resolveUser(TypeLibrary& library, HREFTYPE reference, int depth) {
    auto const target = library.resolve(reference);
    InvokeType result;
    switch (target->model().kind) {
        case TKIND_ALIAS:
            return resolve(target->library(), target->model().alias, depth + 1);
        case TKIND_ENUM:
            result.type = VT_I4;
            return result;
        case TKIND_RECORD:
        case TKIND_UNION:
            result.type = VT_RECORD;
            result.record = target;
            return result;
        case TKIND_INTERFACE:
        case TKIND_DISPATCH:
            return interfaceOf(target);
        case TKIND_COCLASS: {
            auto const main = defaultInterface(*target);
            require(bool(main), DISP_E_BADVARTYPE);
            return interfaceOf(main);
        }
        default:
            fail(DISP_E_BADVARTYPE);
    }
}

InvokeType resolve(TypeLibrary& library, TYPEDESC const& type, int depth) {
    require(depth < deepestAlias, TYPE_E_CIRCULARTYPE);
    InvokeType result;
    switch (type.vt) {
        case VT_PTR:
            result = resolve(library, *type.lptdesc, depth + 1);
            ++result.pointers;
            return result;
        case VT_SAFEARRAY: {
            auto const element = resolve(library, *type.lptdesc, depth + 1);
            require(element.pointers == 0, DISP_E_BADVARTYPE);
            result.type = static_cast<VARTYPE>(VT_ARRAY | element.type);
            result.record = element.record;
            return result;
        }
        case VT_USERDEFINED:
            return resolveUser(library, type.hreftype, depth);
        case VT_CARRAY:
            fail(DISP_E_BADVARTYPE);
        case VT_INT:
            result.type = VT_I4;
            return result;
        case VT_UINT:
            result.type = VT_UI4;
            return result;
        case VT_INT_PTR:
            result.type = VT_I8;
            return result;
        case VT_UINT_PTR:
            result.type = VT_UI8;
            return result;
        case VT_HRESULT:
            result.type = VT_ERROR;
            return result;
        default:
            result.type = type.vt;
            return result;
    }
}

}  // namespace

InvokeType resolveForInvoke(TypeLibrary& library, TYPEDESC const& type) {
    auto result = resolve(library, type, 0);
    require(result.pointers >= 0, DISP_E_BADVARTYPE);
    return result;
}

}  // namespace velk::typelib
