#include "conversion.h"

namespace velk::platform {
namespace {

// An object whose default value is itself would be asked for ever.
constexpr unsigned mostDefaultValues = 16;

}  // namespace

HRESULT toObject(VARIANT const& source, Conversion const& conversion, VARIANT& result) {
    if (source.vt != VT_UNKNOWN && source.vt != VT_DISPATCH) return DISP_E_TYPEMISMATCH;
    result.punkVal = nullptr;
    if (source.punkVal == nullptr) return S_OK;
    void* found = nullptr;
    HRESULT const status = source.punkVal->QueryInterface(
        conversion.type == VT_UNKNOWN ? IID_IUnknown : IID_IDispatch, &found);
    if (FAILED(status)) return status;
    result.punkVal = static_cast<IUnknown*>(found);
    return S_OK;
}

HRESULT readDefaultValue(VARIANT const& source, Conversion const& conversion, VARIANT& value) {
    if ((conversion.flags & VARIANT_NOVALUEPROP) != 0) return DISP_E_TYPEMISMATCH;
    if (source.pdispVal == nullptr) return DISP_E_BADVARTYPE;
    if (conversion.depth >= mostDefaultValues) return DISP_E_TYPEMISMATCH;
    DISPPARAMS none{};
    HRESULT const status =
        source.pdispVal->Invoke(DISPID_VALUE, IID_NULL, conversion.id, DISPATCH_PROPERTYGET, &none,
                                &value, nullptr, nullptr);
    return FAILED(status) ? DISP_E_TYPEMISMATCH : S_OK;
}

}  // namespace velk::platform
