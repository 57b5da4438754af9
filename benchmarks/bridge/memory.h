/// Memory in use.
#pragma once

#include <cstddef>

/// Bytes that the program has allocated and not freed, as its allocator counts
/// them, its own overhead for each block included.
std::size_t allocatedBytes();

/// What one more name in the module's name table takes, in bytes.
double bytesPerName();
/// What one more facade takes, in bytes.
double bytesPerFacade();
