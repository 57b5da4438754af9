/// Late-bound calls of an interface through its description in a type library.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include "com/com_ptr.h"
#include "host/dispatch.h"

namespace velk::adapter {

/// Makes `made` a dispatch object that calls `instance` by `type`. The
/// failure of `CreateStdDispatch`; `instance` must be the interface that
/// `type` describes, and outlive `made`.
HRESULT makeTypedDispatch(com::ComPtr<IUnknown> const& instance, com::ComPtr<ITypeInfo> const& type,
                          com::ComPtr<IDispatch>& made);

/// A new host wrapper over a native object, which also keeps `keptAlive`
/// where that is given. Throws std::bad_alloc.
mzComPtrT<mzIDispatch> wrapNative(com::ComPtr<IDispatch> const& object,
                                  com::ComPtr<IUnknown> const& keptAlive = {});

}  // namespace velk::adapter
