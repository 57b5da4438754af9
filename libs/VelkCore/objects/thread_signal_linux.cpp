#include <condition_variable>

#include "thread_signal.h"

namespace velk::core {

struct ThreadSignal::State {
    std::condition_variable changed;
};

ThreadSignal::ThreadSignal() : state_(std::make_unique<State>()) {}

ThreadSignal::~ThreadSignal() = default;

void ThreadSignal::notify() noexcept {
    state_->changed.notify_all();
}

bool ThreadSignal::wait(std::unique_lock<std::mutex>& hold, Time until) {
    return state_->changed.wait_until(hold, until) == std::cv_status::no_timeout;
}

}  // namespace velk::core
