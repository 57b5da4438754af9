#include "servers/automation/late_call.h"

namespace velk::test::server {

HRESULT callLate(IDispatch* object, BSTR method, VARIANT* arguments, UINT count,
                 com::Variant& result, com::ExceptionInfo& exception) {
    if (!object) return E_POINTER;
    DISPID member = DISPID_UNKNOWN;
    HRESULT code = object->GetIDsOfNames(GUID_NULL, &method, 1, LOCALE_USER_DEFAULT, &member);
    if (FAILED(code)) return code;
    DISPPARAMS parameters{arguments, nullptr, count, 0};
    code = object->Invoke(member, GUID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                          result.put(), exception.put(), nullptr);
    auto* const fillIn = exception.get().pfnDeferredFillIn;
    if (code == DISP_E_EXCEPTION && fillIn) fillIn(exception.address());
    return code;
}

}  // namespace velk::test::server
