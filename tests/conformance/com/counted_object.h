/// A fake object that tells how many references others hold to it.
#pragma once

#include <atomic>

#include <windows.h>

#include <objbase.h>

namespace velk::test {

/// Answers for IUnknown and IClassFactory. A test owns it, whatever its count.
class CountedObject final : public IClassFactory {
  public:
    std::atomic<ULONG> references{0};

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        bool const known = riid == IID_IUnknown || riid == IID_IClassFactory;
        *object = known ? this : nullptr;
        if (known) ++references;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID, void**) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return E_NOTIMPL; }
};

}  // namespace velk::test
