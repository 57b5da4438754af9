/// What happens when a thread ends.
#pragma once

#include <atomic>
#include <memory>
#include <utility>
#include <vector>

namespace velk::core {

/// Has `action(value)` called when the calling thread ends, after what was
/// asked for later and before what was asked for earlier. May be called again
/// from an action. Actions run when objects with thread storage may be gone:
/// they keep to `value`. Throws std::bad_alloc.
///
/// Instead of such objects with destructors, because the compiler for Windows
/// gives their storage back before it destroys them.
void atThreadEnd(void (*action)(void*), void* value);

/// A mark of the calling thread, clear at first, that can be read and set until
/// the loader has told every module of the thread's end.
bool threadMark() noexcept;
void setThreadMark(bool set) noexcept;

/// What a thread has to do at its end; the destructor does it.
class ThreadEndActions {
  public:
    ThreadEndActions() = default;
    ThreadEndActions(ThreadEndActions const&) = delete;
    ThreadEndActions& operator=(ThreadEndActions const&) = delete;
    ~ThreadEndActions() {
        while (!actions_.empty()) {
            auto const [action, value] = actions_.back();
            actions_.pop_back();
            action(value);
        }
    }

    void add(void (*action)(void*), void* value) { actions_.emplace_back(action, value); }

  private:
    std::vector<std::pair<void (*)(void*), void*>> actions_;
};

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
