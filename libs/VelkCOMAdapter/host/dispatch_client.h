#pragma once

#include "host/dispatch.h"
#include "host/export.h"
#include "host/variant_array.h"

/// A value that refers to a dispatch object and calls it. Unbound, it fails
/// every call. Copies refer to the same object.
class VELKCORE_API mzIDispatchC {
  public:
    mzIDispatchC() = default;
    /// Unbound when the object is null or no `mzIDispatch`.
    mzIDispatchC(mzIUnknown* object) : dispatch_(mzComPtrC(object)) {}
    mzIDispatchC(mzComPtrC const& object) : dispatch_(object) {}

    bool isValid() const { return dispatch_.isValid(); }
    mzComPtrT<mzIDispatch> const& dispatch() const { return dispatch_; }

    /// As `mzIDispatch::invokeByName`; an exception object is dropped. A null
    /// name addresses the default member. `mzFailure` when unbound.
    unsigned invokeByName(char const* name, unsigned callKind, mzComVariantArrayC const& args,
                          mzComVariantC& result) const;
    /// Reads a property without arguments.
    unsigned getProperty(mzComStringC const& name, mzComVariantC& result) const;
    /// Calls a method and returns its value, empty when it failed.
    mzComVariantC call(mzComStringC const& name, mzComVariantArrayC const& args) const {
        return _invoke(name, args);
    }

  private:
    mzComVariantC _invoke(mzComStringC const& name, mzComVariantArrayC const& args) const;

    mzComPtrT<mzIDispatch> dispatch_;
};
