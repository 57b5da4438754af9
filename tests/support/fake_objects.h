/// Objects whose references and calls can be counted.
#pragma once

#include <functional>

#include <ole2.h>

namespace velk::test {

/// An object on the stack that counts its references and answers its default
/// value. It starts with one reference, its owner's.
class FakeDispatch : public IDispatch {
  public:
    ULONG references = 1;
    bool answersDispatch = true;
    int calls = 0;
    LCID lastLcid = 0;
    WORD lastFlags = 0;
    /// Makes the default value, or the failure of asking for it.
    std::function<HRESULT(VARIANT* value)> defaultValue;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        bool const known = id == IID_IUnknown || (answersDispatch && id == IID_IDispatch);
        *object = known ? this : nullptr;
        if (!known) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID lcid, WORD flags, DISPPARAMS*,
                                     VARIANT* result, EXCEPINFO*, UINT*) override {
        ++calls;
        lastLcid = lcid;
        lastFlags = flags;
        return member == DISPID_VALUE && defaultValue ? defaultValue(result)
                                                      : DISP_E_MEMBERNOTFOUND;
    }
};

}  // namespace velk::test
