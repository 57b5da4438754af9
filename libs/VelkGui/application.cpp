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

/// Text of its own memory. Qt keeps names until the process ends, and a text
/// that came as a literal would point into a module that may be gone by then.
QString ownCopy(QString const& text) {
    return QString(text.constData(), text.size());
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

// A published signature. NOLINTNEXTLINE(performance-unnecessary-value-param)
void PApplication::initApplicationVersion(QString version) {
    setApplicationVersion(ownCopy(version));
}

bool PApplication::initApplication(QString const& applicationName, QString const& product,
                                   QString const& profile, bool) {
    setApplicationName(ownCopy(applicationName));
    setOrganizationName(ownCopy(product));
    setProperty("settingsProfile", ownCopy(profile));
    if (mode_ == bareMode || serversStarted_) {
        return true;
    }
    // Whatever comes of it, the start counts until its `mzComServerDone`.
    serversStarted_ = true;
    return mzComServerInit() == mzSuccess;
}
