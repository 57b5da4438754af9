/// Failure inside the layer, and its way out through a published function.
#pragma once

#include <new>
#include <type_traits>

#include <winerror.h>

namespace velk::platform {

/// Carries a published result code, or an error number of the registry, up to
/// the published function.
struct Failure {
    LONG code;
};

[[noreturn]] inline void fail(LONG code) {
    throw Failure{code};
}

/// Goes on only when `condition` holds.
inline void require(bool condition, LONG code) {
    if (!condition) fail(code);
}

/// Goes on only after success.
inline void check(HRESULT result) {
    require(SUCCEEDED(result), result);
}

/// Runs the body of a published function, which gives its code or nothing for
/// success (0), and turns what it throws into a code: a family says which it
/// has for memory that runs out and for what nobody foresaw.
template <LONG outOfMemory = E_OUTOFMEMORY, LONG unforeseen = E_UNEXPECTED, typename Body>
LONG guarded(Body&& body) noexcept {
    try {
        if constexpr (std::is_void_v<std::invoke_result_t<Body&>>) {
            body();
            return 0;
        } else {
            return body();
        }
    } catch (Failure const& failure) {
        return failure.code;
    } catch (std::bad_alloc const&) {
        return outOfMemory;
    } catch (...) {
        return unforeseen;
    }
}

}  // namespace velk::platform
