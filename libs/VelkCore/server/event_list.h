#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "host/server_state_event.h"

/// The runtime's list of server-state events and the life of its servers.
///
/// No lock is held while an event's own code runs: modules enter their events
/// while the system's loader holds its lock, and an event may wait for it.
class mzServerEventListC {
  public:
    static mzServerEventListC& instance();

    /// Enters an event; started at once when the servers run.
    void enter(mzComServerStateEventC& event);
    /// Takes an event out, after waiting for a call on it by another thread.
    void leave(mzComServerStateEventC& event) noexcept;

    /// Starts the servers with the first of several calls; false when an event
    /// failed to start (the others run).
    bool init();
    /// Ends them with the last; false without an `init`, or when an event
    /// failed to end.
    bool done();
    /// Starts the servers unless they were started or ended before: for a
    /// program that creates objects without having said when.
    void startOnDemand();

  private:
    enum class State { never, starting, running, stopping, ended };
    enum class Step { start, stop };

    bool startAll();
    bool stopAll();
    mzComServerStateEventC* next(Step step) const;
    bool call(mzComServerStateEventC& event, Step step, std::unique_lock<std::mutex>& hold);

    // Serialises init and done; recursive because an event may create objects.
    std::recursive_mutex life_;
    unsigned inits_ = 0;

    std::mutex mutex_;  // guards what follows
    std::condition_variable callEnded_;
    State state_ = State::never;
    std::vector<mzComServerStateEventC*> events_;  // in the order of entering
    std::vector<mzComServerStateEventC*> failed_;  // not tried again until the next start
    std::vector<std::pair<mzComServerStateEventC*, std::thread::id>> inCall_;
};
