#include "platform/system/live_counts.h"

#include <array>
#include <atomic>

#include "platform/system/thread_end.h"

namespace velk::platform {
namespace {

// Enough stripes that two busy threads rarely meet in one.
constexpr unsigned stripeCount = 32;

struct alignas(64) Stripe {
    std::array<std::atomic<LONGLONG>, VELK_LIVE_KINDS> counts{};
};

std::array<Stripe, stripeCount> stripes;
std::atomic<unsigned> nextStripe{0};

Stripe& stripeOfThisThread() noexcept {
    thread_local unsigned const own = [] {
        // Whoever allocates has met the layer, and its end concerns modules.
        watchThreadEnd();
        return nextStripe.fetch_add(1, std::memory_order_relaxed);
    }();
    return stripes[own % stripeCount];
}

}  // namespace

void countLive(VelkLiveKind kind, int change) noexcept {
    stripeOfThisThread().counts[kind].fetch_add(change, std::memory_order_relaxed);
}

}  // namespace velk::platform

LONGLONG VelkLiveCount(int kind) {
    if (kind < 0 || kind >= VELK_LIVE_KINDS) return 0;
    LONGLONG sum = 0;
    for (auto const& stripe : velk::platform::stripes) {
        sum += stripe.counts[static_cast<std::size_t>(kind)].load(std::memory_order_relaxed);
    }
    return sum;
}
