/// IUnknown of the objects of structured storage.
#pragma once

#include <atomic>

#include <unknwn.h>

namespace velk::platform::storage {

/// An object on the heap that counts its references, the first one being the
/// maker's. Answers IUnknown and the interfaces of `ids`, which all begin like
/// `Interface`. Thread-safe.
template <typename Interface, IID const&... ids>
class SharedObject : public Interface {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override {
        if (object == nullptr) return E_POINTER;
        bool const known = riid == IID_IUnknown || ((riid == ids) || ...);
        *object = known ? static_cast<Interface*>(this) : nullptr;
        if (known) this->AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return ++count_; }
    ULONG STDMETHODCALLTYPE Release() noexcept override {
        ULONG const left = --count_;
        if (left == 0) delete this;
        return left;
    }

  protected:
    SharedObject() = default;
    virtual ~SharedObject() = default;

  private:
    std::atomic<ULONG> count_{1};
};

}  // namespace velk::platform::storage
