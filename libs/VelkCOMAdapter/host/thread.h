#pragma once

#include <memory>

#include "host/export.h"

/// What can be asked of a thread.
class VELKCORE_API mzThreadBaseC {
  public:
    mzThreadBaseC(mzThreadBaseC const&) = delete;
    mzThreadBaseC& operator=(mzThreadBaseC const&) = delete;

    /// True from a successful `start` until the thread function has returned,
    /// detached or not; where the system lets another thread wait for that
    /// while it unloads a module, until the thread's own values are gone too.
    /// Any thread.
    bool isActive() const;

  protected:
    struct State;

    mzThreadBaseC();
    ~mzThreadBaseC();

    std::unique_ptr<State> state_;
};

/// A thread that runs one function. The object may go before the thread does;
/// nothing ever waits for the thread.
class VELKCORE_API mzThreadC : public mzThreadBaseC {
  public:
    mzThreadC();
    ~mzThreadC();

    /// Runs `function(argument)` on a new thread. False when a thread that was
    /// not detached is still active, `function` is null, or the system has no
    /// thread to give.
    bool start(unsigned (*function)(void*), void* argument);
    /// Lets the running thread go: `start` may be called again at once. Any
    /// thread, the running one included.
    void detach();
};
