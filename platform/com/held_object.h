/// Counted references to foreign objects.
#pragma once

#include <utility>

#include <unknwn.h>

#include "platform/system/boundary.h"

namespace velk::platform::com {

/// Holds one reference, or none. Moves, does not copy.
template <typename Interface = IUnknown>
class HeldObject {
  public:
    HeldObject() = default;
    HeldObject(HeldObject&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    HeldObject& operator=(HeldObject&& other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~HeldObject() {
        if (object_ != nullptr) object_->Release();
    }

    Interface* get() const noexcept { return object_; }
    Interface* operator->() const noexcept { return object_; }

    /// The place for an out-parameter, whose reference this then owns. Only
    /// while it holds none.
    void** target() noexcept { return reinterpret_cast<void**>(&object_); }

    /// Hands the reference to the caller.
    [[nodiscard]] Interface* detach() noexcept { return std::exchange(object_, nullptr); }

  private:
    Interface* object_ = nullptr;
};

/// What foreign code answers that is asked for an object, whatever it does with
/// the place for it: success with an object, or a failure without one.
template <typename Question>
HRESULT askForObject(void** object, Question&& question) noexcept {
    *object = nullptr;
    HRESULT const result = guarded(question);
    if (FAILED(result)) *object = nullptr;
    return SUCCEEDED(result) && *object == nullptr ? E_NOINTERFACE : result;
}

}  // namespace velk::platform::com
