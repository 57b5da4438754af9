#include "host/application.h"

#include <QVariant>

#include "host/call_routing.h"
#include "host/codes.h"
#include "host/server.h"

namespace {

// The application's thread sleeps in `mzComSleep` and not in Qt's own loop;
// this keeps its timers and queued calls going.
void workOffEvents() {
    QCoreApplication::processEvents();
}

}  // namespace

PApplication::PApplication(int& argc, char** argv, InitMode const& mode)
    : QCoreApplication(argc, argv), mode_(mode) {
    mzComSetThreadPump(workOffEvents);
}

PApplication::~PApplication() {
    mzComSetThreadPump(nullptr);
    if (serversStarted_) {
        mzComServerDone();
    }
}

void PApplication::initApplicationVersion(QString version) {
    setApplicationVersion(version);
}

bool PApplication::initApplication(QString const& applicationName, QString const& product,
                                   QString const& profile, bool) {
    setApplicationName(applicationName);
    setOrganizationName(product);
    setProperty("settingsProfile", profile);
    if (mode_ == bareMode || serversStarted_) {
        return true;
    }
    // Whatever comes of it, the start counts until its `mzComServerDone`.
    serversStarted_ = true;
    return mzComServerInit() == mzSuccess;
}
