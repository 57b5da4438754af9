/// The classes that clients of IDispatch can do nothing with.
#pragma once

#include "com/class_factory.h"
#include "servers/automation/live_object.h"
#include "servers/automation/test_server_ids.h"

namespace velk::test::server {

/// The interface of "VelkTest.NoDispatch", which is not one of automation.
struct INoDispatch : IUnknown {
    /// Always 42.
    virtual LONG STDMETHODCALLTYPE answer() = 0;
};

class NoDispatch : public com::CComObjectRootEx<com::CComMultiThreadModel>,
                   public INoDispatch,
                   private LiveObject {
  public:
    VELK_COM_MAP(NoDispatch, VELK_COM_INTERFACE(INoDispatch, noDispatchInterface))
    LONG STDMETHODCALLTYPE answer() noexcept override { return 42; }
};

/// The instance maker of "VelkTest.NoInstance".
inline HRESULT makeNoInstance(IUnknown*, REFIID, void** out) noexcept {
    if (out) *out = nullptr;
    return noInstanceCode;
}

}  // namespace velk::test::server
