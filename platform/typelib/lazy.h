/// A value that is made on first use.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

namespace velk::typelib {

/// Thread-safe, but for forget().
template <typename T>
class Lazy {
  public:
    /// The value, which the first caller makes; after a failure the next one does.
    template <typename Make>
    T const& get(Make&& make) const {
        State& state = *state_;
        if (!state.isMade.load(std::memory_order_acquire)) {
            std::lock_guard const guard(state.lock);
            if (!state.value) state.value.emplace(make());
            state.isMade.store(true, std::memory_order_release);
        }
        return *state.value;
    }
    /// The next caller of get makes the value anew. Not while others use it.
    void forget() { state_ = std::make_unique<State>(); }

  private:
    struct State {
        std::mutex lock;
        std::atomic<bool> isMade{false};
        std::optional<T> value;
    };
    std::unique_ptr<State> state_ = std::make_unique<State>();
};

}  // namespace velk::typelib
