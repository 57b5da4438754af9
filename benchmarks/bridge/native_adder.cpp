#include "native_adder.h"

#include <string_view>

namespace {

constexpr DISPID addId = 1;

}  // namespace

velk::com::ComPtr<IDispatch> NativeAdder::create() {
    return velk::com::ComPtr<IDispatch>(new NativeAdder);
}

HRESULT NativeAdder::QueryInterface(REFIID id, void** out) noexcept {
    bool const answers = IsEqualGUID(id, IID_IUnknown) || IsEqualGUID(id, IID_IDispatch);
    *out = answers ? this : nullptr;
    if (answers) AddRef();
    return answers ? S_OK : E_NOINTERFACE;
}

ULONG NativeAdder::Release() noexcept {
    ULONG const left = --references_;
    if (left == 0) delete this;
    return left;
}

HRESULT NativeAdder::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                   DISPID* ids) noexcept {
    if (count != 1 || std::basic_string_view<OLECHAR>(names[0]) != OLESTR("Add")) {
        return DISP_E_UNKNOWNNAME;
    }
    ids[0] = addId;
    return S_OK;
}

HRESULT NativeAdder::Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS* parameters,
                            VARIANT* result, EXCEPINFO*, UINT*) noexcept {
    if (member != addId) return DISP_E_MEMBERNOTFOUND;
    if (parameters->cArgs != 2) return DISP_E_BADPARAMCOUNT;
    VARIANT const* const values = parameters->rgvarg;
    if (values[0].vt != VT_I4 || values[1].vt != VT_I4) return DISP_E_TYPEMISMATCH;
    if (result != nullptr) {
        result->vt = VT_I4;
        result->lVal = values[0].lVal + values[1].lVal;
    }
    return S_OK;
}
