/// Failure inside the layer, and its way out through a published function.
#pragma once

#include <new>
#include <type_traits>

#include <winbase.h>

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

/// As guarded, for functions that tell of a failure by their result and leave
/// the code to GetLastError.
template <typename Result, typename Body>
Result orLastError(Result failure, Body&& body) noexcept {
    Result result = failure;
    LONG const code = guarded<ERROR_NOT_ENOUGH_MEMORY, ERROR_NOT_ENOUGH_MEMORY>([&] {
        result = body();
        return LONG{ERROR_SUCCESS};
    });
    if (code != ERROR_SUCCESS) SetLastError(static_cast<DWORD>(code));
    return result;
}

/// The status of a registry function; throws where it tells of a lack of
/// memory, so that nobody takes that for an absence.
inline LONG unlessOutOfMemory(LONG status) {
    if (status == ERROR_NOT_ENOUGH_MEMORY) throw std::bad_alloc();
    return status;
}

}  // namespace velk::platform
