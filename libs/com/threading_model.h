/// How an object counts its references and locks itself.
#pragma once

#include <atomic>

#include "com/critical_section.h"

namespace velk::com {

/// For objects that one thread at a time uses: plain counting, no lock.
struct CComSingleThreadModel {
    using Counter = ULONG;
    using Section = NoCriticalSection;
    static ULONG increment(Counter& counter) noexcept { return ++counter; }
    static ULONG decrement(Counter& counter) noexcept { return --counter; }
};

/// For objects that any thread uses: atomic counting, a lock of its own.
struct CComMultiThreadModel {
    using Counter = std::atomic<ULONG>;
    using Section = CriticalSection;
    static ULONG increment(Counter& counter) noexcept {
        return counter.fetch_add(1, std::memory_order_relaxed) + 1;
    }
    // Whoever takes the last reference must see what the others did before
    // they gave theirs up.
    static ULONG decrement(Counter& counter) noexcept {
        return counter.fetch_sub(1, std::memory_order_acq_rel) - 1;
    }
};

/// For objects that any thread uses and that bring what locks they need:
/// atomic counting only.
struct CComMultiThreadModelNoCS {
    using Counter = CComMultiThreadModel::Counter;
    using Section = NoCriticalSection;
    static ULONG increment(Counter& counter) noexcept {
        return CComMultiThreadModel::increment(counter);
    }
    static ULONG decrement(Counter& counter) noexcept {
        return CComMultiThreadModel::decrement(counter);
    }
};

}  // namespace velk::com
