/// Identifiers for records of loaded libraries that have none.
#pragma once

#include <mutex>

#include "oaidl.h"

namespace velk::typelib {

/// ICreateTypeInfo of a loaded record without an identifier, which can be given
/// one and nothing else: every other member answers E_NOTIMPL. The identifier
/// lasts as long as the library is loaded. It shares identity and count of the
/// type information that it belongs to. Thread-safe.
class LoadedRecord final : public ICreateTypeInfo {
  public:
    explicit LoadedRecord(ITypeInfo& owner) : owner_(owner) {}

    /// The identifier given last; GUID_NULL before.
    GUID id() const noexcept {
        std::lock_guard const guard(lock_);
        return id_;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override {
        return owner_.QueryInterface(riid, object);
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return owner_.AddRef(); }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return owner_.Release(); }

    HRESULT STDMETHODCALLTYPE SetGuid(REFGUID id) noexcept override {
        std::lock_guard const guard(lock_);
        id_ = id;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE SetTypeFlags(UINT) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetDocString(LPOLESTR) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetHelpContext(DWORD) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetVersion(WORD, WORD) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE AddRefTypeInfo(ITypeInfo*, HREFTYPE*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE AddFuncDesc(UINT, FUNCDESC*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE AddImplType(UINT, HREFTYPE) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetImplTypeFlags(UINT, INT) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetAlignment(WORD) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetSchema(LPOLESTR) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE AddVarDesc(UINT, VARDESC*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetFuncAndParamNames(UINT, LPOLESTR*, UINT) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetVarName(UINT, LPOLESTR) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetTypeDescAlias(TYPEDESC*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DefineFuncAsDllEntry(UINT, LPOLESTR, LPOLESTR) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetFuncDocString(UINT, LPOLESTR) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetVarDocString(UINT, LPOLESTR) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetFuncHelpContext(UINT, DWORD) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetVarHelpContext(UINT, DWORD) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetMops(UINT, BSTR) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetTypeIdldesc(IDLDESC*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE LayOut() noexcept override { return E_NOTIMPL; }

  private:
    ITypeInfo& owner_;
    mutable std::mutex lock_;
    GUID id_{};
};

}  // namespace velk::typelib
