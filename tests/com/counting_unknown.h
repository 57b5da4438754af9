/// A fake object that tells how many references it has.
#pragma once

#include <objbase.h>

namespace velk::com::test {

/// Answers IUnknown only and is never destroyed by its last reference, so
/// that a test can read the count after it.
class CountingUnknown final : public IUnknown {
  public:
    ULONG references = 0;
    int queries = 0;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) override {
        ++queries;
        *out = nullptr;
        if (!IsEqualGUID(id, IID_IUnknown)) return E_NOINTERFACE;
        *out = static_cast<IUnknown*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
};

}  // namespace velk::com::test
