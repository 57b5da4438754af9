#include "conversion.h"
#include "variant_type.h"

namespace velk::platform {
namespace {

void readScalar(VARIANT const& reference, VARTYPE type, VARIANT& value) noexcept {
    switch (type) {
        case VT_I1:
        case VT_UI1:
            value.bVal = *reference.pbVal;
            break;
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
            value.iVal = *reference.piVal;
            break;
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
        case VT_R4:
        case VT_ERROR:
            value.lVal = *reference.plVal;
            break;
        case VT_DECIMAL:
            value.decVal = *reference.pdecVal;
            break;
        default:
            value.llVal = *reference.pllVal;
            break;
    }
}

}  // namespace

HRESULT borrowReferenced(VARIANT const& source, VARIANT& value) noexcept {
    value = source;
    if (source.vt == (VT_BYREF | VT_VARIANT)) {
        if (source.pvarVal == nullptr) return DISP_E_TYPEMISMATCH;
        value = *source.pvarVal;
        if (value.vt == (VT_BYREF | VT_VARIANT)) return E_INVALIDARG;
    }
    if (!isByReference(value.vt)) return S_OK;
    VARIANT const reference = value;
    if (!isVariantType(reference.vt)) return DISP_E_BADVARTYPE;
    // A record is held by address in either form.
    value.vt = reference.vt & ~VT_BYREF;
    if (value.vt == VT_RECORD) return S_OK;
    if (reference.byref == nullptr) return DISP_E_TYPEMISMATCH;
    VariantInit(&value);
    if (isArray(reference.vt)) {
        value.parray = *reference.pparray;
    } else {
        readScalar(reference, reference.vt & ~VT_BYREF, value);
    }
    value.vt = reference.vt & ~VT_BYREF;
    return S_OK;
}

}  // namespace velk::platform
