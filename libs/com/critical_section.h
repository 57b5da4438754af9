/// A lock that remembers whether it could be made.
#pragma once

#include <mutex>
#include <optional>

#include <windows.h>

namespace velk::com {

/// A lock that the same thread may enter again, made in a step of its own so
/// that the failure to make it can be answered.
class CriticalSection {
  public:
    CriticalSection() noexcept = default;
    CriticalSection(CriticalSection const&) = delete;
    CriticalSection& operator=(CriticalSection const&) = delete;

    /// Makes the lock. Gives the system's error as HRESULT when that fails;
    /// S_OK, and no second lock, when it exists already.
    HRESULT initialise() noexcept;
    bool initialised() const noexcept { return mutex_.has_value(); }

    /// Enter and leave. Without a lock they do nothing.
    void lock() {
        if (mutex_) mutex_->lock();
    }
    void unlock() noexcept {
        if (mutex_) mutex_->unlock();
    }

  private:
    std::optional<std::recursive_mutex> mutex_;
};

/// The lock of objects that only one thread uses.
class NoCriticalSection {
  public:
    HRESULT initialise() noexcept { return S_OK; }
    bool initialised() const noexcept { return true; }
    void lock() noexcept {}
    void unlock() noexcept {}
};

}  // namespace velk::com
