/// The process's environment, as far as it counts.
#pragma once

#include <cstdlib>

#include <sys/auxv.h>

namespace velk::platform {

/// Whether this program runs with more rights than the user who started it.
inline bool isPrivileged() noexcept {
    return getauxval(AT_SECURE) != 0;
}

/// A variable, or null when it is not set. A privileged program has none: they
/// are its caller's.
inline char const* environment(char const* name) noexcept {
    return secure_getenv(name);
}

}  // namespace velk::platform
