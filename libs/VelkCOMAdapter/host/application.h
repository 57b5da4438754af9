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
        /// Nothing but the application object.
        bareMode = 0,
        /// An interactive program.
        interactiveMode = 1,
        /// Serves calls of other programs without a user interface.
        serverMode = 2
    };

    /// `argc` and `argv` must outlive the application.
    PApplication(int& argc, char** argv, InitMode const& mode);
    ~PApplication() override;

    void initApplicationVersion(QString version);
    /// Starts the runtime's servers. `product` and `profile` name the product
    /// and the set of settings; the flag is without effect. False when the
    /// servers did not start.
    bool initApplication(QString const& applicationName, QString const& product,
                         QString const& profile, bool flag);
    InitMode initMode() const { return mode_; }

  private:
    InitMode mode_;
    bool serversStarted_ = false;
};
