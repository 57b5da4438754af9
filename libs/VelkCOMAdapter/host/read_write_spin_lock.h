#pragma once

#include <atomic>

#include "host/export.h"
#include "host/reader_stripes.h"

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
