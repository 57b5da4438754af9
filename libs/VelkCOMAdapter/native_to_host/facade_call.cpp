#include "native_to_host/facade_call.h"

#include <limits>

#include "com/owners.h"
#include "conversion/conversions.h"

namespace velk::adapter {
namespace {

// Type information counts the parameters of a member in 16 signed bits.
constexpr UINT mostArguments = std::numeric_limits<SHORT>::max();

// What native clients see of every host failure.
constexpr WORD failureCode = 0x400;
constexpr com::TextView failureSource = OLESTR("VELKCOMADAPTER");

com::Bstr failureText(mzComPtrT<mzIException> const& failure) {
    mzComStringC const text = mzComExceptionErrorString(failure, "\n");
    return com::makeBstr({text.oleText(), static_cast<std::size_t>(text.length())});
}

}  // namespace

unsigned callKindOfNamed(WORD flags) noexcept {
    if (flags & DISPATCH_METHOD) {
        return flags & DISPATCH_PROPERTYGET ? mzCallMethod | mzCallPropertyGet : mzCallMethod;
    }
    if (flags & DISPATCH_PROPERTYGET) return mzCallPropertyGet;
    if (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) return mzCallPropertyPut;
    return 0;
}

unsigned callKindOfDefault(WORD flags) noexcept {
    return flags & DISPATCH_PROPERTYPUT ? mzCallPropertyPut : mzCallMethod;
}

HRESULT takeArguments(DISPPARAMS const* parameters, mzComVariantArrayC& arguments) {
    if (!parameters || parameters->cArgs == 0) return S_OK;
    if (!parameters->rgvarg) return E_INVALIDARG;
    UINT const count = parameters->cArgs;
    if (count > mostArguments) return DISP_E_BADPARAMCOUNT;
    mzComVariantC value;
    for (UINT position = 0; position < count; ++position) {
        // Native callers write the last argument first.
        if (!convertMSCOMVariant2MZCOMVariant(parameters->rgvarg[count - 1 - position], value,
                                              false, true)) {
            return DISP_E_TYPEMISMATCH;
        }
        arguments.append(value);
    }
    return S_OK;
}

HRESULT giveResult(mzComVariantC const& value, VARIANT* result) {
    if (!result) return S_OK;
    unsigned typedByRef = 0;
    unsigned wrapperFlags = 0;
    // The caller's variable holds nothing that is to be released.
    convertMZCOMVariant2MSCOMVariant(value, *result, typedByRef, wrapperFlags);
    return S_OK;
}

HRESULT giveFailure(unsigned code, mzComPtrT<mzIException> const& failure, EXCEPINFO* record) {
    if (code == mzMemberNotFound) return DISP_E_MEMBERNOTFOUND;
    if (record) {
        com::Bstr description = failureText(failure);
        com::Bstr source = com::makeBstr(failureSource);
        *record = EXCEPINFO{};
        record->wCode = failureCode;
        record->bstrDescription = description.release();
        record->bstrSource = source.release();
    }
    return DISP_E_EXCEPTION;
}

}  // namespace velk::adapter
