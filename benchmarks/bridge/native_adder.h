/// The native object that the benchmarks call.
#pragma once

#include <atomic>

#include <ole2.h>

#include "com/com_ptr.h"

/// Has one member, "Add", of two VT_I4.
class NativeAdder final : public IDispatch {
  public:
    static velk::com::ComPtr<IDispatch> create();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() noexcept override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                            DISPID* ids) noexcept override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO*, UINT*) noexcept override;

  private:
    NativeAdder() = default;
    ~NativeAdder() = default;

    std::atomic<ULONG> references_{0};
};
