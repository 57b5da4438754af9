#pragma once

#include "host/export.h"

/// Atomic compare-and-exchange: true when `*target` was `expected` and is now
/// `desired`. Sequentially consistent.
VELKCORE_API bool mzThreadSafeExchangeInt(int* target, int expected, int desired);
