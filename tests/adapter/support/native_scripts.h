/// Tables of host code that uses native objects.
#pragma once

#include "runtime/objects/script_table.h"
#include "support/native_side.h"
#include "support/value_notation.h"

namespace velk::test {

/// The module loaded and the server of the tests, whose module a table calls
/// SERVER, registered.
class NativeScripts : public ScriptTable, protected NativeSide {
  protected:
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(start());
        auto const path = AutomationServer::path();
        words_["SERVER"] = narrow(path.data(), path.size());
    }
    void TearDown() override {
        objects_.clear();
        end();
    }
};

}  // namespace velk::test
