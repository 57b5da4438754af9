#include "host/read_write_lock.h"

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
