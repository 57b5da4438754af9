#pragma once

#include <utility>

#include "host/dispatch.h"
#include "host/export.h"
#include "host/variant.h"

/// Readers of one argument, by the type that the member takes. With `convert`
/// the value is converted (`mzComVariantC::getExt`), without it the value must
/// be of the type itself. False when it cannot be read; `value` is then unspecified.
VELKCORE_API bool proxyReadArgument(mzComVariantC const& source, bool convert, bool& value);
VELKCORE_API bool proxyReadArgument(mzComVariantC const& source, bool convert, int& value);
VELKCORE_API bool proxyReadArgument(mzComVariantC const& source, bool convert, double& value);
VELKCORE_API bool proxyReadArgument(mzComVariantC const& source, bool convert, mzComStringC& value);
/// Gives the argument as it is, a script variable included.
VELKCORE_API bool proxyReadArgument(mzComVariantC const& source, bool convert,
                                    mzComVariantC& value);
VELKCORE_API bool proxyReadArgument(mzComVariantC const& source, bool convert,
                                    mzComPtrT<mzIUnknown>& value);
VELKCORE_API bool proxyReadArgument(mzComVariantC const& source, bool convert,
                                    mzComPtrT<mzIDispatch>& value);
/// Raises the argument-conversion exception.
[[noreturn]] VELKCORE_API void proxyThrowUnreadable();

/// One argument, or the result, of a member call as its invoker sees it. It
/// refers to variants that the caller of the invoker owns.
class proxyAutoTypeCastC {
  public:
    /// An argument that is not there: every read fails.
    proxyAutoTypeCastC() = default;
    static proxyAutoTypeCastC argument(mzComVariantC const& source) {
        proxyAutoTypeCastC cast;
        cast.source_ = &source;
        return cast;
    }
    static proxyAutoTypeCastC result(mzComVariantC& target) {
        proxyAutoTypeCastC cast;
        cast.source_ = &target;
        cast.target_ = &target;
        return cast;
    }

    /// The value as a `T`. Raises the argument-conversion exception when it
    /// cannot be read so.
    template <class T>
    T get(bool convert) const {
        T value{};
        if (!source_ || !proxyReadArgument(*source_, convert, value)) proxyThrowUnreadable();
        return value;
    }

    /// Stores the member's value; an argument is not written.
    template <class T>
    void set(T value) {
        if (target_) target_->set(std::move(value));
    }

  private:
    mzComVariantC const* source_ = nullptr;
    mzComVariantC* target_ = nullptr;
};
