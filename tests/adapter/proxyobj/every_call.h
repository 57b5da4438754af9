/// Calls of every member function of every typed client, which the generator
/// writes.
#pragma once

#include <vector>

#include <gtest/gtest.h>

#include "proxyobj/scripting_base.h"

namespace velk::test {

/// What the object of the calls answers to each of them.
inline constexpr int answeredNumber = 7;
/// What it puts into every variable that it gets.
inline constexpr int leftNumber = 9;

/// Looks at what comes back from the calls.
class CallObserver {
  public:
    struct Expected {
        char const* className;
        char const* member;
        unsigned callKind;
        std::size_t arguments;
    };

    /// This call comes next.
    void expect(Expected const& call) { expected_.push_back(call); }
    std::vector<Expected> const& expected() const { return expected_; }

    void returned(int value) const { EXPECT_EQ(value, answeredNumber) << name(); }
    void returned(bool value) const { EXPECT_TRUE(value) << name(); }
    void returned(double value) const { EXPECT_EQ(value, answeredNumber) << name(); }
    void returned(mzComStringC const& value) const { EXPECT_EQ(value.toUtf8(), "7") << name(); }
    void returned(mzComVariantC const& value) const {
        EXPECT_EQ(value.getInt(), answeredNumber) << name();
    }
    // A number is no object.
    void returned(scripting::ScriptingBase const& value) const {
        EXPECT_FALSE(value.isBound()) << name();
    }
    void returned(mzComPtrT<mzIUnknown> const& value) const {
        EXPECT_FALSE(value.isValid()) << name();
    }

    void left(int value) const { EXPECT_EQ(value, leftNumber) << name(); }
    void left(bool value) const { EXPECT_TRUE(value) << name(); }
    void left(double value) const { EXPECT_EQ(value, leftNumber) << name(); }
    void left(mzComStringC const& value) const { EXPECT_EQ(value.toUtf8(), "9") << name(); }
    void left(mzComVariantC const& value) const { EXPECT_EQ(value.getInt(), leftNumber) << name(); }

  private:
    std::string name() const {
        return std::string(expected_.back().className) + "." + expected_.back().member;
    }

    std::vector<Expected> expected_;
};

/// An object for parameters that take one.
mzIUnknown* sampleObject();

/// Calls every member function but the constants, in the order of the list, of
/// clients that are bound to `object`.
void callEveryMember(CallObserver& observer, mzIUnknown* object);

}  // namespace velk::test
