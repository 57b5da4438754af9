#pragma once

#include "host/export.h"

/// Calls on objects that belong to another thread are carried to that thread,
/// which takes them while it sleeps in `mzComSleep` or waits for a call of its
/// own. A caller waits within these limits and then fails with an exception.
struct mzCallLimitsS {
    /// Milliseconds for the owning thread to take the call.
    int untilTaken;
    /// Milliseconds for a call that was taken to come back.
    int untilDone;
};

/// Changes the limits of the whole process and returns those before; negative
/// values count as 0. At first 5,000 and 300,000. Any thread.
VELKCORE_API mzCallLimitsS mzComSetCallLimits(mzCallLimitsS limits);

/// A function that works off the calling thread's own events; `mzComSleep`
/// calls it on that thread between two waits. Null removes it.
VELKCORE_API void mzComSetThreadPump(void (*pump)());
