#pragma once

#include <atomic>
#include <memory>

namespace velk::core {

/// One run of a thread function, shared by the thread and its object.
struct ThreadRun {
    std::atomic<bool> active{true};
};

/// Ends a run at the latest moment for which another thread may wait while a
/// module is unloaded: on Linux when the thread's own values are gone, on
/// Windows, whose loader keeps them until the unloading is over, when the
/// thread function has returned. It must be the first object with a destructor
/// that the thread makes.
class ThreadRunEnd {
  public:
    explicit ThreadRunEnd(std::shared_ptr<ThreadRun> run) noexcept;
    ~ThreadRunEnd();
    ThreadRunEnd(ThreadRunEnd const&) = delete;
    ThreadRunEnd& operator=(ThreadRunEnd const&) = delete;

  private:
    std::shared_ptr<ThreadRun> run_;
};

}  // namespace velk::core
