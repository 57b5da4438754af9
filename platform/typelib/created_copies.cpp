#include "platform/typelib/created_copies.h"

#include <algorithm>

#include "platform/typelib/type_info.h"

namespace velk::typelib {
namespace {

// Types within types beyond this are taken for a circle.
constexpr int deepestType = 64;

bool isSimple(VARTYPE type) {
    switch (type) {
        case VT_I1:
        case VT_UI1:
        case VT_I2:
        case VT_UI2:
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
        case VT_I8:
        case VT_UI8:
        case VT_R4:
        case VT_R8:
        case VT_CY:
        case VT_DATE:
        case VT_BOOL:
        case VT_ERROR:
        case VT_BSTR:
            return true;
        default:
            return false;
    }
}

// What stands by itself in a description of a type.
bool isPlainType(VARTYPE type) {
    switch (type) {
        case VT_DISPATCH:
        case VT_UNKNOWN:
        case VT_VARIANT:
        case VT_DECIMAL:
        case VT_VOID:
        case VT_HRESULT:
        case VT_LPSTR:
        case VT_LPWSTR:
        case VT_INT_PTR:
        case VT_UINT_PTR:
            return true;
        default:
            return isSimple(type);
    }
}

bool isNullObject(VARIANT const& value) {
    return (value.vt == VT_UNKNOWN || value.vt == VT_DISPATCH) && !value.punkVal;
}

}  // namespace

Text CreatedCopies::text(OLECHAR const* text) {
    require(text, E_INVALIDARG);
    return model_.keep(text);
}

TYPEDESC CreatedCopies::type(TYPEDESC const& type) {
    return typeWithin(type, 0);
}

TYPEDESC CreatedCopies::typeWithin(TYPEDESC const& type, int depth) {
    require(depth < deepestType, E_INVALIDARG);
    TYPEDESC copy{};
    copy.vt = type.vt;
    switch (type.vt) {
        case VT_PTR:
        case VT_SAFEARRAY:
            require(type.lptdesc, E_INVALIDARG);
            copy.lptdesc = model_.makeOne<TYPEDESC>();
            *copy.lptdesc = typeWithin(*type.lptdesc, depth + 1);
            break;
        case VT_CARRAY:
            require(type.lpadesc && type.lpadesc->cDims > 0, E_INVALIDARG);
            copy.lpadesc = array(*type.lpadesc, depth + 1);
            break;
        case VT_USERDEFINED:
            library_.resolve(type.hreftype);
            copy.hreftype = type.hreftype;
            break;
        default:
            require(isPlainType(type.vt), E_INVALIDARG);
            break;
    }
    return copy;
}

ARRAYDESC* CreatedCopies::array(ARRAYDESC const& array, int depth) {
    auto const element = typeWithin(array.tdescElem, depth);
    // The bounds after the first one follow the structure.
    std::size_t const size = sizeof(ARRAYDESC) + (array.cDims - 1u) * sizeof(SAFEARRAYBOUND);
    std::size_t const blocks = (size + sizeof(TYPEDESC) - 1) / sizeof(TYPEDESC);
    auto* const copy = reinterpret_cast<ARRAYDESC*>(model_.makeArray<TYPEDESC>(blocks).data());
    copy->tdescElem = element;
    copy->cDims = array.cDims;
    std::copy_n(array.rgbounds, array.cDims, copy->rgbounds);
    return copy;
}

VARIANT* CreatedCopies::value(VARIANT const* value) {
    require(value, E_INVALIDARG);
    require(isSimple(value->vt) || isNullObject(*value), DISP_E_BADVARTYPE);
    auto* const copy = model_.makeOne<VARIANT>();
    model_.clearAtEnd(copy);
    HRESULT const copied = VariantCopy(copy, const_cast<VARIANT*>(value));
    require(SUCCEEDED(copied), copied);
    return copy;
}

PARAMDESCEX* CreatedCopies::defaultValue(PARAMDESCEX const* given) {
    require(given, E_INVALIDARG);
    VARIANT const* const kept = value(&given->varDefaultValue);
    auto* const result = model_.makeOne<PARAMDESCEX>();
    result->cBytes = sizeof(PARAMDESCEX);
    // Belongs to what `kept` points at.
    result->varDefaultValue = *kept;
    return result;
}

CustomData CreatedCopies::withItem(CustomData items, REFGUID id, VARIANT const* given) {
    VARIANT* const kept = value(given);
    auto const same = [&](CustomItem const& item) { return item.id == id; };
    auto const found = std::find_if(items.begin(), items.end(), same);
    auto const place = static_cast<std::size_t>(found - items.begin());
    auto const copies = model_.makeArray<CustomItem>(std::max(items.size(), place + 1));
    std::copy(items.begin(), items.end(), copies.begin());
    copies[place] = {id, *kept};
    return copies;
}

}  // namespace velk::typelib
