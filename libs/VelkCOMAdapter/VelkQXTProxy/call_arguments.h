#pragma once

#include <array>
#include <memory>

#include <windows.h>

#include <oleauto.h>

#include "host/variant_array.h"

namespace velk::adapter {

/// The arguments of one native call: the converted values, which it owns, and
/// the list in reverse order that the call takes, which refers to them.
class CallArguments {
  public:
    /// Throws std::bad_alloc.
    explicit CallArguments(int count);
    ~CallArguments();
    CallArguments(CallArguments const&) = delete;
    CallArguments& operator=(CallArguments const&) = delete;

    /// Converts the host arguments. Script variables go by reference, unless
    /// the last one is the value of a put. False when one has no native form.
    bool convert(mzComVariantArrayC const& args, bool isPut);

    /// What the call takes; valid while this object lives.
    DISPPARAMS parameters(bool isPut) noexcept;

    /// Writes what the call left in the values back into the script variables
    /// among `args`. Throws what the variables throw.
    void copyBack(mzComVariantArrayC const& args);

  private:
    static constexpr int usualCount = 6;

    void pass(int index, bool byValue, unsigned typedByRef, unsigned wrapperFlags);

    int const count_;
    // Both lists, one after the other, where there are more than usual.
    std::unique_ptr<VARIANT[]> large_;
    std::array<VARIANT, std::size_t{2} * usualCount> usual_;
    VARIANT* converted_ = nullptr;
    VARIANT* passed_ = nullptr;
    DISPID valueOfPut_ = DISPID_PROPERTYPUT;
};

}  // namespace velk::adapter
