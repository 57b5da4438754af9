#include "host/thread.h"

#include <atomic>
#include <mutex>
#include <system_error>
#include <thread>

namespace {

/// One run of a thread function, shared by the thread and its object.
struct Run {
    std::atomic<bool> active{true};
};

/// Ends the run when the thread's own values are gone: it must be the first
/// thread-local object that the thread makes, so that it is the last to go.
struct RunEnd {
    std::shared_ptr<Run> run;
    ~RunEnd() {
        if (run) run->active.store(false);
    }
};

void runThread(std::shared_ptr<Run> run, unsigned (*function)(void*), void* argument) {
    thread_local RunEnd end;
    end.run = std::move(run);
    function(argument);
}

}  // namespace

struct mzThreadBaseC::State {
    mutable std::mutex mutex;
    // The run started last, empty before the first.
    std::shared_ptr<Run> run;
    bool detached = false;
};

mzThreadBaseC::mzThreadBaseC() : state_(std::make_unique<State>()) {}

mzThreadBaseC::~mzThreadBaseC() = default;

bool mzThreadBaseC::isActive() const {
    std::lock_guard const guard(state_->mutex);
    return state_->run && state_->run->active.load();
}

mzThreadC::mzThreadC() = default;

mzThreadC::~mzThreadC() = default;

bool mzThreadC::start(unsigned (*function)(void*), void* argument) {
    if (!function) return false;
    std::lock_guard const guard(state_->mutex);
    if (state_->run && state_->run->active.load() && !state_->detached) return false;
    try {
        auto run = std::make_shared<Run>();
        std::thread(runThread, run, function, argument).detach();
        state_->run = std::move(run);
        state_->detached = false;
        return true;
    } catch (std::system_error const&) {
        return false;
    } catch (std::bad_alloc const&) {
        return false;
    }
}

void mzThreadC::detach() {
    std::lock_guard const guard(state_->mutex);
    state_->detached = true;
}
