#include "host/exception.h"

#include <gtest/gtest.h>

#include "host/execute_exception.h"

namespace {

TEST(HostException, KeepsWhatItIsGiven) {
    auto const inner = mzComCreateException("inner", "cause", {});
    auto const outer = mzComCreateException("Invoke DSP", "message", inner);
    EXPECT_EQ(outer->source(), mzComStringC("Invoke DSP"));
    EXPECT_EQ(outer->description(), mzComStringC("message"));
    EXPECT_EQ(outer->inner().iface(), inner.iface());
    mzComPtrT<mzIException> again;
    again = mzComPtrC(outer.iface());
    EXPECT_EQ(again.iface(), outer.iface());
}

TEST(HostException, TextJoinsTheDescriptionsFromTheOutsideIn) {
    auto const first = mzComCreateException("", "cause", {});
    auto const silent = mzComCreateException("source only", "", first);
    auto const outer = mzComCreateException("", "failed", silent);
    EXPECT_EQ(mzComExceptionErrorString(outer, "\n"), mzComStringC("failed\ncause"));
    EXPECT_EQ(mzComExceptionErrorString(silent, "\n"), mzComStringC("cause"));
}

TEST(HostException, WithoutAnyTextTheFallbackSpeaks) {
    EXPECT_EQ(mzComExceptionErrorString({}, "\n"), mzComStringC("\n"));
    EXPECT_EQ(mzComExceptionErrorString({}, ""), mzComStringC(""));
    EXPECT_EQ(mzComExceptionErrorString(mzComCreateException("s", "", {}), "none"),
              mzComStringC("none"));
}

/// An exception object that is its own cause.
class Ring : public mzIException {
  public:
    unsigned queryInterface(mzIIDS const&, mzComPtrC&) override { return mzFailure; }
    unsigned addRef() override { return 1; }
    unsigned release() override { return 1; }
    mzComStringC source() const override { return {}; }
    mzComStringC description() const override { return "again"; }
    mzComPtrT<mzIException> inner() const override { return const_cast<Ring*>(this); }
};

TEST(HostException, ARingOfCausesHasAnEnd) {
    Ring ring;
    mzComStringC const text = mzComExceptionErrorString(&ring, " ");
    EXPECT_GE(text.length(), 11);
    EXPECT_EQ(text.toUtf8().substr(0, 11), "again again");
}

TEST(ExecuteException, CarriesMessageOperationAndCode) {
    try {
        mzThrowExecuteException("Dictionary is in read-only mode!", "addObj", 1);
    } catch (mzExecuteExceptionC const& error) {
        EXPECT_EQ(error.message(), mzComStringC("Dictionary is in read-only mode!"));
        EXPECT_EQ(error.operation(), mzComStringC("addObj"));
        EXPECT_EQ(error.code(), 1);
        EXPECT_STREQ(error.what(), "Dictionary is in read-only mode!");
        return;
    }
}

TEST(ExecuteException, AConversionFailureIsOneToo) {
    EXPECT_THROW(mzThrowAutoTypeCastException(), mzAutoTypeCastExceptionC);
    EXPECT_THROW(mzThrowAutoTypeCastException(), mzExecuteExceptionC);
}

}  // namespace
