#pragma once

#include "host/com_ptr.h"

class mzComStringC;
class mzComVariantArrayC;
class mzComVariantC;
class mzIException;

/// A host object whose members are called by name.
class mzIDispatch : public mzIUnknown {
  public:
    static mzIIDS const& interfaceId() {
        static mzPermanentIidC const id("mzIDispatch");
        return id.get();
    }

    /// Calls the member `name`; an empty name addresses the default member.
    ///
    /// \param callKind   bit set of `mzCallMethod`, `mzCallPropertyGet`, `mzCallPropertyPut`
    /// \param args       the arguments in call order; a put has its value last
    /// \param result     receives the member's value, stays empty without one
    /// \param exception  may receive an exception object on failure
    /// \return `mzSuccess`, `mzMemberNotFound`, or another code for a failure
    virtual unsigned invokeByName(mzComStringC const& name, unsigned callKind,
                                  mzComVariantArrayC const& args, mzComVariantC& result,
                                  mzComPtrT<mzIException>& exception) = 0;

  protected:
    ~mzIDispatch() = default;
};
