#pragma once

#include "host/export.h"

/// Sleeps; 0 and less give the rest of the time slice away.
VELKCORE_API void mzSleep(int milliseconds);

/// A sleep during which the runtime serves the calls that other threads send
/// to objects of this thread. The second and third argument are without
/// effect. How many calls were served.
VELKCORE_API unsigned mzComSleep(unsigned milliseconds, int, int*);
