#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>

/// Work that travels from one thread to another.
///
/// A host object is bound to the thread that made it. Another thread that calls
/// it posts the call to that thread's mailbox and waits. The owner takes calls
/// out while it serves: inside `mzComSleep`, and while it waits for a call of
/// its own, so that two threads that call each other do not block each other.
namespace velk::core {

/// Number of the calling thread: counts from 1, is never given out twice.
std::int64_t currentThreadNumber() noexcept;

/// A call that another thread is to run.
class RoutedCall {
  public:
    virtual ~RoutedCall() = default;

    /// Runs on the owning thread, at most once.
    virtual void run() noexcept = 0;
};

enum class RouteOutcome {
    done,          ///< the call ran to its end
    notServed,     ///< the owner did not take the call in time; it never runs
    stillRunning,  ///< the owner took the call and has not come back in time
    ownerEnded,    ///< the owner's thread is gone; the call never runs
};

/// Has `call` run on thread `owner` and waits for it within the process's limits
/// (`mzComSetCallLimits`).
/// Calls sent to the waiting thread are served meanwhile. The call
/// object is shared, because after a wait that was given up the owner may still
/// use it.
RouteOutcome runOnThread(std::int64_t owner, std::shared_ptr<RoutedCall> const& call);

/// Serves calls sent to the calling thread until the time is over or `ended`,
/// looked at whenever the thread is woken, is true.
/// @return how many calls were served
unsigned serveCalls(std::chrono::milliseconds duration, std::atomic<bool> const& ended);

}  // namespace velk::core
