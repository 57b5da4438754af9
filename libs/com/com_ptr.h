/// A counted interface pointer.
#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

#include <objbase.h>

namespace velk::com {

/// Marks, where a raw pointer is taken, that its reference comes with it.
struct Adopt {};
inline constexpr Adopt adopt{};

/// Holds one reference to a native object, or none.
///
/// Copies add a reference, moves hand it on. Not thread-safe itself; the
/// object's own counting decides on which threads copies may end.
template <typename Interface>
class ComPtr {
  public:
    ComPtr() noexcept = default;
    ComPtr(std::nullptr_t) noexcept {}

    /// Shares `object` (may be null): adds a reference.
    explicit ComPtr(Interface* object) noexcept : object_(object) { addReference(); }

    /// Takes over the reference that came with `object` (may be null).
    ComPtr(Interface* object, Adopt) noexcept : object_(object) {}

    ComPtr(ComPtr const& other) noexcept : object_(other.object_) { addReference(); }
    ComPtr(ComPtr&& other) noexcept : object_(other.detach()) {}

    template <typename Derived,
              typename = std::enable_if_t<std::is_convertible_v<Derived*, Interface*>>>
    ComPtr(ComPtr<Derived> const& other) noexcept : ComPtr(static_cast<Interface*>(other.get())) {}
    template <typename Derived,
              typename = std::enable_if_t<std::is_convertible_v<Derived*, Interface*>>>
    ComPtr(ComPtr<Derived>&& other) noexcept : object_(other.detach()) {}

    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~ComPtr() { reset(); }

    Interface* get() const noexcept { return object_; }
    Interface* operator->() const noexcept { return object_; }
    Interface& operator*() const noexcept { return *object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    /// Gives up the reference held and empties the pointer.
    void reset() noexcept {
        Interface* const former = std::exchange(object_, nullptr);
        if (former == nullptr) return;
        try {
            former->Release();
        } catch (...) {
            // The reference is given up, whatever foreign code makes of it.
        }
    }

    /// Empties the pointer and gives the place for an out-parameter, whose
    /// reference it then owns.
    Interface** put() noexcept {
        reset();
        return &object_;
    }
    /// put() for out-parameters that are not typed.
    void** putVoid() noexcept { return reinterpret_cast<void**>(put()); }

    /// Hands the reference to the caller.
    [[nodiscard]] Interface* detach() noexcept { return std::exchange(object_, nullptr); }

    /// Adds a reference and hands it to the caller, as out-parameters want it.
    [[nodiscard]] Interface* copy() const noexcept {
        addReference();
        return object_;
    }

    /// Asks the object for another interface; empty when it has none, or when
    /// this pointer is empty. `code`, where given, receives the answer,
    /// E_UNEXPECTED where the object throws.
    template <typename Other>
    ComPtr<Other> query(REFIID id, HRESULT* code = nullptr) const noexcept {
        ComPtr<Other> result;
        HRESULT const answer = ask(id, result);
        if (code != nullptr) *code = answer;
        return result;
    }

  private:
    template <typename Other>
    HRESULT ask(REFIID id, ComPtr<Other>& result) const noexcept {
        if (object_ == nullptr) return E_POINTER;
        try {
            HRESULT const answer = object_->QueryInterface(id, result.putVoid());
            if (SUCCEEDED(answer)) return result ? answer : E_NOINTERFACE;
            // Whatever a failure leaves behind is no reference.
            static_cast<void>(result.detach());
            return answer;
        } catch (...) {
            static_cast<void>(result.detach());
            return E_UNEXPECTED;
        }
    }

    void addReference() const noexcept {
        if (object_ != nullptr) object_->AddRef();
    }

    Interface* object_ = nullptr;
};

template <typename Left, typename Right>
bool operator==(ComPtr<Left> const& left, ComPtr<Right> const& right) noexcept {
    return left.get() == right.get();
}
template <typename Interface>
bool operator==(ComPtr<Interface> const& pointer, std::nullptr_t) noexcept {
    return pointer.get() == nullptr;
}

}  // namespace velk::com
