#pragma once

#include "host/export.h"

/// What the runtime counts while it lives, so that a test can prove that
/// nothing leaks.
enum class mzLiveKindE : int {
    /// Everything derived from `mzComRefObjectC`, which counts it: script
    /// objects, components, exceptions, script variables.
    hostObject,
    /// Strings owned by a `mzBstrHolderC`.
    bstrHolder
};

/// Counts the birth (+1) or death (-1) of one object. Any thread; cheap.
VELKCORE_API void mzLiveCountAdd(mzLiveKindE kind, int change) noexcept;
/// How many live now. Exact when no other thread is making or freeing any.
VELKCORE_API long long mzLiveCount(mzLiveKindE kind) noexcept;
/// The sum over every kind.
VELKCORE_API long long mzLiveCountTotal() noexcept;

/// Counts one object of a kind as a member or base of it.
template <mzLiveKindE kind>
class mzLiveCounterT {
  public:
    mzLiveCounterT() noexcept { mzLiveCountAdd(kind, 1); }
    mzLiveCounterT(mzLiveCounterT const&) noexcept : mzLiveCounterT() {}
    mzLiveCounterT& operator=(mzLiveCounterT const&) noexcept { return *this; }
    ~mzLiveCounterT() { mzLiveCountAdd(kind, -1); }
};
