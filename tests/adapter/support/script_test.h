/// Base of the tests in which host code uses native objects.
#pragma once

#include <gtest/gtest.h>

#include "host/creation.h"
#include "support/host_calls.h"
#include "support/native_side.h"

namespace velk::test {

/// The module loaded, the server of the tests registered, and the script
/// object that reaches native objects made.
class ScriptTest : public testing::Test, protected NativeSide {
  protected:
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(start());
        adapter_ = create("qxttools.comadapter");
        ASSERT_TRUE(adapter_.isValid());
    }
    void TearDown() override {
        adapter_.detach();
        end();
    }

    /// A host object by its script name.
    static mzComPtrT<mzIDispatch> create(char const* name) {
        mzComPtrC object;
        EXPECT_EQ(mzComCreateObject(name, mzIDispatch::interfaceId(), object), mzSuccess) << name;
        return mzComPtrT<mzIDispatch>(object);
    }
    /// A native object of the server.
    mzComPtrT<mzIDispatch> native(char const* progId) const {
        auto const outcome = callHost(adapter_.iface(), "CreateObject", mzCallMethod, {progId});
        EXPECT_EQ(outcome.code, mzSuccess) << progId << ": " << outcome.text();
        return dispatchIn(outcome.result);
    }
    mzComPtrT<mzIDispatch> sample() const { return native("VelkTest.Sample"); }

    /// The path of the server's module, which carries its type library.
    static mzComStringC serverPath() { return mzComStringC(AutomationServer::path().c_str()); }

    mzComPtrT<mzIDispatch> adapter_;
};

/// A script variable that holds `value`.
inline mzComVariantC variable(mzComVariantC const& value) {
    return mzComVariantC::createSymbolRef(value);
}

/// A method call, in text.
inline std::string callText(mzComPtrT<mzIDispatch> const& object, char const* name,
                            std::initializer_list<mzComVariantC> arguments = {}) {
    return callHost(object.iface(), name, mzCallMethod, arguments).text();
}

}  // namespace velk::test
