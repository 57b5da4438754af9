/// Lack of memory on its way through the layer.
#pragma once

#include <new>

#include <windef.h>
#include <winerror.h>

namespace velk::platform {

/// The status of a registry function; throws where it tells of a lack of
/// memory, so that nobody takes that for an absence.
inline LSTATUS unlessOutOfMemory(LSTATUS status) {
    if (status == ERROR_NOT_ENOUGH_MEMORY) throw std::bad_alloc();
    return status;
}

}  // namespace velk::platform
