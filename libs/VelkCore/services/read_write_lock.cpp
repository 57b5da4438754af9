#include "host/read_write_lock.h"

// A reader counts itself in its own stripe and then looks for a writer; a
// writer announces itself and then looks at every stripe. Both orders are
// sequentially consistent, so at least one of the two sees the other.

void PReadWriteLock::lock(bool shared) {
    if (!shared) {
        writers_.lock();
        writerWants_.store(1);
        for (std::size_t i = 0; i < mzReaderStripesC::stripeCount; ++i) {
            std::atomic<int>& readers = readers_.at(i);
            while (int const inside = readers.load()) readers.wait(inside);
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
    std::atomic<int>& readers = readers_.own();
    readers.fetch_sub(1);
    if (writerWants_.load() != 0) readers.notify_all();
}
