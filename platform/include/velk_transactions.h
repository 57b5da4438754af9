/// The transaction that a thread works in.
#pragma once

#include "winreg.h"

/// From now on the calling thread works in this transaction (ktmw32.h), or in
/// none when it is null. A thread that starts has none. FALSE with GetLastError
/// for what is no transaction of this thread, or has ended.
EXTERN_C VELK_LAYER_EXPORT BOOL VelkSetThreadTransaction(HANDLE transaction);

/// The transaction that the calling thread works in, or null. Code that needs
/// several changes to be one makes a transaction only where there is none, and
/// so joins that of its caller.
EXTERN_C VELK_LAYER_EXPORT HANDLE VelkThreadTransaction();

/// Makes the machine's hive (HKEY_LOCAL_MACHINE) or the user's (HKEY_CURRENT_USER)
/// the transaction's own, as its first write there does: what is read from now on
/// nobody else changes until the transaction ends. ERROR_INVALID_HANDLE without a
/// transaction, ERROR_INVALID_PARAMETER for another key, and what a write fails
/// with: ERROR_ACCESS_DENIED when it is not permitted, ERROR_BUSY when others
/// keep the hive for too long.
EXTERN_C VELK_LAYER_EXPORT LSTATUS VelkTakeHive(HKEY hive);
