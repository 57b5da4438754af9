/// Making facades over host objects.
#pragma once

#include "com/com_ptr.h"
#include "host/dispatch.h"
#include "interfaces.h"

namespace velk::adapter {

/// A new facade without a host object, with one reference for the caller.
/// E_POINTER for a null `out`, E_OUTOFMEMORY, or what its creation answers;
/// `out` is null after a failure. Locks the module while the facade lives.
HRESULT createFacade(Ivelkdspwrap** out) noexcept;

/// A new facade that is bound to `object`, of which it holds a reference.
/// With null it stays unbound and every call on it fails.
HRESULT createBoundFacade(mzIDispatch* object, com::ComPtr<Ivelkdspwrap>& out) noexcept;

}  // namespace velk::adapter
