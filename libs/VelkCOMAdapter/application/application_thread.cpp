#include "application/application_thread.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <windows.h>

#include <QCoreApplication>

#include "host/application.h"
#include "host/sleep.h"
#include "module/module_attachment.h"
#include "module/process_objects.h"

namespace velk::adapter {
namespace {

using State = ApplicationRun::State;
using Clock = std::chrono::steady_clock;
using Hold = std::unique_lock<std::mutex>;

// The longest step of a thread that waits: a change wakes it, and this finds a
// thread that went without having said so.
constexpr std::chrono::milliseconds longestStep{500};
// How long a client waits for an application.
constexpr std::chrono::seconds startLimit{5};
// The thread is past the application and only leaves.
constexpr std::chrono::milliseconds leavingStep{1};

std::pair<QString, QString> applicationIdentity() {
    std::lock_guard const guard(applicationRun.mutex);
    return {applicationName, applicationVersion};
}

void noteBegun() {
    std::lock_guard const guard(applicationRun.mutex);
    applicationRun.thread = GetCurrentThreadId();
    applicationRun.sleeper = mzComThreadNumber();
}

void noteServing() {
    std::lock_guard const guard(applicationRun.mutex);
    applicationRun.state = State::serving;
    applicationRun.changed.notify_all();
}

void noteEnded(Hold const& /*held*/) {
    if (applicationRun.state == State::starting) applicationRun.lastFailed = applicationRun.number;
    applicationRun.state = State::ended;
    applicationRun.changed.notify_all();
}

/// Builds the application, serves until it is asked to end, and takes the
/// application down. Throws what its construction throws.
void serve() {
    char program[] = "velkcomadapter";
    char* arguments[] = {program, nullptr};
    int argumentCount = 1;
    PApplication application(argumentCount, arguments, PApplication::serverMode);
    detachWhenProcessEnds(ApplicationStage::built);
    auto const [name, version] = applicationIdentity();
    application.initApplicationVersion(version);
    application.initApplication(name, "velk", "common", false);
    detachWhenProcessEnds(ApplicationStage::initialised);
    noteServing();
    while (!applicationRun.stopAsked) {
        mzComSleepUntil(static_cast<unsigned>(longestStep.count()), applicationRun.stopAsked);
    }
}

unsigned runApplicationThread(void*) {
    noteBegun();
    try {
        serve();
    } catch (...) {
        // No application then: the state tells those who wait for it.
    }
    noteEnded(Hold(applicationRun.mutex));
    return 0;
}

/// False when the system has no thread to give. The thread is never detached:
/// the next run and the end of the module wait until it is gone.
bool beginRun(Hold const& held) {
    ++applicationRun.number;
    applicationRun.state = State::starting;
    applicationRun.stopAsked = false;
    applicationRun.thread = 0;
    if (applicationThread.start(&runApplicationThread, nullptr)) return true;
    noteEnded(held);
    return false;
}

void waitForChange(Hold& hold, Clock::time_point limit) {
    bool const leaving = applicationRun.state == State::ended;
    std::chrono::milliseconds const step = leaving ? leavingStep : longestStep;
    applicationRun.changed.wait_until(hold, std::min(limit, Clock::now() + step));
    if (applicationRun.state != State::ended && !applicationThread.isActive()) noteEnded(hold);
}

void askToEnd(Hold const& /*held*/) {
    applicationRun.stopAsked = true;
    mzComWake(applicationRun.sleeper);
}

enum class Look { ready, wait, failed };

/// What a client that needs the application does next. `awaited` is the run
/// that it has waited for so far.
Look lookForApplication(Hold const& held, ApplicationRunNumber& awaited) {
    if (awaited != 0 && applicationRun.lastFailed >= awaited) return Look::failed;
    switch (applicationRun.state) {
        case State::serving:
            return applicationRun.stopAsked ? Look::wait : Look::ready;
        case State::starting:
            awaited = applicationRun.number;
            return Look::wait;
        case State::ended:
            break;
    }
    if (QCoreApplication::instance()) return Look::ready;
    if (applicationThread.isActive()) return Look::wait;
    if (!beginRun(held)) return Look::failed;
    awaited = applicationRun.number;
    return Look::wait;
}

ApplicationRunNumber runInUse() {
    return applicationRun.state == State::serving ? applicationRun.number : 0;
}

/// Nobody waits any longer for a thread that is still in this module's code
/// and may stay in it, so that code must not go.
void giveUpStart() {
    if (applicationThread.isActive()) stayLoaded();
}

}  // namespace

std::optional<ApplicationRunNumber> ensureApplication() {
    if (onApplicationThread()) return 0;
    auto const limit = Clock::now() + startLimit;
    ApplicationRunNumber awaited = 0;
    Hold hold(applicationRun.mutex);
    for (;;) {
        Look const look = lookForApplication(hold, awaited);
        if (look == Look::ready) return runInUse();
        if (look == Look::failed) return std::nullopt;
        if (Clock::now() >= limit) break;
        waitForChange(hold, limit);
    }
    // Asked to end, but still there: better than none.
    if (applicationRun.state == State::serving) return applicationRun.number;
    giveUpStart();
    return std::nullopt;
}

bool isOver(ApplicationRunNumber number) {
    if (number == 0) return false;
    std::lock_guard const guard(applicationRun.mutex);
    return applicationRun.number != number || applicationRun.state == State::ended ||
           applicationRun.stopAsked;
}

void nameApplication(QString name, QString version) {
    std::lock_guard const guard(applicationRun.mutex);
    applicationName = std::move(name);
    applicationVersion = std::move(version);
}

void stopApplication() {
    Hold hold(applicationRun.mutex);
    if (applicationRun.state != State::serving) return;
    askToEnd(hold);
    if (onApplicationThread()) return;
    ApplicationRunNumber const asked = applicationRun.number;
    while (applicationRun.number == asked && applicationRun.state != State::ended) {
        waitForChange(hold, Clock::time_point::max());
    }
}

bool onApplicationThread() {
    // The system gives the numbers of threads that are gone to new ones.
    return applicationRun.thread == GetCurrentThreadId() && applicationThread.isActive();
}

void endApplicationThread() {
    if (!applicationThread.isActive() || onApplicationThread()) return;
    {
        Hold const hold(applicationRun.mutex);
        askToEnd(hold);
    }
    while (applicationThread.isActive()) mzSleep(static_cast<int>(leavingStep.count()));
}

}  // namespace velk::adapter
