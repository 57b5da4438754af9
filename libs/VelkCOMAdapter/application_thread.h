/// The host application inside a native client's process.
///
/// One thread per process owns the application and serves the runtime until it
/// is told to stop. Every function may be called on any thread.
#pragma once

#include <QString>

namespace velk::adapter {

/// Makes sure that there is an application: does nothing when the process has
/// one already, else starts the thread and waits until it serves. Callers that
/// come together start one thread. False when it cannot be started, or does
/// not serve within five seconds.
bool ensureApplication();

/// Name and version of the application that is started next; one that runs
/// keeps its own.
void nameApplication(QString name, QString version);

/// Ends the application and waits for it; nothing when none runs. On the
/// application thread itself it only asks for the end, which comes when the
/// thread serves again.
void stopApplication();

/// The same for the end of the module: also waits for a thread that has not
/// got as far as serving, because its code is about to go.
void endApplicationThread();

}  // namespace velk::adapter
