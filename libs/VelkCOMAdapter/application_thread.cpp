#include "application_thread.h"

#include <atomic>
#include <mutex>
#include <utility>

#include <windows.h>

#include <QCoreApplication>

#include "host/application.h"
#include "host/sleep.h"
#include "module_attachment.h"
#include "process_objects.h"

namespace velk::adapter {
namespace {

// How often a waiting thread looks again, and how often at most while the
// application starts.
constexpr int pollMilliseconds = 500;
constexpr int mostStartPolls = 10;
// The thread is past its loop and only takes the application down.
constexpr int endPollMilliseconds = 5;

using Flag = std::atomic<unsigned char>;

// Set while the application serves.
Flag runningFlag{0};
// Set while the application is asked to end.
Flag stopFlag{0};
// Set from the start of the thread until it serves or has failed to.
Flag startingFlag{0};
// Without a destructor, so that it holds until the thread's very end, which may
// be what takes the module down.
thread_local constinit bool isApplicationThread = false;

// Guards the start of the thread, and the name and version.
std::mutex startMutex;

std::pair<QString, QString> applicationIdentity() {
    std::lock_guard const guard(startMutex);
    return {applicationName, applicationVersion};
}

/// Builds the application, serves until the stop flag is set, and takes the
/// application down. Throws what its construction throws.
void serve() {
    char program[] = "velkcomadapter";
    char* arguments[] = {program, nullptr};
    int argumentCount = 1;
    PApplication application(argumentCount, arguments, PApplication::serverMode);
    auto const [name, version] = applicationIdentity();
    application.initApplicationVersion(version);
    application.initApplication(name, "velk", "common", false);
    detachWhenProcessEnds();
    runningFlag = 1;
    startingFlag = 0;
    while (!stopFlag) mzComSleep(pollMilliseconds, 0, nullptr);
    applicationThread.detach();
    runningFlag = 0;
}

unsigned runApplicationThread(void*) {
    isApplicationThread = true;
    try {
        serve();
    } catch (...) {
        // No application then: the flags tell those who wait for it.
        applicationThread.detach();
    }
    runningFlag = 0;
    startingFlag = 0;
    return 0;
}

enum class Start { notNeeded, pending, failed };

Start beginStart() {
    std::lock_guard const guard(startMutex);
    if (runningFlag) return Start::notNeeded;
    if (startingFlag) return Start::pending;
    if (QCoreApplication::instance()) return Start::notNeeded;
    stopFlag = 0;
    startingFlag = 1;
    if (applicationThread.start(&runApplicationThread, nullptr)) return Start::pending;
    startingFlag = 0;
    return Start::failed;
}

bool waitUntilServing() {
    for (int polls = 0; polls < mostStartPolls; ++polls) {
        if (runningFlag) return true;
        if (!startingFlag) return false;
        mzSleep(pollMilliseconds);
    }
    return runningFlag != 0;
}

void waitForThread() {
    while (applicationThread.isActive()) mzSleep(endPollMilliseconds);
}

}  // namespace

bool ensureApplication() {
    switch (beginStart()) {
        case Start::notNeeded:
            return true;
        case Start::pending:
            return waitUntilServing();
        case Start::failed:
            break;
    }
    return false;
}

void nameApplication(QString name, QString version) {
    std::lock_guard const guard(startMutex);
    applicationName = std::move(name);
    applicationVersion = std::move(version);
}

void stopApplication() {
    if (!runningFlag) return;
    stopFlag = 1;
    if (isApplicationThread) return;
    while (applicationThread.isActive()) {
        mzSleep(pollMilliseconds);
        if (!runningFlag) break;
    }
    // The application goes after the running flag; the next start must not
    // take what is left of it for one that lives.
    waitForThread();
    stopFlag = 0;
    runningFlag = 0;
}

void endApplicationThread() {
    if (!applicationThread.isActive() || isApplicationThread) return;
    stopFlag = 1;
    waitForThread();
    stopFlag = 0;
    runningFlag = 0;
}

}  // namespace velk::adapter
