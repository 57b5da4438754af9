/// Tables of host code that uses native objects.
#pragma once

#include <optional>

#include "runtime/objects/script_table.h"
#include "servers/automation/support/automation_server.h"
#include "support/loaded_module.h"
#include "support/value_notation.h"

namespace velk::test {

/// The module loaded and the server of the tests, whose module a table calls
/// SERVER, registered.
class NativeScripts : public ScriptTable {
  protected:
    void SetUp() override {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        module_.emplace();
        server_.emplace();
        ASSERT_EQ(server_->registration(), S_OK);
        auto const path = AutomationServer::path();
        words_["SERVER"] = narrow(path.data(), path.size());
    }
    void TearDown() override {
        objects_.clear();
        EXPECT_EQ(server_->liveObjects(), 0);
        EXPECT_EQ(module_->canUnloadNow(), S_OK);
        server_.reset();
        module_.reset();
        CoUninitialize();
    }

    std::optional<LoadedModule> module_;
    std::optional<AutomationServer> server_;
};

}  // namespace velk::test
