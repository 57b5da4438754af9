/// The module under measurement, as host code reaches it.
#pragma once

#include <ole2.h>

#include "com/owners.h"
#include "host/host.h"

/// A new facade over the host object, made by the module's exported function.
/// Loads the module that stands beside this program with the first call.
/// Throws std::runtime_error when the module or the function is missing.
velk::com::ComPtr<IDispatch> makeFacade(mzIDispatch* object);

/// What a native value becomes for host code, a wrapper in most cases: the
/// value takes the usual way in, as an argument of a host object's member.
mzComPtrT<mzIDispatch> wrapNative(VARIANT const& value);
mzComPtrT<mzIDispatch> wrapNative(velk::com::ComPtr<IDispatch> const& object);

/// The DISPID of a member on a facade. Throws std::runtime_error.
DISPID identifierOf(IDispatch* facade, OLECHAR const* member);

/// Throws std::runtime_error unless `code` is S_OK: a benchmark never measures
/// failures.
void requireSuccess(HRESULT code, char const* what);
