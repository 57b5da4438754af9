/// The modules that hear of the ends of threads.
#pragma once

#include <winbase.h>
#include <windef.h>

#include "platform/system/loader_handle.h"

namespace velk::platform {

/// Adds a module by its entry point. Thread-safe.
void attachModule(DllEntryPoint entry);

/// Takes out the module that was attached last with this entry point, and
/// waits until no other thread is in its entry any more. Thread-safe.
void detachModule(DllEntryPoint entry) noexcept;

/// Tells every attached module that the calling thread ends, the last attached
/// first. Needs no memory. Thread-safe.
void tellThreadDetach() noexcept;

/// Gives up references to a module; while a thread is in the module's entry,
/// or the caller is in any module's, only once that has returned: no module
/// goes while its entry runs, and no entry waits for the dynamic loader.
/// Thread-safe.
void closeAfterEntries(HMODULE module, LoaderHandles handles) noexcept;

}  // namespace velk::platform
