/// The automation server of the tests, registered and ready to be created from.
#pragma once

#include "com/owners.h"
#include "servers/automation/test_server_ids.h"

namespace velk::test {

/// Loads and registers VelkTestServer, and takes that back at its end. The
/// thread must be in an apartment all the while. Registration is for the
/// machine: tests that use this share the CTest resource "registry".
class AutomationServer {
  public:
    /// `registration` tells how it went.
    AutomationServer();
    ~AutomationServer();
    AutomationServer(AutomationServer const&) = delete;
    AutomationServer& operator=(AutomationServer const&) = delete;

    HRESULT registration() const noexcept { return registration_; }

    /// The module's file, in UTF-16.
    static std::basic_string<OLECHAR> path();

    /// How many objects of the server are alive; -1 when it is not loaded.
    long liveObjects() const noexcept;

  private:
    HRESULT call(char const* function) const noexcept;

    com::Module module_;
    HRESULT registration_ = E_FAIL;
};

/// A new object of a class, by its ProgID in ASCII and as the interface `id`.
HRESULT createByProgId(char const* progId, REFIID id, void** object) noexcept;

}  // namespace velk::test
