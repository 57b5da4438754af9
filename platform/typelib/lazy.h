/// A value that is made on first use.
#pragma once

#include <memory>
#include <mutex>
#include <optional>

namespace velk::typelib {

/// Thread-safe, but for forget().
template <typename T>
class Lazy {
  public:
    /// The value, which the first caller makes.
    template <typename Make>
    T const& get(Make&& make) const {
        std::call_once(state_->once, [&] { state_->value.emplace(make()); });
        return *state_->value;
    }
    /// The next caller of get makes the value anew. Not while others use it.
    void forget() { state_ = std::make_unique<State>(); }

  private:
    struct State {
        std::once_flag once;
        std::optional<T> value;
    };
    std::unique_ptr<State> state_ = std::make_unique<State>();
};

}  // namespace velk::typelib
