#pragma once

#include <chrono>
#include <memory>
#include <mutex>

namespace velk::core {

/// What one thread waits on until others have changed something that a mutex
/// guards. Where native objects belong to threads, the wait also serves the
/// native calls that are sent to the waiting thread's objects: a call that this
/// thread waits for may need them.
class ThreadSignal {
  public:
    using Time = std::chrono::steady_clock::time_point;

    /// Throws std::system_error.
    ThreadSignal();
    ~ThreadSignal();
    ThreadSignal(ThreadSignal const&) = delete;
    ThreadSignal& operator=(ThreadSignal const&) = delete;

    /// Has the waiting thread look again. Any thread, after the change.
    void notify() noexcept;

    /// Waits until `isMet`, which is asked under the mutex, but no longer than
    /// `until`. The mutex is free meanwhile. One thread only; it may wait again
    /// in a call that it serves.
    template <class Condition>
    void waitUntil(std::unique_lock<std::mutex>& hold, Time until, Condition isMet) {
        while (!isMet() && wait(hold, until)) {
        }
    }

  private:
    struct State;

    /// Returns when there was a notification, or without a reason; false when
    /// the time is over.
    bool wait(std::unique_lock<std::mutex>& hold, Time until);

    std::unique_ptr<State> state_;
};

}  // namespace velk::core
