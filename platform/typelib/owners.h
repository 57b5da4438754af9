/// Owners of native texts, values and interfaces.
#pragma once

#include <string_view>
#include <utility>

#include "oleauto.h"
#include "platform/typelib/boundary.h"

namespace velk::typelib {

/// One reference to an interface or to one of this family's objects.
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
    Reference& operator=(Reference other) noexcept {
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

    T* get() const { return object_; }
    T* operator->() const { return object_; }
    T& operator*() const { return *object_; }
    explicit operator bool() const { return object_ != nullptr; }
    T* release() { return std::exchange(object_, nullptr); }
    T** out() {
        *this = Reference();
        return &object_;
    }

  private:
    T* object_ = nullptr;
};

/// One BSTR.
class Bstr {
  public:
    Bstr() = default;
    explicit Bstr(std::u16string_view text)
        : text_(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {
        if (!text_) throw std::bad_alloc();
    }
    Bstr(Bstr&& other) noexcept : text_(std::exchange(other.text_, nullptr)) {}
    Bstr& operator=(Bstr other) noexcept {
        std::swap(text_, other.text_);
        return *this;
    }
    ~Bstr() { SysFreeString(text_); }

    BSTR get() const { return text_; }
    BSTR release() { return std::exchange(text_, nullptr); }
    BSTR* out() { return &text_; }
    std::u16string_view view() const { return {text_, SysStringLen(text_)}; }

  private:
    BSTR text_ = nullptr;
};

/// One VARIANT, cleared at the end.
class Value {
  public:
    Value() { VariantInit(&value_); }
    Value(Value const&) = delete;
    Value& operator=(Value const&) = delete;
    ~Value() { VariantClear(&value_); }

    VARIANT* get() { return &value_; }
    VARIANT* operator->() { return &value_; }

  private:
    VARIANT value_;
};

/// A text for an out-parameter that may be absent: null for an absent text.
inline Bstr optionalText(std::u16string_view text) {
    return text.data() ? Bstr(text) : Bstr();
}

}  // namespace velk::typelib
