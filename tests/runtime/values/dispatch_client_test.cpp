#include "host/dispatch_client.h"

#include <gtest/gtest.h>

#include "counting_object.h"
#include "host/exception.h"

namespace {

TEST(DispatchClient, PassesTheCallOn) {
    CountingDispatch object;
    object.onInvoke = [](mzComVariantC& result, auto&) {
        result.set("answer");
        return mzSuccess;
    };
    mzIDispatchC const client(&object);
    mzComVariantArrayC args;
    args << 1 << 2;
    mzComVariantC result;
    EXPECT_EQ(client.invokeByName("Item", mzCallPropertyPut, args, result), mzSuccess);
    EXPECT_EQ(object.lastCall, "Item/4/2");
    EXPECT_EQ(client.getProperty("Count", result), mzSuccess);
    EXPECT_EQ(object.lastCall, "Count/2/0");
    EXPECT_EQ(client.call("Add", args).getType(), mzTypeString);
    EXPECT_EQ(object.lastCall, "Add/1/2");
    EXPECT_EQ(client.invokeByName(nullptr, mzCallMethod, {}, result), mzSuccess);
    EXPECT_EQ(object.lastCall, "/1/0");
}

TEST(DispatchClient, DropsTheExceptionOfAFailure) {
    CountingDispatch object;
    object.onInvoke = [](mzComVariantC& result, mzComPtrT<mzIException>& exception) {
        result.set(1);
        exception = mzComCreateException("test", "failed", {});
        return mzFailure;
    };
    mzIDispatchC const client{mzComPtrC(&object)};
    mzComVariantC result;
    EXPECT_EQ(client.getProperty("Count", result), mzFailure);
    EXPECT_EQ(client.call("Count", {}).getType(), mzTypeEmpty);
}

TEST(DispatchClient, UnboundClientsFailEveryCall) {
    PlainObject plain;
    for (mzIDispatchC const& client :
         {mzIDispatchC(), mzIDispatchC(&plain), mzIDispatchC(nullptr)}) {
        EXPECT_FALSE(client.isValid());
        mzComVariantC result;
        EXPECT_EQ(client.invokeByName("Count", mzCallMethod, {}, result), mzFailure);
        EXPECT_EQ(client.call("Count", {}).getType(), mzTypeEmpty);
    }
    EXPECT_EQ(plain.references, 0u);
}

TEST(DispatchClient, TheObjectOutlivesTheCall) {
    CountingDispatch object;
    mzIDispatchC client(&object);
    object.onInvoke = [&](mzComVariantC&, auto&) {
        client = mzIDispatchC();
        EXPECT_EQ(object.references, 1u);
        return mzSuccess;
    };
    mzComVariantC result;
    EXPECT_EQ(client.getProperty("Close", result), mzSuccess);
    EXPECT_EQ(object.references, 0u);
}

}  // namespace
