#include "host/read_write_spin_lock.h"

#include <thread>

namespace {

/// Waits until `done`, giving the processor away after a short while: the
/// thread that is waited for may have to run on this very core.
template <class Condition>
void spinUntil(Condition done) {
    constexpr int roundsBeforeYield = 64;
    for (int round = 0; !done(); ++round) {
        if (round >= roundsBeforeYield) std::this_thread::yield();
    }
}

}  // namespace

// The order of the steps is that of PReadWriteLock.

void PReadWriteSpinLock::lock(bool shared) {
    if (!shared) {
        spinUntil([this] {
            int free = 0;
            return writer_.compare_exchange_weak(free, 1);
        });
        for (std::size_t i = 0; i < mzReaderStripesC::stripeCount; ++i) {
            spinUntil([&readers = readers_.at(i)] { return readers.load() == 0; });
        }
        return;
    }
    std::atomic<int>& readers = readers_.own();
    for (;;) {
        readers.fetch_add(1);
        if (writer_.load() == 0) return;
        readers.fetch_sub(1);
        spinUntil([this] { return writer_.load() == 0; });
    }
}

void PReadWriteSpinLock::unlock(bool shared) {
    if (shared) {
        readers_.own().fetch_sub(1);
    } else {
        writer_.store(0);
    }
}
