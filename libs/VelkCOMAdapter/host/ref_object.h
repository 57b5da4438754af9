#pragma once

#include <atomic>

#include "host/diagnostics.h"
#include "host/memory.h"

/// The reference count of a host object, starting at 0, and its place among
/// the counted live objects. Any thread may count.
class mzComRefObjectC : public PMemManager {
  public:
    mzComRefObjectC(mzComRefObjectC const&) = delete;
    mzComRefObjectC& operator=(mzComRefObjectC const&) = delete;

  protected:
    mzComRefObjectC() = default;
    ~mzComRefObjectC() = default;

    /// The new count.
    unsigned incrementReferences() noexcept {
        return references_.fetch_add(1, std::memory_order_relaxed) + 1;
    }
    /// The new count. Who gets 0 destroys the object and sees everything that
    /// the other holders did to it.
    unsigned decrementReferences() noexcept {
        return references_.fetch_sub(1, std::memory_order_acq_rel) - 1;
    }
    unsigned referenceCount() const noexcept { return references_.load(std::memory_order_relaxed); }

  private:
    std::atomic<unsigned> references_{0};
    [[no_unique_address]] mzLiveCounterT<mzLiveKindE::hostObject> counter_;
};
