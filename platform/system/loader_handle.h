/// References to shared objects, as the dynamic loader counts them.
#pragma once

#include <forward_list>
#include <memory>

#include <dlfcn.h>

namespace velk::platform {

struct CloseLoaderHandle {
    void operator()(void* handle) const noexcept { dlclose(handle); }
};

/// One reference. Giving up the last one runs the module's tear-down.
using LoaderHandle = std::unique_ptr<void, CloseLoaderHandle>;

/// References in a form in which they change hands without an allocation.
using LoaderHandles = std::forward_list<LoaderHandle>;

}  // namespace velk::platform
