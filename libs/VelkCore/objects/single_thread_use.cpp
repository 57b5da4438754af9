#include "host/single_thread_use.h"

#include "services/thread_index.h"

mzSingleThreadUseC::Use::Entry mzSingleThreadUseC::enter() noexcept {
    std::size_t const self = velk::core::threadIndex();
    std::size_t user = user_.load(std::memory_order_relaxed);
    if (user == self) return Use::Entry::again;
    // What the thread before left is seen by the one that comes.
    bool const entered =
        user == 0 && user_.compare_exchange_strong(user, self, std::memory_order_acquire,
                                                   std::memory_order_relaxed);
    return entered ? Use::Entry::first : Use::Entry::refused;
}
