/// What the objects of structured storage have in common.
#pragma once

#include <atomic>
#include <vector>

#include <unknwn.h>

#include "platform/system/boundary.h"

namespace velk::platform::storage {

/// Runs the body of a published function with the codes of this family.
template <typename Body>
HRESULT answer(Body&& body) noexcept {
    return guarded<STG_E_INSUFFICIENTMEMORY, STG_E_UNKNOWN>(body);
}

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

/// Gives what was there when it was made. `Interface` is the enumeration's,
/// `Given` what its clients get, `Status` what that is made of: its give()
/// makes it, its takeBack() ends one that cannot be given. One thread at a time
/// may use it.
template <typename Interface, IID const& id, typename Given, typename Status>
class StatusEnumerator final : public SharedObject<Interface, id> {
  public:
    explicit StatusEnumerator(std::vector<Status> all) : all_(std::move(all)) {}

    HRESULT STDMETHODCALLTYPE Next(ULONG count, Given* given, ULONG* done) noexcept override {
        if (done != nullptr) *done = 0;
        if (given == nullptr) return STG_E_INVALIDPOINTER;
        if (done == nullptr && count != 1) return STG_E_INVALIDPARAMETER;
        ULONG made = 0;
        HRESULT const code = answer([&] {
            for (; made < count && at_ + made < all_.size(); ++made) {
                given[made] = all_[at_ + made].give();
            }
        });
        if (FAILED(code)) {
            for (ULONG i = 0; i < made; ++i) Status::takeBack(given[i]);
            return code;
        }
        at_ += made;
        if (done != nullptr) *done = made;
        return made == count ? S_OK : S_FALSE;
    }
    /// Nobody goes another way than from the first to the last: E_NOTIMPL.
    HRESULT STDMETHODCALLTYPE Skip(ULONG) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Reset() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Clone(Interface**) noexcept override { return E_NOTIMPL; }

  private:
    std::vector<Status> const all_;
    std::size_t at_ = 0;
};

}  // namespace velk::platform::storage
