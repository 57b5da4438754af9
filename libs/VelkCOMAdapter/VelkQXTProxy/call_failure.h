#pragma once

#include "com/owners.h"
#include "host/com_string.h"

namespace velk::adapter {

/// The status of a call whose code threw: the system error "unhandled exception".
inline constexpr HRESULT threwException = 574;

/// What a native call left.
struct CallOutcome {
    HRESULT status = S_OK;
    com::Variant result;
    com::ExceptionInfo info;
    /// The index, in the order of the call, of the argument that it refused.
    UINT wrongArgument = 0;

    /// Becomes the outcome of a call whose code threw an exception.
    void takeException(mzComStringC const& member);
};

/// The text for the script about a status other than S_OK.
mzComStringC failureText(mzComStringC const& member, CallOutcome const& outcome);

}  // namespace velk::adapter
