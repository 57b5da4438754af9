/// Late-bound calls of an interface through its description in a type library.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include "com/com_ptr.h"
#include "host/dispatch.h"

namespace velk::adapter {

/// Makes `made` a dispatch object that calls `instance` by `type`. It owns
/// both: whoever holds it, on either side of the bridge, holds the instance.
/// It has an identity of its own and answers for IUnknown and IDispatch alone.
/// The failure of `CreateStdDispatch`, or E_OUTOFMEMORY. `instance` must be the
/// interface that `type` describes.
HRESULT makeTypedDispatch(com::ComPtr<IUnknown> const& instance, com::ComPtr<ITypeInfo> const& type,
                          com::ComPtr<IDispatch>& made);

/// A new host wrapper over a native object. Throws std::bad_alloc.
mzComPtrT<mzIDispatch> wrapNative(com::ComPtr<IDispatch> const& object);

}  // namespace velk::adapter
