#include "event_list.h"

#include <algorithm>

#include "host/server.h"

#include "registries.h"
#include "services/immortal.h"

mzServerEventListC& mzServerEventListC::instance() {
    // Lives as long as the process: events leave while the static objects of
    // all modules are being torn down.
    static velk::core::Immortal<mzServerEventListC> list;
    return *list;
}

void mzServerEventListC::enter(mzComServerStateEventC& event) {
    std::unique_lock hold(mutex_);
    if (event.entered_) {
        return;
    }
    events_.push_back(&event);
    event.entered_ = true;
    if (state_ == State::running) {
        call(event, Step::start, hold);
    }
}

void mzServerEventListC::leave(mzComServerStateEventC& event) noexcept {
    std::unique_lock hold(mutex_);
    std::erase(events_, &event);
    std::erase(failed_, &event);
    callEnded_.wait(hold, [&] {
        return std::ranges::none_of(inCall_, [&](auto const& running) {
            return running.first == &event && running.second != std::this_thread::get_id();
        });
    });
}

bool mzServerEventListC::init() {
    std::lock_guard const alone(life_);
    return ++inits_ > 1 || startAll();
}

bool mzServerEventListC::done() {
    std::lock_guard const alone(life_);
    if (inits_ == 0) {
        return false;
    }
    return --inits_ > 0 || stopAll();
}

void mzServerEventListC::startOnDemand() {
    {
        std::lock_guard const hold(mutex_);
        if (state_ == State::running || state_ == State::ended) {
            return;
        }
    }
    std::lock_guard const alone(life_);
    if (state_ == State::never) {
        startAll();
    }
}

bool mzServerEventListC::startAll() {
    std::unique_lock hold(mutex_);
    if (state_ == State::running) {
        return true;
    }
    state_ = State::starting;
    failed_.clear();
    bool allStarted = true;
    // Asked again each time: what an event starts may enter further events.
    while (auto* const event = next(Step::start)) {
        allStarted = call(*event, Step::start, hold) && allStarted;
    }
    state_ = State::running;
    return allStarted;
}

bool mzServerEventListC::stopAll() {
    std::unique_lock hold(mutex_);
    state_ = State::stopping;
    bool allStopped = true;
    while (auto* const event = next(Step::stop)) {
        allStopped = call(*event, Step::stop, hold) && allStopped;
    }
    state_ = State::ended;
    hold.unlock();
    velk::core::forgetActiveObjects();
    return allStopped;
}

// The first event in ascending order value that is to be started, or the last
// one that is to be stopped; among equals the order of entering counts.
mzComServerStateEventC* mzServerEventListC::next(Step step) const {
    mzComServerStateEventC* found = nullptr;
    for (auto* const event : events_) {
        bool const isFailed = std::ranges::find(failed_, event) != failed_.end();
        if (event->started_ != (step == Step::stop) || isFailed) {
            continue;
        }
        bool const isBetter =
            found == nullptr ||
            (step == Step::start ? event->order_ < found->order_ : event->order_ >= found->order_);
        if (isBetter) {
            found = event;
        }
    }
    return found;
}

bool mzServerEventListC::call(mzComServerStateEventC& event, Step step,
                              std::unique_lock<std::mutex>& hold) {
    event.started_ = step == Step::start;
    inCall_.emplace_back(&event, std::this_thread::get_id());
    hold.unlock();
    unsigned code = mzFailure;
    try {
        code = step == Step::start ? event.serverInit() : event.serverDone();
    } catch (...) {
        // One module's failure does not keep the others from their turn.
    }
    hold.lock();
    std::erase(inCall_, std::pair(&event, std::this_thread::get_id()));
    callEnded_.notify_all();
    bool const stillEntered = std::ranges::find(events_, &event) != events_.end();
    if (code != mzSuccess && step == Step::start && stillEntered) {
        event.started_ = false;
        failed_.push_back(&event);
    }
    return code == mzSuccess;
}

mzComServerStateEventC::mzComServerStateEventC(int order) : order_(order) {}

mzComServerStateEventC::~mzComServerStateEventC() {
    if (entered_) {
        mzServerEventListC::instance().leave(*this);
    }
}

unsigned mzComServerStateEventC::serverInit() {
    return mzSuccess;
}

unsigned mzComServerStateEventC::serverDone() {
    return mzSuccess;
}

void mzComServerStateEventC::init() {
    mzServerEventListC::instance().enter(*this);
}

unsigned mzComServerInit() try {
    return mzServerEventListC::instance().init() ? mzSuccess : mzFailure;
} catch (...) {
    return mzFailure;
}

unsigned mzComServerDone() try {
    return mzServerEventListC::instance().done() ? mzSuccess : mzFailure;
} catch (...) {
    return mzFailure;
}
