#include "VelkQXTProxy/script_values.h"

#include <limits>

#include "VelkQXTProxy/wrapper_interfaces.h"
#include "com/error.h"
#include "conversion/conversions.h"

namespace velk::adapter {

std::optional<VARTYPE> typeCode(mzComVariantC const& argument) {
    int code = 0;
    if (argument.getExt(code) != mzSuccess) return std::nullopt;
    if (code < 0 || code > std::numeric_limits<VARTYPE>::max()) return std::nullopt;
    return static_cast<VARTYPE>(code);
}

mzComPtrT<mzIDispatch> objectIn(mzComVariantC const& argument) {
    mzComPtrT<mzIUnknown> object;
    argument.skipVariable().get(object);
    return mzComPtrT<mzIDispatch>(mzComPtrC(object.iface()));
}

std::optional<com::Bstr> textIn(mzComVariantC const& argument) {
    mzComStringC text;
    if (argument.getExt(text) != mzSuccess) return std::nullopt;
    return com::makeBstr({text.oleText(), static_cast<std::size_t>(text.length())});
}

mzComStringC invalidParameter(int position) {
    return "Invalid parameter at position: " + mzComStringC::fromInt(position, 10);
}

Converted::Converted(mzComVariantC const& source) {
    mzComVariantC const value = source.skipVariable();
    // A wrapper that refused and is free by now is asked again. Who is never met
    // inside holds what has no native form.
    constexpr int attempts = 8;
    for (int attempt = 0; attempt < attempts && !isInUse_; ++attempt) {
        unsigned typedByRef = 0;
        unsigned wrapperFlags = 0;
        succeeded_ =
            convertMZCOMVariant2MSCOMVariant(value, *value_.address(), typedByRef, wrapperFlags);
        if (succeeded_) return;
        mzComPtrT<mzIUnknown> object;
        value.get(object);
        mzComPtrT<mzIComVariantWrapper> const wrapper{mzComPtrC(object.iface())};
        if (!wrapper.isValid()) return;
        unsigned type = VT_EMPTY;
        isInUse_ = wrapper->getVartype(type) != mzSuccess;
    }
}

void Converted::coerce(VARTYPE type) {
    if (value_.get().vt == type) return;
    com::Variant coerced;
    com::throwIfFailed(com::changeType(value_.get(), type, coerced));
    value_ = std::move(coerced);
}

}  // namespace velk::adapter
