#include "host/thread.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <system_error>
#include <thread>

#include "host/exchange.h"
#include "host/sleep.h"
#include "services/thread_end.h"

namespace {

void runThread(std::shared_ptr<velk::core::ThreadRun> run, unsigned (*function)(void*),
               void* argument) {
    velk::core::ThreadRunEnd const end(std::move(run));
    function(argument);
}

}  // namespace

struct mzThreadBaseC::State {
    mutable std::mutex mutex;
    // The run started last, empty before the first.
    std::shared_ptr<velk::core::ThreadRun> run;
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
        auto run = std::make_shared<velk::core::ThreadRun>();
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

void mzSleep(int milliseconds) {
    if (milliseconds > 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    } else {
        std::this_thread::yield();
    }
}

bool mzThreadSafeExchangeInt(int* target, int expected, int desired) {
    return target && std::atomic_ref(*target).compare_exchange_strong(expected, desired);
}
