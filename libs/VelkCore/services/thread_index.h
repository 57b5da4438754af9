#pragma once

#include <cstddef>

namespace velk::core {

/// A small number that the calling thread keeps for its life; threads started
/// one after the other get different ones.
std::size_t threadIndex() noexcept;

}  // namespace velk::core
