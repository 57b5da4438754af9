#include <optional>

#include "VelkQXTProxy/wrapper_interfaces.h"
#include "com/owners.h"
#include "conversion/conversions.h"
#include "host/dispatch.h"
#include "host/exception.h"
#include "host/variant_array.h"
#include "native_to_host/facade.h"

namespace {

using velk::com::ComPtr;
using velk::com::TextView;
using velk::com::Variant;

void giveText(mzComVariantC const& src, VARIANT& dst) {
    mzComStringC text;
    if (src.get(text) != mzSuccess) text = mzComStringC();
    TextView const view(text.oleText(), static_cast<std::size_t>(text.length()));
    dst.bstrVal = velk::com::makeBstr(view).release();
    dst.vt = VT_BSTR;
}

void giveNothing(VARIANT& dst, unsigned& typedByRef) {
    dst.vt = VT_DISPATCH;
    dst.pdispVal = nullptr;
    typedByRef = 1;
}

/// Whether the object is the script value Nothing, which tells itself by
/// having this member.
bool isNothing(mzIDispatch& object) {
    mzComVariantC result;
    mzComPtrT<mzIException> exception;
    return object.invokeByName("__vbs_isnothing", mzCallMethod, mzComVariantArrayC(), result,
                               exception) == mzSuccess;
}

bool giveFacade(mzIDispatch& object, VARIANT& dst) {
    ComPtr<Ivelkdspwrap> facade;
    if (FAILED(velk::adapter::createBoundFacade(&object, facade))) return false;
    dst.vt = VT_DISPATCH;
    dst.pdispVal = facade.detach();
    return true;
}

bool isNullReference(VARIANT const& value) {
    return (value.vt & VT_BYREF) && !value.byref;
}

/// Gives a copy of what a wrapper holds; false for a value that cannot be
/// copied, for a reference to nothing and for a type that only references have.
bool giveHeldValue(mzIComVariantWrapper& wrapper, VARIANT& dst, unsigned& wrapperFlags) {
    Variant copy;
    unsigned type = VT_EMPTY;
    unsigned flags = 0;
    if (wrapper.getVariant(*copy.address()) != mzSuccess || wrapper.getVartype(type) != mzSuccess ||
        wrapper.getFlags(flags) != mzSuccess) {
        return false;
    }
    bool const wasCopied = copy.get().vt != VT_EMPTY || type == VT_EMPTY;
    if (!wasCopied || copy.get().vt == VT_VARIANT || isNullReference(copy.get())) return false;
    dst = copy.release();
    wrapperFlags = flags;
    return true;
}

enum class Form { none, given, refused };

/// Gives back what the object wraps; none when it is no wrapper.
Form giveWrapped(mzComPtrC const& object, VARIANT& dst, unsigned& wrapperFlags) {
    if (mzComPtrT<mzIComVariantWrapper> const value{object}; value.isValid()) {
        return giveHeldValue(*value.iface(), dst, wrapperFlags) ? Form::given : Form::refused;
    }
    if (mzComPtrT<mzIComDispatchWrapper> const native{object}; native.isValid()) {
        dst.vt = VT_DISPATCH;
        native->getDispatch(&dst.pdispVal);
        return Form::given;
    }
    return Form::none;
}

bool giveObject(mzComVariantC const& src, VARIANT& dst, unsigned& typedByRef,
                unsigned& wrapperFlags) {
    mzComPtrT<mzIUnknown> reference;
    src.get(reference);
    mzComPtrC const identity(reference.iface());
    mzComPtrT<mzIDispatch> const object{identity};
    Form const form = object.isValid() ? giveWrapped(identity, dst, wrapperFlags) : Form::none;
    if (form == Form::refused) return false;
    if (form == Form::given) {
        typedByRef = 1;
        return true;
    }
    if (!object.isValid() || isNothing(*object.iface())) {
        giveNothing(dst, typedByRef);
        return true;
    }
    return giveFacade(*object.iface(), dst);
}

}  // namespace

bool convertMZCOMVariant2MSCOMVariant(mzComVariantC const& src, VARIANT& dst, unsigned& typedByRef,
                                      unsigned& wrapperFlags) {
    VariantInit(&dst);
    typedByRef = 0;
    wrapperFlags = 0;
    switch (src.getType()) {
        case mzTypeEmpty:
            return true;
        case mzTypeInteger:
            dst.vt = VT_I4;
            dst.lVal = src.getInt();
            return true;
        case mzTypeDouble:
            dst.vt = VT_R8;
            dst.dblVal = src.getDouble();
            return true;
        case mzTypeString:
            giveText(src, dst);
            return true;
        case mzTypeObject:
            return giveObject(src, dst, typedByRef, wrapperFlags);
        default:
            return false;
    }
}
