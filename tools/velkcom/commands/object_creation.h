/// The thread's time in COM, and the objects that commands create in it.
#pragma once

#include <stdexcept>
#include <string>

#include "com/error.h"
#include "com/owners.h"

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

/// Why an object cannot be created or a call failed, in words for people,
/// several lines where the object said more.
class CallFailure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A new object of a class, named by its ProgID or by "{class id}" in UTF-8.
/// Throws CallFailure, or UsageError for text that is no UTF-8.
com::ComPtr<IDispatch> createObject(std::string const& progId);

}  // namespace velk::velkcom
