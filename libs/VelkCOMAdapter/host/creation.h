#pragma once

#include "host/com_ptr.h"
#include "host/export.h"

/// Creating and finding host objects. Every function returns a host result
/// code and leaves `out` empty when it fails; null names fail. Any thread.

/// A new object registered under the ProgID, as the interface `iid`.
VELKCORE_API unsigned mzComCreateObject(char const* progId, mzIIDS const& iid, mzComPtrC& out);

/// A running object registered under the ProgID, as the interface `iid`.
/// `mode` and `reserved` are without effect.
VELKCORE_API unsigned mzComGetActiveObject(char const* progId, mzIIDS const& iid, int mode,
                                           mzComPtrC& out, int reserved);

/// A new object from the class factories of the loaded modules, aggregated by
/// `outer` when that is not null.
VELKCORE_API unsigned mzComCreateInstance(char const* id, mzIUnknown* outer,
                                          mzComPtrT<mzIUnknown>& out);

/// Makes a running object known under a ProgID; it is held until `cookie`
/// (never 0) is revoked. The newest one of a ProgID is found first.
VELKCORE_API unsigned mzComRegisterActiveObject(char const* progId, mzIUnknown* object,
                                                unsigned& cookie);
/// `mzFailure` when the cookie is unknown.
VELKCORE_API unsigned mzComRevokeActiveObject(unsigned cookie);
