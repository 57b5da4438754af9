#pragma once

#include <atomic>
#include <cstdint>

#include "host/export.h"

/// Sleeps; 0 and less give the rest of the time slice away.
VELKCORE_API void mzSleep(int milliseconds);

/// A sleep during which the runtime serves the calls that other threads send
/// to objects of this thread. The second and third argument are without
/// effect. How many calls were served.
VELKCORE_API unsigned mzComSleep(unsigned milliseconds, int, int*);

/// The same, but over as soon as `ended` is true. Who sets it calls `mzComWake`
/// afterwards; without that it is seen when the time is over.
VELKCORE_API unsigned mzComSleepUntil(unsigned milliseconds, std::atomic<bool> const& ended);

/// What `mzComWake` knows the calling thread by; never 0, never given twice.
VELKCORE_API std::int64_t mzComThreadNumber();

/// Has a thread that is in `mzComSleepUntil` look at its condition. Nothing
/// for a thread that is gone, and for 0. Any thread.
VELKCORE_API void mzComWake(std::int64_t thread);
