/// The class that native clients create.
#pragma once

#include "com/class_factory.h"
#include "com/dispatch_impl.h"
#include "module/interfaces.h"

/// Gives host objects to native clients and runs the host application for
/// them. All proxies of a process share one application; none of them owns it.
class CVelkCOMProxy : public velk::com::CComObjectRootEx<velk::com::CComMultiThreadModel>,
                      public velk::com::CComCoClass<CVelkCOMProxy, &CLSID_VelkCOMProxy>,
                      public velk::com::IDispatchImpl<IVelkCOMProxy, &IID_IVelkCOMProxy,
                                                      &LIBID_VelkCOMAdapterLib, 1, 0> {
  public:
    VELK_COM_MAP(CVelkCOMProxy, VELK_COM_INTERFACE(IVelkCOMProxy, IID_IVelkCOMProxy),
                 VELK_COM_INTERFACE(IDispatch, IID_IDispatch))

    HRESULT STDMETHODCALLTYPE CreateObject(BSTR name, IDispatch** retval) noexcept override;
    HRESULT STDMETHODCALLTYPE GetObject(BSTR name, IDispatch** retval) noexcept override;
    HRESULT STDMETHODCALLTYPE InitApplication(BSTR appName, BSTR appVersion) noexcept override;
    HRESULT STDMETHODCALLTYPE TerminateApplication() noexcept override;

  protected:
    CVelkCOMProxy();
    ~CVelkCOMProxy();
};
