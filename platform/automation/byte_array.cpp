#include "byte_array.h"

#include <cstring>

namespace velk::platform {

HRESULT bytesToText(SAFEARRAY* array, BSTR& text) noexcept {
    text = nullptr;
    if (array == nullptr || array->cDims != 1 || array->cbElements != 1) {
        return DISP_E_TYPEMISMATCH;
    }
    void* data = nullptr;
    HRESULT const status = SafeArrayAccessData(array, &data);
    if (FAILED(status)) return status;
    text = SysAllocStringByteLen(static_cast<LPCSTR>(data), array->rgsabound[0].cElements);
    SafeArrayUnaccessData(array);
    return text == nullptr ? E_OUTOFMEMORY : S_OK;
}

HRESULT textToBytes(BSTR text, SAFEARRAY*& array) noexcept {
    UINT const length = SysStringByteLen(text);
    array = SafeArrayCreateVector(VT_UI1, 0, length);
    if (array == nullptr) return E_OUTOFMEMORY;
    if (length != 0) std::memcpy(array->pvData, text, length);
    return S_OK;
}

}  // namespace velk::platform
