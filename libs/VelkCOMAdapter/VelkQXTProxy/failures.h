/// How the wrappers tell a host script that something failed.
#pragma once

#include <windows.h>

#include "host/codes.h"
#include "host/exception.h"

namespace velk::adapter {

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
