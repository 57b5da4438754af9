/// A value that is made on first use.
#pragma once

#include <atomic>
#include <mutex>
#include <optional>

namespace velk::typelib {

/// Thread-safe.
template <typename T>
class Lazy {
  public:
    /// The value, which the first caller makes; after a failure the next one does.
    template <typename Make>
    T const& get(Make&& make) const {
        if (!isMade_.load(std::memory_order_acquire)) {
            std::lock_guard const guard(lock_);
            if (!value_) value_.emplace(make());
            isMade_.store(true, std::memory_order_release);
        }
        return *value_;
    }

  private:
    mutable std::mutex lock_;
    mutable std::atomic<bool> isMade_{false};
    mutable std::optional<T> value_;
};

}  // namespace velk::typelib
