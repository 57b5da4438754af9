/// Native objects that tell how many references they have.
#pragma once

#include <windows.h>

#include <oleauto.h>

namespace velk::test {

/// An IDispatch on the test's stack. Answers IUnknown and IDispatch, and what
/// `claimed` names although it is no such thing.
class CountingDispatch : public IDispatch {
  public:
    explicit CountingDispatch(IID const* claimed = nullptr) : claimed_(claimed) {}
    virtual ~CountingDispatch() = default;

    ULONG references() const { return references_; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) noexcept override {
        bool const answers = IsEqualGUID(id, IID_IUnknown) || IsEqualGUID(id, IID_IDispatch) ||
                             (claimed_ && IsEqualGUID(id, *claimed_));
        *out = answers ? static_cast<IDispatch*>(this) : nullptr;
        if (answers) AddRef();
        return answers ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return --references_; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID,
                                            DISPID*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) noexcept override {
        return E_NOTIMPL;
    }

  private:
    IID const* claimed_;
    ULONG references_ = 1;
};

}  // namespace velk::test
