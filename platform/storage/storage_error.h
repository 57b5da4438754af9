/// Failure inside structured storage, and its way out.
#pragma once

#include <new>

#include <winerror.h>

namespace velk::platform::storage {

/// Carries a published result code up to the published function.
struct StorageError {
    HRESULT code;
};

/// Ends the current operation with a published result code.
[[noreturn]] inline void fail(HRESULT code) {
    throw StorageError{code};
}

inline void failIf(bool condition, HRESULT code) {
    if (condition) fail(code);
}

/// Goes on only after success.
inline void succeed(HRESULT code) {
    failIf(FAILED(code), code);
}

/// Runs the body of a published function and translates what it throws.
template <typename Body>
HRESULT answer(Body body) noexcept {
    try {
        body();
        return S_OK;
    } catch (StorageError const& error) {
        return error.code;
    } catch (std::bad_alloc const&) {
        return STG_E_INSUFFICIENTMEMORY;
    } catch (...) {
        return STG_E_UNKNOWN;
    }
}

}  // namespace velk::platform::storage
