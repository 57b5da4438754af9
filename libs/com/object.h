/// The concrete form of an object that stands alone.
#pragma once

#include "com/create.h"
#include "com/module_lock.h"
#include "com/object_root.h"

namespace velk::com {

/// `Base` with IUnknown of its own. Lives on the heap, from a creator, until
/// its last reference is given back; locks the module meanwhile.
template <typename Base>
class CComObject final : private ModuleLock, public Base {
  public:
    // Objects that stand alone have no outer object; the parameter gives all
    // concrete forms one way to be made.
    explicit CComObject(IUnknown* /*outer*/ = nullptr) {}
    ~CComObject() {
        this->markDestroying();
        this->finalRelease();
    }

    /// Makes an object with no reference yet, for a caller that knows its
    /// class and takes the first reference right after. E_POINTER for a null
    /// `out`; otherwise as newObject.
    static HRESULT CreateInstance(CComObject** out) noexcept {
        if (out == nullptr) return E_POINTER;
        return newObject(nullptr, *out);
    }

    HRESULT construct() noexcept { return constructObject(*this); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) noexcept override {
        return queryInterfaceMap(static_cast<Base*>(this), Base::interfaceMap(), id, out);
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return this->addReference(); }
    ULONG STDMETHODCALLTYPE Release() noexcept override {
        ULONG const left = this->releaseReference();
        if (left == 0) delete this;
        return left;
    }
};

/// `Base` as a cache holds it: the cache's own reference does not keep the
/// module loaded, each further one does, through one lock for all of them.
template <typename Base>
class CComObjectCached final : public Base {
  public:
    explicit CComObjectCached(IUnknown* /*outer*/ = nullptr) {}
    ~CComObjectCached() {
        this->markDestroying();
        this->finalRelease();
    }

    HRESULT construct() noexcept { return constructObject(*this); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) noexcept override {
        return queryInterfaceMap(static_cast<Base*>(this), Base::interfaceMap(), id, out);
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override {
        ULONG const count = this->addReference();
        if (count == 2) lockModule();
        return count;
    }
    ULONG STDMETHODCALLTYPE Release() noexcept override {
        ULONG const left = this->releaseReference();
        if (left == 0) delete this;
        if (left == 1) unlockModule();
        return left;
    }
};

}  // namespace velk::com
