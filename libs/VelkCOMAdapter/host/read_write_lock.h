#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <mutex>

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

    /// The number of the calling thread's counter.
    static std::size_t ownIndex() noexcept;

  private:
    // Padding and not alignment: holders may come from any allocator.
    struct Stripe {
        std::atomic<int> readers{0};
        char padding[stripeSpacing - sizeof(std::atomic<int>)];
    };
    std::array<Stripe, stripeCount> stripes_;
};

/// Many readers or one writer; waiting threads sleep. A waiting writer keeps
/// new readers out, so a thread must not take the lock twice. The thread that
/// took the lock gives it back.
class VELKCORE_API PReadWriteLock {
  public:
    PReadWriteLock() = default;
    PReadWriteLock(PReadWriteLock const&) = delete;
    PReadWriteLock& operator=(PReadWriteLock const&) = delete;
    ~PReadWriteLock() = default;

    /// `shared` true takes the lock for reading, false for writing.
    void lock(bool shared);
    /// Takes the same flag as the `lock` that it undoes.
    void unlock(bool shared);

  private:
    mzReaderStripesC readers_;
    std::atomic<int> writerWants_{0};
    std::mutex writers_;
    std::mutex leaving_;
    std::condition_variable readerLeft_;
};

/// Many readers or one writer for sections of a few instructions; waiting
/// threads spin. A waiting writer keeps new readers out, so a thread must not
/// take the lock twice. The thread that took the lock gives it back.
class VELKCORE_API PReadWriteSpinLock {
  public:
    PReadWriteSpinLock() = default;
    PReadWriteSpinLock(PReadWriteSpinLock const&) = delete;
    PReadWriteSpinLock& operator=(PReadWriteSpinLock const&) = delete;
    ~PReadWriteSpinLock() = default;

    /// `shared` true takes the lock for reading, false for writing.
    void lock(bool shared);
    /// Takes the same flag as the `lock` that it undoes.
    void unlock(bool shared);

  private:
    mzReaderStripesC readers_;
    std::atomic<int> writer_{0};
};

/// Holds a read-write lock for a scope.
template <class Lock, bool shared>
class mzReadWriteHolderT {
  public:
    explicit mzReadWriteHolderT(Lock& lock) : lock_(lock) { lock_.lock(shared); }
    ~mzReadWriteHolderT() { lock_.unlock(shared); }
    mzReadWriteHolderT(mzReadWriteHolderT const&) = delete;
    mzReadWriteHolderT& operator=(mzReadWriteHolderT const&) = delete;

  private:
    Lock& lock_;
};

template <class Lock>
class mzSharedHolderT : public mzReadWriteHolderT<Lock, true> {
  public:
    explicit mzSharedHolderT(Lock& lock) : mzReadWriteHolderT<Lock, true>(lock) {}
};

template <class Lock>
class mzExclusiveHolderT : public mzReadWriteHolderT<Lock, false> {
  public:
    explicit mzExclusiveHolderT(Lock& lock) : mzReadWriteHolderT<Lock, false>(lock) {}
};
