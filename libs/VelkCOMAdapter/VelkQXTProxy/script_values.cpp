#include "VelkQXTProxy/script_values.h"

#include <limits>

#include "com/error.h"
#include "conversions.h"

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
    unsigned typedByRef = 0;
    unsigned wrapperFlags = 0;
    succeeded_ = convertMZCOMVariant2MSCOMVariant(source.skipVariable(), *value_.address(),
                                                  typedByRef, wrapperFlags);
}

void Converted::coerce(VARTYPE type) {
    if (value_.get().vt == type) return;
    com::Variant coerced;
    com::throwIfFailed(com::changeType(value_.get(), type, coerced));
    value_ = std::move(coerced);
}

}  // namespace velk::adapter
