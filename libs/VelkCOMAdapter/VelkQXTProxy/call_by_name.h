/// One call of a native object's member by a host caller.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include "com/com_ptr.h"
#include "host/dispatch.h"
#include "host/exception.h"
#include "host/variant_array.h"

namespace velk::adapter {

/// What is called: a member of `object`, or, when the object does not know the
/// name, of its dual interface `forcedIid` (all zero for none).
struct NativeCall {
    com::ComPtr<IDispatch> const& object;
    IID const forcedIid;
    mzComStringC const& name;
    unsigned const callKind;
};

/// Looks the member up, calls it with the arguments converted, writes what it
/// left in script variables back into them, and converts its result. Failures
/// become an exception, and the calling thread's last exception information.
/// Host result code, `mzSuccess` or `mzFailure`. Whatever host or native code
/// throws becomes a failure, but for what tells that memory has run out.
unsigned callByName(NativeCall const& call, mzComVariantArrayC const& args, mzComVariantC& result,
                    mzComPtrT<mzIException>& exception);

}  // namespace velk::adapter
