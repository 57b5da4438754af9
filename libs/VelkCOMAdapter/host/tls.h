#pragma once

#include "host/export.h"

/// Thread-local slots.

/// A new slot, from 1 up; 0 when there are none left. `destroy` (may be null)
/// is called with the slot's value, when that is not null, on each thread that
/// ends, and from `mzTlsFree` for the values of the threads that still run.
VELKCORE_API int mzTlsAlloc(void (*destroy)(void*));

/// Address of the calling thread's value of the slot, initially null; it stays
/// valid until the thread ends or the slot is freed. Null for a number that is no
/// slot, and on a thread whose values are gone already.
VELKCORE_API void** mzTlsGet(int slot);

/// Destroys the slot's values on every thread and gives the slot back. No other
/// thread may be using the slot; a destroy that is running is waited for.
VELKCORE_API void mzTlsFree(int slot);
