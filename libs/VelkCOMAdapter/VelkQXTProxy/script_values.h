/// Arguments of script members as the native side takes them.
#pragma once

#include <optional>

#include "com/owners.h"
#include "host/dispatch.h"
#include "host/variant.h"

namespace velk::adapter {

/// A type code; nothing for what is no integer or no code of 16 bits.
std::optional<VARTYPE> typeCode(mzComVariantC const& argument);

/// The object that an argument, or the variable in it, holds; empty for none.
mzComPtrT<mzIDispatch> objectIn(mzComVariantC const& argument);

/// A text as a BSTR; nothing for what cannot be read as text.
std::optional<com::Bstr> textIn(mzComVariantC const& argument);

/// "Invalid parameter at position: " and the position, counted from 0.
mzComStringC invalidParameter(int position);

/// The native form of a host value.
class Converted {
  public:
    explicit Converted(mzComVariantC const& source);

    /// False when the host value has no native form; it is empty then.
    bool succeeded() const noexcept { return succeeded_; }
    /// Whether it has none because another thread is in the wrapper of the value.
    bool isInUse() const noexcept { return isInUse_; }
    VARIANT const& get() const noexcept { return value_.get(); }
    VARIANT* address() noexcept { return value_.address(); }
    /// Gives the value up.
    com::Variant take() noexcept { return std::move(value_); }
    /// Throws com::Error with the failure of the coercion.
    void coerce(VARTYPE type);

  private:
    com::Variant value_;
    bool succeeded_ = false;
    bool isInUse_ = false;
};

}  // namespace velk::adapter
