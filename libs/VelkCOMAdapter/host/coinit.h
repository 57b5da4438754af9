#pragma once

#include "host/export.h"

/// Native COM on the calling thread.
class VELKCORE_API PCoInitializer {
  public:
    /// Enters COM with these flags (0 is the multithreaded apartment), once per
    /// thread. A thread that entered COM otherwise before stays as it is.
    static void attach(unsigned long coinitFlags);
    /// Undoes the entry of `attach` on this thread; nothing without one.
    static void detach();
};
