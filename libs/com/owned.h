/// The one owner that the owners of native values are made of.
#pragma once

#include <utility>

namespace velk::com {

/// Owns a value of type `Value` and gives it back with `close` when it ends.
///
/// A value-initialised `Value` is the empty one, and `close` must accept it.
/// The owner moves and does not copy. Not thread-safe, as a plain value is not.
template <typename Value, void (*close)(Value&) noexcept>
class Owned {
  public:
    Owned() noexcept = default;

    /// Takes over `value`: from now on this owner closes it.
    explicit Owned(Value value) noexcept : value_(value) {}

    Owned(Owned&& other) noexcept : value_(other.release()) {}
    Owned& operator=(Owned&& other) noexcept {
        if (this != &other) reset(other.release());
        return *this;
    }
    Owned(Owned const&) = delete;
    Owned& operator=(Owned const&) = delete;
    ~Owned() { close(value_); }

    Value const& get() const noexcept { return value_; }

    /// The value itself, for functions that change it in place.
    Value* address() noexcept { return &value_; }
    Value const* address() const noexcept { return &value_; }

    /// Closes what is held and gives the place for an out-parameter to fill.
    Value* put() noexcept {
        reset();
        return &value_;
    }

    /// Gives the value up: the caller closes it.
    [[nodiscard]] Value release() noexcept { return std::exchange(value_, Value{}); }

    /// Closes what is held and takes over `value` instead.
    void reset(Value value = Value{}) noexcept {
        Value former = std::exchange(value_, value);
        close(former);
    }

  private:
    Value value_{};
};

}  // namespace velk::com
