/// The objects that exist once per loaded module, from load to unload.
#pragma once

#include <QString>

#include "VelkQXTProxy/last_exception_slot.h"
#include "application/application_run.h"
#include "host/thread.h"
#include "module/module.h"

namespace velk::adapter {

extern CVelkCOMAdapterModule comModule;
/// The thread that the host application runs on.
extern mzThreadC applicationThread;
extern ApplicationRun applicationRun;
/// What the application is called when it starts next; the run's mutex guards
/// both.
extern QString applicationName;
extern QString applicationVersion;
extern LastExceptionSlot lastExceptionSlot;

}  // namespace velk::adapter
