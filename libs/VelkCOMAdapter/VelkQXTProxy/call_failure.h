/// How host scripts are told that something failed.
#pragma once

#include "com/owners.h"
#include "host/codes.h"
#include "host/com_string.h"
#include "host/exception.h"

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

/// The text for calls that go back and forth until the stack is nearly used up.
inline constexpr char const* nestedTooDeeply =
    "The calls between host and native objects are nested too deeply";

/// Stores an exception of the wrappers' source with `message`; returns
/// `mzFailure`. Throws std::bad_alloc.
unsigned raise(mzComStringC const& message, mzComPtrT<mzIException>& exception);

/// Turns the exception being handled into one of the wrappers' source with its
/// text. `mzFailure`; throws std::bad_alloc. Only inside a catch block.
unsigned raiseCurrentException(mzComPtrT<mzIException>& exception);

/// A number as the messages write it: in base 16, without "0x".
mzComStringC hexText(HRESULT code);

/// The text about foreign code that threw what has no text.
inline constexpr char const* unhandledException = "Unhandled exception";

/// The text about a code that has no text of its own.
mzComStringC unknownFailureText(HRESULT code);

}  // namespace velk::adapter
