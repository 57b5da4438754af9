/// How host components reach what a wrapper holds.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include "host/unknown.h"
#include "host/variant.h"

/// The host wrapper over a native dispatch object.
class mzIComDispatchWrapper : public mzIUnknown {
  public:
    static mzIIDS const& interfaceId() {
        static mzIIDS const id("mzIComDispatchWrapper");
        return id;
    }

    /// The native object with a reference for the caller, valid in the caller's
    /// apartment. `mzFailure`, and `out` null, when there is none.
    virtual unsigned getDispatch(IDispatch** out) = 0;
    /// Holds `dispatch` (null for none) from now on. `forcedIid` names the dual
    /// interface that is asked, through its type information, for members that
    /// the object does not know; null keeps the one named before.
    virtual unsigned setDispatch(IDispatch* dispatch, IID const* forcedIid) = 0;
    virtual unsigned setDispatch(IDispatch* dispatch) = 0;

  protected:
    ~mzIComDispatchWrapper() = default;
};

/// The host wrapper over a native value. Every operation returns `mzSuccess`, or
/// `mzFailure`, with nothing done, while another thread is in the wrapper.
class mzIComVariantWrapper : public mzIUnknown {
  public:
    static mzIIDS const& interfaceId() {
        static mzIIDS const id("mzIComVariantWrapper");
        return id;
    }

    /// A copy of the value; `out` holds a value or VT_EMPTY before.
    virtual unsigned getVariant(VARIANT& out) = 0;
    /// Holds a copy of `value` from now on.
    virtual unsigned setVariant(VARIANT const& value) = 0;
    /// The type code.
    virtual unsigned getVartype(unsigned& type) = 0;
    /// The word of the script; bit 0 has the value passed by value.
    virtual unsigned getFlags(unsigned& flags) = 0;
    /// The value as a host value; empty when no host type can hold it.
    virtual unsigned toHostVariant(mzComVariantC& value) = 0;

  protected:
    ~mzIComVariantWrapper() = default;
};
