/// The concrete forms of an object that is part of another one.
#pragma once

#include "com/create.h"
#include "com/module_lock.h"
#include "com/object_root.h"

namespace velk::com {

/// `Base` inside an aggregate: its IUnknown is the outer object's, to which
/// it holds no reference because the outer object holds the aggregate.
template <typename Base>
class CComContainedObject final : public Base {
  public:
    explicit CComContainedObject(IUnknown* outer) : outer_(outer) {}

    /// What the object itself answers for, whatever the outer object does.
    HRESULT queryOwnInterface(REFIID id, void** out) noexcept {
        return queryInterfaceMap(static_cast<Base*>(this), Base::interfaceMap(), id, out);
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) noexcept override {
        return outer_->QueryInterface(id, out);
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return outer_->AddRef(); }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return outer_->Release(); }

  private:
    IUnknown* outer_;
};

/// The part of an aggregate that the outer object owns: an IUnknown of its
/// own, which answers for IUnknown itself and passes every other interface
/// to the contained object. `outer` must not be null.
template <typename Base>
class CComAggObject final : private ModuleLock,
                            public IUnknown,
                            public CComObjectRootEx<typename Base::ThreadModel> {
  public:
    explicit CComAggObject(IUnknown* outer) : contained_(outer) {}
    virtual ~CComAggObject() {
        this->markDestroying();
        contained_.finalRelease();
    }

    HRESULT construct() noexcept { return constructObject(*this); }

    /// Both locks and the contained object's own second step.
    HRESULT finalConstruct() noexcept {
        try {
            HRESULT const made = contained_.initialiseSection();
            return FAILED(made) ? made : contained_.finalConstruct();
        }
        VELK_COM_CATCH
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) noexcept override {
        if (out == nullptr) return E_POINTER;
        if (!IsEqualGUID(id, IID_IUnknown)) return contained_.queryOwnInterface(id, out);
        *out = static_cast<IUnknown*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return this->addReference(); }
    ULONG STDMETHODCALLTYPE Release() noexcept override {
        ULONG const left = this->releaseReference();
        if (left == 0) delete this;
        return left;
    }

  private:
    CComContainedObject<Base> contained_;
};

}  // namespace velk::com
