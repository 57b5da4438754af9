#include "com/owners.h"
#include "conversions.h"
#include "facade.h"

namespace {

using velk::com::ComPtr;
using velk::com::Variant;

constexpr VARTYPE variantReference = VT_BYREF | VT_VARIANT;

enum class HostForm { none, empty, integer, number, date, text, truth, dispatch };

HostForm hostFormOf(VARTYPE type) {
    bool const byReference = (type & VT_BYREF) != 0;
    switch (type & ~VT_BYREF) {
        case VT_EMPTY:
            return byReference ? HostForm::none : HostForm::empty;
        case VT_I1:
        case VT_I2:
        case VT_I4:
        case VT_I8:
        case VT_INT:
        case VT_UI1:
        case VT_UI2:
        case VT_UI4:
        case VT_UI8:
        case VT_UINT:
            return HostForm::integer;
        case VT_R4:
        case VT_R8:
            return HostForm::number;
        case VT_CY:
            return byReference ? HostForm::none : HostForm::number;
        case VT_DATE:
            return HostForm::date;
        case VT_BSTR:
            return HostForm::text;
        case VT_BOOL:
            return HostForm::truth;
        case VT_DISPATCH:
            return HostForm::dispatch;
        default:
            return HostForm::none;
    }
}

/// The value at the end of a chain of references to VARIANTs; null when the
/// chain ends at a null pointer or runs in a circle.
VARIANT const* followReferences(VARIANT const* value) {
    // The trailing pointer goes half as fast: in a circle the two meet.
    VARIANT const* trailing = value;
    for (bool trailingMoves = false; value && value->vt == variantReference;
         trailingMoves = !trailingMoves) {
        value = value->pvarVal;
        if (trailingMoves) trailing = trailing->pvarVal;
        if (value == trailing) return nullptr;
    }
    return value;
}

/// What becomes of a native value that the host cannot express, and of a
/// native object: the one place where wrapping it comes in.
bool refuse(mzComVariantC& dst) {
    dst.clear();
    return false;
}

bool isUnsigned32(VARTYPE type) {
    VARTYPE const plain = type & VT_TYPEMASK;
    return plain == VT_UI4 || plain == VT_UINT;
}

bool takeInteger(VARIANT const& src, mzComVariantC& dst) {
    Variant coerced;
    if (FAILED(velk::com::changeType(src, VT_I4, coerced))) return refuse(dst);
    // Systems differ on an unsigned value above the signed range: some fail,
    // some keep its bits, which would make it another number here.
    if (isUnsigned32(src.vt) && coerced.get().lVal < 0) return refuse(dst);
    dst.set(static_cast<int>(coerced.get().lVal));
    return true;
}

bool takeNumber(VARIANT const& src, mzComVariantC& dst) {
    Variant coerced;
    if (FAILED(velk::com::changeType(src, VT_R8, coerced))) return refuse(dst);
    dst.set(coerced.get().dblVal);
    return true;
}

bool takeTruth(VARIANT const& src, mzComVariantC& dst) {
    Variant coerced;
    if (FAILED(velk::com::changeType(src, VT_I4, coerced))) return refuse(dst);
    dst.set(coerced.get().lVal != 0);
    return true;
}

bool takeDate(VARIANT const& src, mzComVariantC& dst) {
    Variant coerced;
    if (FAILED(velk::com::changeType(src, VT_BSTR, coerced))) return refuse(dst);
    dst.set(mzComStringC(static_cast<OLECHAR const*>(coerced.get().bstrVal)));
    return true;
}

bool takeText(VARIANT const& src, mzComVariantC& dst) {
    BSTR const text = (src.vt & VT_BYREF) ? *src.pbstrVal : src.bstrVal;
    dst.set(mzComStringC::fromBSTR(text));
    return true;
}

bool takeDispatch(VARIANT const& src, mzComVariantC& dst) {
    ComPtr<IDispatch> const object((src.vt & VT_BYREF) ? *src.ppdispVal : src.pdispVal);
    if (!object) {
        dst.clear();
        return true;
    }
    auto const answered = object.query<Ivelkdspwrap>(IID_Ivelkdspwrap);
    if (Cvelkdspwrap const* facade = Cvelkdspwrap::ownFacade(answered.get())) {
        dst.set(mzComPtrT<mzIUnknown>(facade->hostObject()));
        return true;
    }
    return refuse(dst);
}

bool takeValue(VARIANT const& src, mzComVariantC& dst) {
    if ((src.vt & VT_BYREF) && !src.byref) return refuse(dst);
    switch (hostFormOf(src.vt)) {
        case HostForm::empty:
            dst.clear();
            return true;
        case HostForm::integer:
            return takeInteger(src, dst);
        case HostForm::number:
            return takeNumber(src, dst);
        case HostForm::date:
            return takeDate(src, dst);
        case HostForm::text:
            return takeText(src, dst);
        case HostForm::truth:
            return takeTruth(src, dst);
        case HostForm::dispatch:
            return takeDispatch(src, dst);
        case HostForm::none:
            break;
    }
    return refuse(dst);
}

}  // namespace

bool convertMSCOMVariant2MZCOMVariant(VARIANT const& src, mzComVariantC& dst,
                                      bool /*followVariantRefs*/, bool /*wrapUnsupported*/) {
    // Numbers of the host's own widths need no coercion.
    if (src.vt == VT_I4) {
        dst.set(static_cast<int>(src.lVal));
        return true;
    }
    if (src.vt == VT_R8) {
        dst.set(src.dblVal);
        return true;
    }
    // A reference to a VARIANT is the value that it ends at, whether the
    // caller asks for that or leaves it to the rule for this type: the two
    // would differ only in what is wrapped.
    VARIANT const* const value = followReferences(&src);
    return value ? takeValue(*value, dst) : refuse(dst);
}
