#pragma once

#include "host/com_ptr.h"
#include "host/com_string.h"
#include "host/export.h"

/// A failure as a host object: who failed, why, and what failed before it.
class mzIException : public mzIUnknown {
  public:
    static mzIIDS const& interfaceId() {
        static mzPermanentIidC const id("mzIException");
        return id.get();
    }

    /// The name of the failing component or member.
    virtual mzComStringC source() const = 0;
    /// The message for people.
    virtual mzComStringC description() const = 0;
    /// The failure that led to this one, empty when there is none.
    virtual mzComPtrT<mzIException> inner() const = 0;

  protected:
    ~mzIException() = default;
};

/// A new exception object; `inner` may be empty. Throws `std::bad_alloc`.
VELKCORE_API mzComPtrT<mzIException> mzComCreateException(mzComStringC const& source,
                                                          mzComStringC const& description,
                                                          mzComPtrT<mzIException> const& inner);

/// The text of an exception: its description, followed by those of its inner
/// exceptions from the outside in, with `fallback` between them. Empty texts
/// are left out; `fallback` alone when there is no exception or no text.
VELKCORE_API mzComStringC mzComExceptionErrorString(mzComPtrT<mzIException> exception,
                                                    mzComStringC fallback);
