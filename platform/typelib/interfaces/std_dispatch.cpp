// CreateStdDispatch: IDispatch over any object that a type describes.

#include <atomic>

#include "platform/typelib/owners.h"

namespace velk::typelib {
namespace {

// The instance is its owner's: it is not counted here, because it need not be
// a COM object at all. Thread-safe as far as the instance is.
class StandardDispatch final : public IDispatch {
  public:
    StandardDispatch(IUnknown* outer, void* instance, ITypeInfo* type)
        : own_(*this), outer_(outer ? *outer : own_), instance_(instance), type_(type) {}

    /// The identity that counts the object itself, whoever is outside.
    IUnknown* own() { return &own_; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override {
        return outer_.QueryInterface(riid, object);
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return outer_.AddRef(); }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return outer_.Release(); }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override {
        if (!count) return E_INVALIDARG;
        *count = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** type) noexcept override {
        if (!type) return E_INVALIDARG;
        *type = nullptr;
        if (index != 0) return DISP_E_BADINDEX;
        *type = Reference<ITypeInfo>(type_).release();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID,
                                            DISPID* ids) noexcept override {
        if (riid != GUID_NULL) return E_INVALIDARG;
        return type_->GetIDsOfNames(names, count, ids);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID riid, LCID, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* argumentError) noexcept override {
        if (riid != GUID_NULL) return DISP_E_UNKNOWNINTERFACE;
        // The member may let go of the last reference to this object.
        Reference<ITypeInfo> const type(type_);
        if (!parameters) return E_INVALIDARG;
        return type->Invoke(instance_, member, flags, parameters, result, exception, argumentError);
    }

  private:
    class Own final : public IUnknown {
      public:
        explicit Own(StandardDispatch& object) : object_(object) {}

        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) noexcept override {
            if (!out) return E_POINTER;
            *out = nullptr;
            IUnknown* found = nullptr;
            if (riid == IID_IUnknown) found = this;
            if (riid == IID_IDispatch) found = &object_;
            if (!found) return E_NOINTERFACE;
            found->AddRef();
            *out = found;
            return S_OK;
        }
        ULONG STDMETHODCALLTYPE AddRef() noexcept override { return references_.fetch_add(1) + 1; }
        ULONG STDMETHODCALLTYPE Release() noexcept override {
            ULONG const left = references_.fetch_sub(1) - 1;
            if (left == 0) delete &object_;
            return left;
        }

      private:
        StandardDispatch& object_;
        std::atomic<ULONG> references_{1};
    };

    Own own_;
    IUnknown& outer_;
    void* instance_;
    Reference<ITypeInfo> type_;
};

}  // namespace
}  // namespace velk::typelib

HRESULT CreateStdDispatch(IUnknown* outer, void* instance, ITypeInfo* type, IUnknown** dispatch) {
    if (!dispatch) return E_INVALIDARG;
    *dispatch = nullptr;
    if (!instance || !type) return E_INVALIDARG;
    using namespace velk::typelib;
    return guarded([&] { *dispatch = (new StandardDispatch(outer, instance, type))->own(); });
}
