#include "host/read_write_lock.h"

#include <thread>

#include "services/thread_index.h"

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

std::size_t velk::core::threadIndex() noexcept {
    static constinit std::atomic<std::size_t> next{1};
    // 0 stands for "none yet": a thread-local without initialiser is cheaper.
    thread_local constinit std::size_t index = 0;
    if (index == 0) index = next.fetch_add(1, std::memory_order_relaxed);
    return index;
}

std::size_t mzReaderStripesC::ownIndex() noexcept {
    return velk::core::threadIndex() % stripeCount;
}

// A reader counts itself in its own stripe and then looks for a writer; a
// writer announces itself and then looks at every stripe. Both orders are
// sequentially consistent, so at least one of the two sees the other. The
// writer does not sleep on the number itself: without a system call for that,
// which Windows builds lack, the C++ library's wait can miss the last reader's
// wake-up.

void PReadWriteLock::lock(bool shared) {
    if (!shared) {
        writers_.lock();
        writerWants_.store(1);
        for (std::size_t i = 0; i < mzReaderStripesC::stripeCount; ++i) {
            std::atomic<int>& readers = readers_.at(i);
            if (readers.load() == 0) continue;
            std::unique_lock hold(leaving_);
            readerLeft_.wait(hold, [&readers] { return readers.load() == 0; });
        }
        return;
    }
    std::atomic<int>& readers = readers_.own();
    readers.fetch_add(1);
    if (writerWants_.load() == 0) return;
    unlock(true);
    // Queued behind the writer; nobody can want to write while we are in here.
    std::lock_guard const turn(writers_);
    readers.fetch_add(1);
}

void PReadWriteLock::unlock(bool shared) {
    if (!shared) {
        writerWants_.store(0);
        writers_.unlock();
        return;
    }
    readers_.own().fetch_sub(1);
    if (writerWants_.load() == 0) return;
    // The writer has either seen this reader leave or is asleep by now.
    std::lock_guard const hold(leaving_);
    readerLeft_.notify_all();
}

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
