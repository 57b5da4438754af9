/// Late-bound calls of foreign objects.
#pragma once

#include "com/owners.h"

namespace velk::test::server {

/// Calls `method` of `object` with `count` arguments, last one first. What the
/// object answers comes back: its code, and its EXCEPINFO in `exception`,
/// filled in when it asks for that. E_POINTER for a null object.
HRESULT callLate(IDispatch* object, BSTR method, VARIANT* arguments, UINT count,
                 com::Variant& result, com::ExceptionInfo& exception);

}  // namespace velk::test::server
