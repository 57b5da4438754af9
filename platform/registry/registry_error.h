/// Failure inside the registry, and its way out.
#pragma once

#include <new>

#include <winerror.h>
#include <winreg.h>

namespace velk::platform::registry {

/// Carries a published error number up to the published function.
struct RegistryError {
    LSTATUS status;
};

/// Ends the current operation with a published error number.
[[noreturn]] inline void fail(LSTATUS status) {
    throw RegistryError{status};
}

inline void failIf(bool condition, LSTATUS status) {
    if (condition) fail(status);
}

/// Runs the body of a published function and translates what it throws.
template <typename Body>
LSTATUS answer(Body body) noexcept {
    try {
        body();
        return ERROR_SUCCESS;
    } catch (RegistryError const& error) {
        return error.status;
    } catch (std::bad_alloc const&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    } catch (...) {
        return ERROR_REGISTRY_IO_FAILED;
    }
}

}  // namespace velk::platform::registry
