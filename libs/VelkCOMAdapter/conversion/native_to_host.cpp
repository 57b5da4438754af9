#include <new>

#include "VelkQXTProxy/dispatch_wrapper.h"
#include "VelkQXTProxy/variant_wrapper.h"
#include "com/error.h"
#include "com/owners.h"
#include "conversion/conversions.h"
#include "conversion/variant_references.h"
#include "native_to_host/facade.h"

namespace {

using velk::com::ComPtr;
using velk::com::Variant;

enum class HostForm { none, empty, integer, number, date, text, truth, dispatch, unknown };

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
        case VT_UNKNOWN:
            return HostForm::unknown;
        default:
            return HostForm::none;
    }
}

bool refuse(mzComVariantC& dst) {
    dst.clear();
    return false;
}

bool wrapDispatch(ComPtr<IDispatch> const& object, mzComVariantC& dst) {
    auto* const wrapper = new (std::nothrow) vbsComDispatchWrapperC(object.get());
    dst.set(mzComPtrT<mzIUnknown>(wrapper ? wrapper->getIUnknown() : nullptr));
    return true;
}

/// A reference is wrapped as the value that it refers to: the wrapper may
/// outlive the storage of whoever made the call.
bool wrapCopy(VARIANT const& src, mzComVariantC& dst) {
    Variant copy;
    velk::com::throwIfFailed(velk::com::copyReferredTo(src, copy));
    dst.set(vbsComVariantWrapperC::make(std::move(copy)));
    return true;
}

bool isUnsigned32(VARTYPE type) {
    VARTYPE const plain = type & VT_TYPEMASK;
    return plain == VT_UI4 || plain == VT_UINT;
}

bool takeInteger(VARIANT const& src, mzComVariantC& dst) {
    Variant coerced;
    if (FAILED(velk::com::changeType(src, VT_I4, coerced))) return false;
    // Systems differ on an unsigned value above the signed range: some fail,
    // some keep its bits, which would make it another number here.
    if (isUnsigned32(src.vt) && coerced.get().lVal < 0) return false;
    dst.set(static_cast<int>(coerced.get().lVal));
    return true;
}

bool takeNumber(VARIANT const& src, mzComVariantC& dst) {
    Variant coerced;
    if (FAILED(velk::com::changeType(src, VT_R8, coerced))) return false;
    dst.set(coerced.get().dblVal);
    return true;
}

bool takeTruth(VARIANT const& src, mzComVariantC& dst) {
    Variant coerced;
    if (FAILED(velk::com::changeType(src, VT_I4, coerced))) return false;
    dst.set(coerced.get().lVal != 0);
    return true;
}

bool takeDate(VARIANT const& src, mzComVariantC& dst) {
    Variant coerced;
    if (FAILED(velk::com::changeType(src, VT_BSTR, coerced))) return false;
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
    return wrapDispatch(object, dst);
}

/// An interface that leads to no dispatch object is always wrapped.
bool takeUnknown(VARIANT const& src, mzComVariantC& dst) {
    ComPtr<IUnknown> const object((src.vt & VT_BYREF) ? *src.ppunkVal : src.punkVal);
    if (auto const dispatch = object.query<IDispatch>(IID_IDispatch)) {
        return wrapDispatch(dispatch, dst);
    }
    return wrapCopy(src, dst);
}

/// False when the value has no host form; `dst` is then unspecified.
bool takeValue(VARIANT const& src, mzComVariantC& dst) {
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
        case HostForm::unknown:
            return takeUnknown(src, dst);
        case HostForm::none:
            break;
    }
    return false;
}

/// Numbers of the host's own widths need no coercion.
bool takeNumberAsItIs(VARIANT const& src, mzComVariantC& dst) {
    if (src.vt == VT_I4) {
        dst.set(static_cast<int>(src.lVal));
        return true;
    }
    if (src.vt == VT_R8) {
        dst.set(src.dblVal);
        return true;
    }
    return false;
}

/// The same for a reference to a number of these widths.
bool takeReferredNumber(VARIANT const& src, mzComVariantC& dst) {
    if (!src.byref) return false;
    if (src.vt == (VT_BYREF | VT_I4)) {
        dst.set(static_cast<int>(*src.plVal));
        return true;
    }
    if (src.vt == (VT_BYREF | VT_R8)) {
        dst.set(*src.pdblVal);
        return true;
    }
    return false;
}

/// What is no value at all: it cannot even be copied.
bool isNonsense(VARIANT const& src) {
    if ((src.vt & VT_BYREF) && !src.byref) return true;
    return (src.vt & VT_TYPEMASK) == VT_VARIANT && !(src.vt & (VT_BYREF | VT_ARRAY));
}

}  // namespace

bool convertMSCOMVariant2MZCOMVariant(VARIANT const& src, mzComVariantC& dst,
                                      bool followVariantRefs, bool wrapUnsupported) {
    if (takeNumberAsItIs(src, dst) || takeReferredNumber(src, dst)) return true;
    VARIANT const* const value = velk::adapter::followReferences(&src);
    if (!value || isNonsense(*value)) return refuse(dst);
    if (takeValue(*value, dst)) return true;
    // Behind a reference that the caller did not ask to follow, a value is
    // wrapped whatever the caller says about the outer one.
    bool const wrap = wrapUnsupported || (!followVariantRefs && value != &src);
    return wrap ? wrapCopy(*value, dst) : refuse(dst);
}
