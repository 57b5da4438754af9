#include <gtest/gtest.h>

#include "sample_objects.h"

// Running objects that others find by ProgID.

namespace {

using velk::test::Sample;

unsigned find(char const* progId, mzComPtrC& out) {
    return mzComGetActiveObject(progId, mzIDispatch::interfaceId(), 3, out, 0);
}

TEST(ActiveObjects, AreFoundWhileRegistered) {
    mzComPtrC const first(new Sample);
    mzComPtrC const second(new Sample);
    unsigned firstCookie = 0;
    unsigned secondCookie = 0;
    ASSERT_EQ(mzComRegisterActiveObject("velktest.run", first.iface(), firstCookie), mzSuccess);
    ASSERT_EQ(mzComRegisterActiveObject("VelkTest.Run", second.iface(), secondCookie), mzSuccess);
    EXPECT_NE(firstCookie, 0u);
    EXPECT_NE(firstCookie, secondCookie);

    mzComPtrC out;
    EXPECT_EQ(find("VELKTEST.RUN", out), mzSuccess);
    EXPECT_EQ(out.iface(), second.iface()) << "the newest";
    EXPECT_EQ(mzComRevokeActiveObject(secondCookie), mzSuccess);
    EXPECT_EQ(find("velktest.run", out), mzSuccess);
    EXPECT_EQ(out.iface(), first.iface());
    EXPECT_EQ(mzComGetActiveObject("velktest.run", mzIIterable::interfaceId(), 3, out, 0),
              mzFailure)
        << "running, but not that interface";
    EXPECT_EQ(mzComRevokeActiveObject(firstCookie), mzSuccess);
    EXPECT_EQ(mzComRevokeActiveObject(firstCookie), mzFailure) << "once";
    EXPECT_EQ(find("velktest.run", out), mzFailure);
    EXPECT_FALSE(out.isValid());
}

TEST(ActiveObjects, WrongArgumentsRegisterNothing) {
    mzComPtrC const sample(new Sample);
    unsigned cookie = 7;
    EXPECT_EQ(mzComRegisterActiveObject(nullptr, sample.iface(), cookie), mzFailure);
    EXPECT_EQ(cookie, 0u);
    EXPECT_EQ(mzComRegisterActiveObject("", sample.iface(), cookie), mzFailure);
    EXPECT_EQ(mzComRegisterActiveObject("velktest.run", nullptr, cookie), mzFailure);
    EXPECT_EQ(mzComRevokeActiveObject(0), mzFailure);
    mzComPtrC out;
    EXPECT_EQ(find(nullptr, out), mzFailure);
    EXPECT_EQ(find("", out), mzFailure);
}

TEST(ActiveObjects, GoWithTheServers) {
    EXPECT_EQ(mzComServerInit(), mzSuccess);
    unsigned cookie = 0;
    mzComRegisterActiveObject("velktest.run", mzComPtrC(new Sample).iface(), cookie);
    EXPECT_EQ(Sample::alive(), 1);
    EXPECT_EQ(mzComServerDone(), mzSuccess);
    EXPECT_EQ(Sample::alive(), 0);
    EXPECT_EQ(mzComRevokeActiveObject(cookie), mzFailure);
}

}  // namespace
