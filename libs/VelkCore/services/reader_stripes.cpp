#include "host/reader_stripes.h"

#include "services/thread_index.h"

namespace velk::core {

std::size_t threadIndex() noexcept {
    static constinit std::atomic<std::size_t> next{1};
    // 0 stands for "none yet": a thread-local without initialiser is cheaper.
    thread_local constinit std::size_t index = 0;
    if (index == 0) index = next.fetch_add(1, std::memory_order_relaxed);
    return index;
}

}  // namespace velk::core

std::size_t mzReaderStripesC::ownIndex() noexcept {
    return velk::core::threadIndex() % stripeCount;
}
