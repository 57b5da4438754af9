#include "thread_mailbox.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

#include "host/call_routing.h"
#include "host/sleep.h"
#include "services/immortal.h"
#include "services/thread_end.h"
#include "thread_signal.h"

namespace velk::core {

namespace {

using Clock = std::chrono::steady_clock;

// A thread with an event loop looks at its events this often while it sleeps.
constexpr std::chrono::milliseconds pumpInterval{20};

struct Mailbox;

// A posted call. Its state moves waiting -> running -> done, or from waiting to
// one of the two ends in which it never runs; whoever makes the exchange
// decides, so a call that is given up can never start afterwards.
struct PostedCall {
    enum State { waiting, running, done, givenUp, refused };

    std::shared_ptr<RoutedCall> call;
    std::shared_ptr<Mailbox> caller;
    std::atomic<State> state{waiting};
    Clock::time_point const postedAt = Clock::now();
    Clock::time_point takenAt;  // set before the state is `running`

    bool move(State from, State to) noexcept { return state.compare_exchange_strong(from, to); }
    bool ended() const noexcept { return state == done || state == refused; }
};

struct Mailbox {
    std::mutex mutex;
    ThreadSignal changed;
    std::deque<std::shared_ptr<PostedCall>> calls;
    bool closed = false;

    // Taking the mutex orders the wake-up after the waiter's look at the state.
    void wake() noexcept {
        { std::lock_guard const hold(mutex); }
        changed.notify();
    }

    bool post(std::shared_ptr<PostedCall> const& posted) {
        {
            std::lock_guard const hold(mutex);
            if (closed) {
                return false;
            }
            calls.push_back(posted);
        }
        changed.notify();
        return true;
    }

    // Takes back a call that the owner has not taken, so that what it refers to
    // does not stay alive until the owner serves again.
    void withdraw(std::shared_ptr<PostedCall> const& posted) noexcept {
        std::lock_guard const hold(mutex);
        auto const place = std::find(calls.begin(), calls.end(), posted);
        if (place != calls.end()) {
            calls.erase(place);
        }
    }
};

// All mailboxes by thread number. Lives as long as the process: threads may end
// after the static objects of this library are gone.
class Directory {
  public:
    static Directory& instance() {
        static Immortal<Directory> directory;
        return *directory;
    }

    void open(std::int64_t thread) {
        auto box = std::make_shared<Mailbox>();
        std::unique_lock const hold(mutex_);
        boxes_.emplace(thread, std::move(box));
    }

    std::shared_ptr<Mailbox> find(std::int64_t thread) const {
        std::shared_lock const hold(mutex_);
        auto const place = boxes_.find(thread);
        return place == boxes_.end() ? nullptr : place->second;
    }

    void close(std::int64_t thread) noexcept {
        std::shared_ptr<Mailbox> box;
        {
            std::unique_lock const hold(mutex_);
            auto const place = boxes_.find(thread);
            if (place == boxes_.end()) {
                return;
            }
            box = std::move(place->second);
            boxes_.erase(place);
        }
        std::deque<std::shared_ptr<PostedCall>> left;
        {
            std::lock_guard const hold(box->mutex);
            box->closed = true;
            left.swap(box->calls);
        }
        for (auto const& posted : left) {
            if (posted->move(PostedCall::waiting, PostedCall::refused)) {
                posted->caller->wake();
            }
        }
    }

