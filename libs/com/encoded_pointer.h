/// Pointers that lie in writable memory for the life of the process.
#pragma once

#include <cstdint>

namespace velk::com {

/// A pointer in a form that is of no use to code that overwrites or reads it
/// without knowing this process's secret. Null encodes as 0.
std::uintptr_t encodePointer(void* pointer) noexcept;
/// The pointer behind an encoded form of this process.
void* decodePointer(std::uintptr_t encoded) noexcept;

}  // namespace velk::com
