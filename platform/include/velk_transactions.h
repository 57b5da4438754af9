/// The transaction that a thread works in.
#pragma once

#include "windef.h"

/// From now on the calling thread works in this transaction (ktmw32.h), or in
/// none when it is null. A thread that starts has none. FALSE with GetLastError
/// for what is no transaction of this thread, or has ended.
EXTERN_C VELK_LAYER_EXPORT BOOL VelkSetThreadTransaction(HANDLE transaction);

/// The transaction that the calling thread works in, or null. Code that needs
/// several changes to be one makes a transaction only where there is none, and
/// so joins that of its caller.
EXTERN_C VELK_LAYER_EXPORT HANDLE VelkThreadTransaction();
