#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>

#include "host/export.h"
#include "host/reader_stripes.h"

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
