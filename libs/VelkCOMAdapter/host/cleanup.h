#pragma once

#include "host/export.h"

/// Registers `cleanup` for the global clean-up. It belongs to the module that
/// contains the function. Clean-ups run in descending order of priority, the
/// newest first among equals: what others build upon has a low priority and
/// goes last. Null is ignored. Any thread.
VELKCORE_API void mzRegisterGlobalCleanup(void (*cleanup)(), int priority);

/// Runs and forgets every clean-up registered by the module that contains
/// `address`, on the calling thread. A clean-up that throws does not keep the
/// others from running.
VELKCORE_API void mzRunGlobalCleanupFor(void* address);

/// Runs and forgets every clean-up of every module.
VELKCORE_API void mzRunGlobalCleanup();

/// Tells the runtime's log about a singleton: event 0 before it is created, 1
/// before it is destroyed, 2 after it is destroyed.
VELKCORE_API void baselog_singleton_changed(char const* typeName, void (*cleanup)(), int priority,
                                            int event);
