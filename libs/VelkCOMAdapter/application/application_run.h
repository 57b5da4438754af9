#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include <windows.h>

namespace velk::adapter {

/// The present run of the host application, or the last one when none is
/// there. A run begins only when the one before has ended and its thread is
/// gone, so this one record never mixes two of them; its number tells a thread
/// that waits whether it still looks at the run that it means.
struct ApplicationRun {
    enum class State { starting, serving, ended };

    /// Guards the name and version of the application and what follows it.
    std::mutex mutex;
    /// Whatever a waiting thread may be waiting for.
    std::condition_variable changed;
    std::uint64_t number = 0;
    /// The last run that ended without ever having served.
    std::uint64_t lastFailed = 0;
    State state = State::ended;
    /// What mzComWake knows the application thread by, once it has begun.
    std::int64_t sleeper = 0;
    /// Set, under the mutex, when this run is asked to end.
    std::atomic<bool> stopAsked{false};
    /// The application thread, from when it has begun.
    std::atomic<DWORD> thread{0};
};

}  // namespace velk::adapter
