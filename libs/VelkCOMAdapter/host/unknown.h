#pragma once

#include "host/iids.h"

class mzComPtrC;

/// The base of every host interface. An object lives by reference counting and
/// is held through `mzComPtrC` or `mzComPtrT`.
class mzIUnknown {
  public:
    static mzIIDS const& interfaceId() {
        static mzPermanentIidC const id("mzIUnknown");
        return id.get();
    }

    /// Asks for another interface of the object. On success `out` holds a new
    /// reference, and its raw pointer is that of the interface asked for, seen
    /// as its `mzIUnknown` part; otherwise `out` is empty. Host result code.
    virtual unsigned queryInterface(mzIIDS const& iid, mzComPtrC& out) = 0;
    /// Takes a reference; the new count.
    virtual unsigned addRef() = 0;
    /// Gives a reference up; the new count. The object destroys itself at 0.
    virtual unsigned release() = 0;

  protected:
    ~mzIUnknown() = default;
};
