/// The steps of a native call that is passed on to a host object.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include "host/exception.h"
#include "host/variant_array.h"

namespace velk::adapter {

/// The host's call kind for a member with a name, from the native call's
/// flags; 0 when the flags name no way to use a member.
unsigned callKindOfNamed(WORD flags) noexcept;

/// The host's call kind for the default member (DISPID 0).
unsigned callKindOfDefault(WORD flags) noexcept;

/// Converts the arguments into call order. Null means no arguments.
///
/// E_INVALIDARG for a count without an array, DISP_E_BADPARAMCOUNT for more
/// arguments than a member can be described with, DISP_E_TYPEMISMATCH when an
/// argument has no host form: a call fails rather than lose a value. Names of
/// arguments are not looked at.
HRESULT takeArguments(DISPPARAMS const* parameters, mzComVariantArrayC& arguments);

/// Answers a successful call. `result` may be null; a value without native
/// form leaves it empty.
HRESULT giveResult(mzComVariantC const& value, VARIANT* result);

/// Answers a failed call with the host's result code. `record` may be null.
HRESULT giveFailure(unsigned code, mzComPtrT<mzIException> const& failure, EXCEPINFO* record);

}  // namespace velk::adapter
