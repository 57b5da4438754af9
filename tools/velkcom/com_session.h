/// The thread's time in COM.
#pragma once

#include <objbase.h>

#include "com/error.h"

namespace velk::velkcom {

/// Enters COM in an apartment of the thread's own and leaves it at its end;
/// every object has to be released before.
class ComSession {
  public:
    ComSession() { com::throwIfFailed(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)); }
    ~ComSession() { CoUninitialize(); }
    ComSession(ComSession const&) = delete;
    ComSession& operator=(ComSession const&) = delete;
};

}  // namespace velk::velkcom
