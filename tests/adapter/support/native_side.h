/// What tests of host code that uses native objects stand on.
#pragma once

#include <gtest/gtest.h>

#include <optional>

#include "servers/automation/support/automation_server.h"
#include "support/loaded_module.h"

namespace velk::test {

/// The calling thread in an apartment, the module loaded, and the server of the
/// tests registered.
class NativeSide {
  public:
    void start() {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        module_.emplace();
        server_.emplace();
        ASSERT_EQ(server_->registration(), S_OK);
    }
    /// Objects of the server, or references to the module, that are left fail the test.
    void end() {
        EXPECT_EQ(server_->liveObjects(), 0);
        EXPECT_EQ(module_->canUnloadNow(), S_OK);
        server_.reset();
        module_.reset();
        CoUninitialize();
    }

  protected:
    std::optional<LoadedModule> module_;
    std::optional<AutomationServer> server_;
};

}  // namespace velk::test