  private:
    mutable std::shared_mutex mutex_;
    std::unordered_map<std::int64_t, std::shared_ptr<Mailbox>> boxes_;
};

// Trivial, so that it can be read on every call at the cost of one load and
// stays readable while the thread's other locals are being destroyed.
thread_local std::int64_t threadNumber = 0;
thread_local void (*threadPump)() = nullptr;

void closeMailbox(void* thread) {
    Directory::instance().close(reinterpret_cast<std::intptr_t>(thread));
}

std::int64_t numberThisThread() noexcept {
    static std::atomic<std::int64_t> last{0};
    std::int64_t const number = ++last;
    threadNumber = number;
    Directory::instance().open(number);
    atThreadEnd(&closeMailbox, reinterpret_cast<void*>(static_cast<std::intptr_t>(number)));
    return number;
}

std::shared_ptr<Mailbox> ownMailbox() {
    auto const box = Directory::instance().find(currentThreadNumber());
    // A thread that is ending has closed its mailbox. It can still call others
    // and needs something to wait on.
    return box ? box : std::make_shared<Mailbox>();
}

// Runs the calls that are in the mailbox now. The mutex is free while one runs.
unsigned serveWaiting(Mailbox& box) {
    unsigned served = 0;
    for (;;) {
        std::shared_ptr<PostedCall> posted;
        {
            std::lock_guard const hold(box.mutex);
            if (box.calls.empty()) {
                return served;
            }
            posted = std::move(box.calls.front());
            box.calls.pop_front();
        }
        posted->takenAt = Clock::now();
        if (!posted->move(PostedCall::waiting, PostedCall::running)) {
            continue;
        }
        posted->call->run();
        posted->state = PostedCall::done;
        posted->caller->wake();
        ++served;
    }
}

// Waits until the call has ended, but no longer than `until`, and serves the
// waiting thread's own calls.
void awaitEnd(PostedCall const& posted, Mailbox& own, Clock::time_point until) {
    while (!posted.ended() && Clock::now() < until) {
        {
            std::unique_lock hold(own.mutex);
            own.changed.waitUntil(hold, until,
                                  [&] { return posted.ended() || !own.calls.empty(); });
        }
        if (!posted.ended()) {
            serveWaiting(own);
        }
    }
}

// Long enough for an owner that serves in a loop of half-second sleeps or is
// busy for a moment; short enough that a user who waits gets an answer.
std::atomic<int> untilTaken{5'000};
std::atomic<int> untilDone{300'000};

// The owner does not report that it takes a call, which would wake the caller
// twice. The caller looks when a limit can have passed at the earliest.
RouteOutcome awaitWithinLimits(std::shared_ptr<PostedCall> const& posted, Mailbox& owner) {
    std::chrono::milliseconds const taking(untilTaken);
    std::chrono::milliseconds const running(std::max(1, untilDone.load()));
    for (;;) {
        auto const now = Clock::now();
        auto look = now + running;
        switch (posted->state.load()) {
            case PostedCall::done:
                return RouteOutcome::done;
            case PostedCall::refused:
                return RouteOutcome::ownerEnded;
            case PostedCall::running:
                look = posted->takenAt + running;
                if (now >= look) return RouteOutcome::stillRunning;
                break;
            default:
                look = std::min(look, posted->postedAt + taking);
                if (now >= look && posted->move(PostedCall::waiting, PostedCall::givenUp)) {
                    owner.withdraw(posted);
                    return RouteOutcome::notServed;
                }
        }
        awaitEnd(*posted, *posted->caller, look);
    }
}

}  // namespace

std::int64_t currentThreadNumber() noexcept {
    std::int64_t const number = threadNumber;
    return number != 0 ? number : numberThisThread();
}

RouteOutcome runOnThread(std::int64_t owner, std::shared_ptr<RoutedCall> const& call) {
    auto const box = Directory::instance().find(owner);
    if (!box) {
        return RouteOutcome::ownerEnded;
    }
    auto const posted = std::make_shared<PostedCall>();
    posted->call = call;
    posted->caller = ownMailbox();
    if (!box->post(posted)) {
        return RouteOutcome::ownerEnded;
    }
    return awaitWithinLimits(posted, *box);
}

unsigned serveCalls(std::chrono::milliseconds duration, std::atomic<bool> const& ended) {
    auto const deadline = Clock::now() + duration;
    auto const box = ownMailbox();
    unsigned served = 0;
    do {
        served += serveWaiting(*box);
        auto until = deadline;
        if (threadPump != nullptr) {
            threadPump();
            until = std::min(until, Clock::now() + pumpInterval);
        }
        std::unique_lock hold(box->mutex);
        box->changed.waitUntil(hold, until, [&] { return !box->calls.empty() || ended; });
    } while (Clock::now() < deadline && !ended);
    return served + serveWaiting(*box);
}

}  // namespace velk::core

mzCallLimitsS mzComSetCallLimits(mzCallLimitsS limits) {
    return {velk::core::untilTaken.exchange(std::max(0, limits.untilTaken)),
            velk::core::untilDone.exchange(std::max(0, limits.untilDone))};
}

void mzComSetThreadPump(void (*pump)()) {
    velk::core::threadPump = pump;
}

unsigned mzComSleep(unsigned milliseconds, int, int*) {
    static constinit std::atomic<bool> const never{false};
    return velk::core::serveCalls(std::chrono::milliseconds(milliseconds), never);
}

unsigned mzComSleepUntil(unsigned milliseconds, std::atomic<bool> const& ended) {
    return velk::core::serveCalls(std::chrono::milliseconds(milliseconds), ended);
}

std::int64_t mzComThreadNumber() {
    return velk::core::currentThreadNumber();
}

void mzComWake(std::int64_t thread) {
    if (auto const box = velk::core::Directory::instance().find(thread)) box->wake();
}
