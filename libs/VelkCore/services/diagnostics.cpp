#include "host/diagnostics.h"

#include <array>
#include <atomic>

#include "host/read_write_lock.h"
#include "services/thread_index.h"

namespace {

constexpr int kindCount = 2;

// One block per group of threads: counting must not make cores share a line.
struct alignas(mzReaderStripesC::stripeSpacing) Block {
    std::array<std::atomic<long long>, kindCount> counts{};
};

constinit std::array<Block, mzReaderStripesC::stripeCount> blocks{};

}  // namespace

void mzLiveCountAdd(mzLiveKindE kind, int change) noexcept {
    auto& block = blocks[velk::core::threadIndex() % blocks.size()];
    block.counts[static_cast<int>(kind)].fetch_add(change, std::memory_order_relaxed);
}

long long mzLiveCount(mzLiveKindE kind) noexcept {
    long long sum = 0;
    for (auto const& block : blocks) sum += block.counts[static_cast<int>(kind)].load();
    return sum;
}

long long mzLiveCountTotal() noexcept {
    long long sum = 0;
    for (int kind = 0; kind < kindCount; ++kind) sum += mzLiveCount(static_cast<mzLiveKindE>(kind));
    return sum;
}
