/// The host application inside a native client's process.
///
/// One thread per process owns the application and serves the runtime until it
/// is told to stop. Every function may be called on any thread.
#pragma once

#include <cstdint>
#include <optional>

#include <QString>

namespace velk::adapter {

/// One run of the application, or, as 0, an application that this module does
/// not end while the caller uses it.
using ApplicationRunNumber = std::uint64_t;

/// Makes sure that there is an application that nobody has asked to end: does
/// nothing when the process has one, or on the application thread itself; else
/// waits for one that is ending, starts the thread and waits until it serves.
/// Callers that come together start one thread. Nothing when it cannot be
/// started, or does not serve within five seconds.
std::optional<ApplicationRunNumber> ensureApplication();

/// Whether a run has ended or been asked to end.
bool isOver(ApplicationRunNumber number);

/// Name and version of the application that is started next; one that runs
/// keeps its own.
void nameApplication(QString name, QString version);

/// Ends the application that serves now and waits for the end of that one;
/// nothing when none serves. On the application thread itself it only asks for
/// the end, which comes when the thread serves again.
void stopApplication();

/// Whether the calling thread is the application thread.
bool onApplicationThread();

/// The same for the end of the module: also waits for a thread that has not
/// got as far as serving, because its code is about to go.
void endApplicationThread();

}  // namespace velk::adapter
