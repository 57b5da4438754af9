#include <windows.h>

#include <objbase.h>

#include <algorithm>
#include <system_error>

#include "thread_signal.h"

namespace velk::core {

struct ThreadSignal::State {
    State() : event(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {
        if (!event) {
            throw std::system_error(static_cast<int>(GetLastError()), std::system_category());
        }
    }
    ~State() { CloseHandle(event); }
    State(State const&) = delete;
    State& operator=(State const&) = delete;

    HANDLE event;
    // Waits of the thread that are under way, one within the other.
    int depth = 0;
};

namespace {

bool isSingleThreadedApartment() noexcept {
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    return CoGetApartmentType(&type, &qualifier) == S_OK &&
           (type == APTTYPE_STA || type == APTTYPE_MAINSTA);
}

DWORD millisecondsUntil(ThreadSignal::Time until) noexcept {
    auto const left =
        std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
    // A longer wait begins again.
    constexpr long long most = 60'000;
    return static_cast<DWORD>(std::clamp<long long>(left.count(), 0, most));
}

void waitFor(HANDLE event, DWORD milliseconds) noexcept {
    DWORD index = 0;
    if (isSingleThreadedApartment()) {
        CoWaitForMultipleHandles(0, milliseconds, 1, &event, &index);
    } else {
        WaitForSingleObject(event, milliseconds);
    }
}

}  // namespace

ThreadSignal::ThreadSignal() : state_(std::make_unique<State>()) {}

ThreadSignal::~ThreadSignal() = default;

void ThreadSignal::notify() noexcept {
    SetEvent(state_->event);
}

bool ThreadSignal::wait(std::unique_lock<std::mutex>& hold, Time until) {
    if (std::chrono::steady_clock::now() >= until) return false;
    hold.unlock();
    ++state_->depth;
    waitFor(state_->event, millisecondsUntil(until));
    // What woke this wait may have been meant for the one that it is within.
    if (--state_->depth > 0) SetEvent(state_->event);
    hold.lock();
    return true;
}

}  // namespace velk::core
