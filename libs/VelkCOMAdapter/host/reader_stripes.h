#pragma once

#include <array>
#include <atomic>
#include <cstddef>

#include "host/export.h"

/// Counts of the threads that hold a lock shared, spread over several cache
/// lines, so that readers on different cores do not disturb each other.
/// A thread always uses the same stripe.
class VELKCORE_API mzReaderStripesC {
  public:
    static constexpr std::size_t stripeCount = 8;
    /// Bytes between two counters that share no cache line.
    static constexpr std::size_t stripeSpacing = 64;

    /// The calling thread's counter.
    std::atomic<int>& own() noexcept { return stripes_[ownIndex()].readers; }
    std::atomic<int>& at(std::size_t index) noexcept { return stripes_[index].readers; }

  private:
    static std::size_t ownIndex() noexcept;

    // Padding and not alignment: holders may come from any allocator.
    struct Stripe {
        std::atomic<int> readers{0};
        char padding[stripeSpacing - sizeof(std::atomic<int>)];
    };
    std::array<Stripe, stripeCount> stripes_;
};
