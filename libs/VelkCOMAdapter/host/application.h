#pragma once

#include <QCoreApplication>
#include <QString>

#include "host/export.h"

/// The host's application framework: at most one per process, living on one
/// thread. While it exists `QCoreApplication::instance()` is not null.
class VELKGUI_API PApplication : public QCoreApplication {
  public:
    /// How much of the framework comes up.
    enum InitMode : int {
        /// Nothing but the application object; no servers.
        bareMode = 0,
        /// An interactive program.
        interactiveMode = 1,
        /// Serves calls of other programs without a user interface.
        serverMode = 2
    };

    /// Any thread may make the application; it belongs to that thread, where its
    /// events are worked off in `mzComSleep` and where it is destroyed. `argc`
    /// and `argv` must outlive it.
    PApplication(int& argc, char** argv, InitMode const& mode);
    ~PApplication() override;

    void initApplicationVersion(QString version);
    /// Sets the application's and the organization's (the product's) name and
    /// starts the runtime's servers, but for `bareMode`. `profile` names a set
    /// of settings and is kept as the property "settingsProfile"; the flag is
    /// without effect. False when a server did not start. The destructor ends
    /// the servers.
    bool initApplication(QString const& applicationName, QString const& product,
                         QString const& profile, bool flag);
    InitMode initMode() const { return mode_; }

  private:
    InitMode mode_;
    bool serversStarted_ = false;
};
