/// A lock for the few instructions that hardly ever meet another thread.
#pragma once

#include <atomic>
#include <thread>

namespace velk::platform::com {

/// Mutual exclusion that waits by trying again. Entering it costs one atomic
/// operation and leaving it a plain store.
class SpinLock {
  public:
    void lock() noexcept {
        while (taken_.exchange(true, std::memory_order_acquire)) wait();
    }
    void unlock() noexcept { taken_.store(false, std::memory_order_release); }

  private:
    void wait() const noexcept {
        // The thread that is waited for may have to run on this very core.
        constexpr int roundsBeforeYield = 64;
        for (int round = 0; taken_.load(std::memory_order_relaxed); ++round) {
            if (round >= roundsBeforeYield) std::this_thread::yield();
        }
    }

    std::atomic<bool> taken_{false};
};

}  // namespace velk::platform::com
