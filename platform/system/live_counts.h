/// How the families of the layer count what they hand out.
#pragma once

#include "velk_live_counts.h"

namespace velk::platform {

/// Adds `change` (1 for a birth, -1 for a death) to the count of a kind.
/// Thread-safe; threads on different cores do not share a cache line.
void countLive(VelkLiveKind kind, int change) noexcept;

}  // namespace velk::platform
