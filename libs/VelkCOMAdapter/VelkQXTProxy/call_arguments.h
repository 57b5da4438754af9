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
    /// What a reference to a decimal refers to. A decimal in a VARIANT shares
    /// its first word with the type: a callee that stores a whole one would
    /// overwrite that.
    struct ReferredDecimal {
        DECIMAL value{};
        bool inUse = false;
    };

    static constexpr int usualCount = 6;

    bool convertOne(mzComVariantC const& argument, bool byValue, int index);
    void pass(int index, bool byValue, unsigned typedByRef, unsigned wrapperFlags);
    void passTyped(int index);
    void passAsVariant(int index);
    DECIMAL* referredDecimal(int index);
    void takeReferredDecimal(int index);

    int const count_;
    // Both lists, one after the other, where there are more than usual.
    std::unique_ptr<VARIANT[]> large_;
    std::array<VARIANT, std::size_t{2} * usualCount> usual_;
    VARIANT* converted_ = nullptr;
    VARIANT* passed_ = nullptr;
    // By the index of the argument; made with the first one.
    std::unique_ptr<ReferredDecimal[]> decimals_;
    DISPID valueOfPut_ = DISPID_PROPERTYPUT;
};

}  // namespace velk::adapter
