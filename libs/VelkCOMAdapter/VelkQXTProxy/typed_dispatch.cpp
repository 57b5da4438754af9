#include "VelkQXTProxy/typed_dispatch.h"

#include "VelkQXTProxy/dispatch_wrapper.h"

namespace velk::adapter {

HRESULT makeTypedDispatch(com::ComPtr<IUnknown> const& instance, com::ComPtr<ITypeInfo> const& type,
                          com::ComPtr<IDispatch>& made) {
    com::ComPtr<IUnknown> standard;
    HRESULT code = CreateStdDispatch(nullptr, instance.get(), type.get(), standard.put());
    if (code == S_OK) made = standard.query<IDispatch>(IID_IDispatch, &code);
    return code;
}

mzComPtrT<mzIDispatch> wrapNative(com::ComPtr<IDispatch> const& object,
                                  com::ComPtr<IUnknown> const& keptAlive) {
    return mzComPtrT<mzIDispatch>(new vbsComDispatchWrapperC(object.get(), keptAlive.get()));
}

}  // namespace velk::adapter
