/// A counted reference to an object.
#pragma once

#include <utility>

namespace velk::platform {

/// Holds one reference to an interface or to an object of this layer, or none.
template <typename T>
class Reference {
  public:
    Reference() = default;
    /// Adds a reference of its own.
    explicit Reference(T* object) : object_(object) {
        if (object_) object_->AddRef();
    }
    Reference(Reference const& other) : Reference(other.object_) {}
    Reference(Reference&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Reference& operator=(Reference const& other) { return *this = Reference(other); }
    /// What was held goes with `other`, so that its end may wait for a lock's.
    Reference& operator=(Reference&& other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Reference() {
        if (object_) object_->Release();
    }

    /// Takes over a reference that someone else added.
    static Reference adopt(T* object) {
        Reference reference;
        reference.object_ = object;
        return reference;
    }

    T* get() const noexcept { return object_; }
    T* operator->() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    /// Hands the reference to the caller.
    [[nodiscard]] T* release() noexcept { return std::exchange(object_, nullptr); }

    /// The place for an out-parameter, whose reference this then owns; what it
    /// held is let go of.
    T** out() {
        *this = Reference();
        return &object_;
    }
    /// The same for functions that give any interface.
    void** target() { return reinterpret_cast<void**>(out()); }

  private:
    T* object_ = nullptr;
};

}  // namespace velk::platform
