/// Base of the tests of the automation server.
#pragma once

#include <optional>

#include <gtest/gtest.h>

#include "com/com_ptr.h"
#include "servers/automation/support/automation_server.h"
#include "servers/automation/support/late_bound.h"
#include "servers/automation/support/sample_values.h"

namespace velk::test {

/// Registers the server, and makes sure that no object of it is left.
class ServerTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        server_.emplace();
        ASSERT_EQ(server_->registration(), S_OK);
    }
    void TearDown() override {
        object_.reset();
        EXPECT_EQ(server_->liveObjects(), 0);
        server_.reset();
        CoUninitialize();
    }

    /// The object of the test, of a class by its ProgID.
    IDispatch& create(char const* progId) {
        HRESULT const code = createByProgId(progId, IID_IDispatch, object_.putVoid());
        if (FAILED(code)) throw com::Error(code, progId);
        return *object_;
    }

    std::optional<AutomationServer> server_;
    com::ComPtr<IDispatch> object_;
};

}  // namespace velk::test
