#pragma once

#include <cstdint>

namespace velk::adapter {

/// The lowest address that the calling thread's stack may grow to; 0 when the
/// system does not tell.
std::uintptr_t lowestStackAddress() noexcept;

}  // namespace velk::adapter
