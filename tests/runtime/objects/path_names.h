#pragma once

#include <string>

#include <gtest/gtest.h>

#include "sample_objects.h"
#include "support/volumes.h"

/// Script objects "qxttools.pathname" in tests.
namespace velk::test {

inline constexpr unsigned method = mzCallMethod;
inline constexpr unsigned get = mzCallPropertyGet;
inline constexpr unsigned put = mzCallPropertyPut;

inline mzComPtrT<mzIUnknown> newPath(mzComVariantC const& text) {
    mzComPtrC path;
    EXPECT_EQ(mzComCreateObject("qxttools.pathname", mzIDispatch::interfaceId(), path), mzSuccess);
    EXPECT_EQ(call(path.iface(), "native", put, {text}).code, mzSuccess);
    return mzComPtrT<mzIUnknown>(path);
}

inline std::string textAt(mzComPtrT<mzIUnknown> const& path, char const* property) {
    return call(path.iface(), property, get).text();
}

/// Calls a method whose result is a path, and gives that.
inline mzComPtrT<mzIUnknown> pathOf(mzComPtrT<mzIUnknown> const& path, char const* name,
                                    std::initializer_list<mzComVariantC> args = {}) {
    mzComPtrT<mzIUnknown> result;
    EXPECT_EQ(call(path.iface(), name, method, args).value.get(result), mzSuccess) << name;
    return result;
}

/// The runtime runs while there is one, and there is a drive C.
class PathNames : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(mzComServerInit(), mzSuccess); }
    void TearDown() override { EXPECT_EQ(mzComServerDone(), mzSuccess); }

    DriveC drive_;
};

}  // namespace velk::test
