/// Owners of native texts, values and interfaces, and the words of the layer for
/// failures.
#pragma once

#include <string_view>
#include <utility>

#include "oleauto.h"
#include "platform/system/boundary.h"
#include "platform/system/reference.h"

namespace velk::typelib {

using platform::check;
using platform::fail;
using platform::guarded;
using platform::Reference;
using platform::require;

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
