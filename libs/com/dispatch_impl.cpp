#include "com/dispatch_impl.h"

namespace velk::com {

HRESULT getTypeInfo(TypeInfoHolder& holder, UINT index, LCID lcid, ITypeInfo** out) noexcept {
    if (out != nullptr) *out = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    if (out == nullptr) return E_POINTER;
    ComPtr<ITypeInfo> type;
    HRESULT const code = holder.get(lcid, type);
    *out = type.detach();
    return code;
}

HRESULT getIdsOfNames(TypeInfoHolder& holder, LPOLESTR* names, UINT count, LCID lcid,
                      DISPID* ids) noexcept {
    if (count == 0 || names == nullptr || ids == nullptr) return E_INVALIDARG;
    ComPtr<ITypeInfo> type;
    HRESULT const code = holder.get(lcid, type);
    return FAILED(code) ? code : type->GetIDsOfNames(names, count, ids);
}

HRESULT invokeByTypeInfo(TypeInfoHolder& holder, void* object, DISPID member, LCID lcid, WORD flags,
                         DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                         UINT* argumentError) noexcept {
    DISPPARAMS none{};
    ComPtr<ITypeInfo> type;
    HRESULT const code = holder.get(lcid, type);
    if (FAILED(code)) return code;
    return type->Invoke(object, member, flags, parameters != nullptr ? parameters : &none, result,
                        exception, argumentError);
}

}  // namespace velk::com
