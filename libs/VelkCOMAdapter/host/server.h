#pragma once

#include "host/export.h"

/// Starts the runtime's servers: calls `serverInit` of every registered
/// server-state event. Counted: every call needs its `mzComServerDone`. Host
/// result code. Any thread, one at a time.
VELKCORE_API unsigned mzComServerInit();

/// Ends the servers with the last call: `serverDone` of every started event.
VELKCORE_API unsigned mzComServerDone();
