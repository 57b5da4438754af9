#include <gtest/gtest.h>

#include <cstring>

#include "conversion/conversions.h"
#include "module/interfaces.h"
#include "support/native_values.h"
#include "support/recording_object.h"

namespace {

using namespace velk::test;
using velk::com::TextView;
using velk::com::Variant;

struct Converted {
    bool success;
    Variant value;
    unsigned typedByRef = 9;
    unsigned wrapperFlags = 9;
};

Converted convert(mzComVariantC const& source) {
    Converted converted{};
    converted.success = convertMZCOMVariant2MSCOMVariant(
        source, *converted.value.put(), converted.typedByRef, converted.wrapperFlags);
    return converted;
}

TEST(HostToNative, PlainValues) {
    auto const empty = convert(mzComVariantC());
    EXPECT_TRUE(empty.success);
    EXPECT_EQ(empty.value.get().vt, VT_EMPTY);

    auto const integer = convert(mzComVariantC(7));
    EXPECT_TRUE(integer.success);
    EXPECT_EQ(integer.value.get().vt, VT_I4);
    EXPECT_EQ(integer.value.get().lVal, 7);

    auto const number = convert(mzComVariantC(2.5));
    EXPECT_TRUE(number.success);
    EXPECT_EQ(number.value.get().vt, VT_R8);
    EXPECT_EQ(number.value.get().dblVal, 2.5);

    auto const truth = convert(mzComVariantC(true));
    EXPECT_EQ(truth.value.get().vt, VT_I4);
    EXPECT_EQ(truth.value.get().lVal, -1);

    for (auto const* converted : {&empty, &integer, &number, &truth}) {
        EXPECT_EQ(converted->typedByRef, 0U);
        EXPECT_EQ(converted->wrapperFlags, 0U);
    }
}

TEST(HostToNative, TextKeepsEveryCodeUnit) {
    for (TextView const text :
         {TextView(OLESTR("")), TextView(OLESTR("plain")), TextView(OLESTR("a\0\xdc00z"), 4)}) {
        auto const bstr = velk::com::makeBstr(text);
        auto const converted = convert(mzComVariantC(mzComStringC::fromBSTR(bstr.get())));
        ASSERT_TRUE(converted.success);
        ASSERT_EQ(converted.value.get().vt, VT_BSTR);
        EXPECT_EQ(velk::com::viewBstr(converted.value.get().bstrVal), text);
    }
}

TEST(HostToNative, EmptyReferenceIsNullDispatch) {
    mzComVariantC source;
    source.set(mzComPtrT<mzIUnknown>());
    auto const converted = convert(source);
    EXPECT_TRUE(converted.success);
    EXPECT_EQ(converted.value.get().vt, VT_DISPATCH);
    EXPECT_EQ(converted.value.get().pdispVal, nullptr);
    EXPECT_EQ(converted.typedByRef, 1U);
}

TEST(HostToNative, ObjectWithoutDispatchIsNullDispatch) {
    mzComPtrT<mzIException> const exception = mzComCreateException("source", "text", {});
    mzComVariantC source;
    source.set(mzComPtrT<mzIUnknown>(exception.iface()));
    auto const converted = convert(source);
    EXPECT_TRUE(converted.success);
    EXPECT_EQ(converted.value.get().vt, VT_DISPATCH);
    EXPECT_EQ(converted.value.get().pdispVal, nullptr);
    EXPECT_EQ(converted.typedByRef, 1U);
}

TEST(HostToNative, NothingIsNullDispatch) {
    RecordingHolder const nothing(true);
    auto const converted = convert(nothing.asValue());
    EXPECT_TRUE(converted.success);
    EXPECT_EQ(converted.value.get().vt, VT_DISPATCH);
    EXPECT_EQ(converted.value.get().pdispVal, nullptr);
    EXPECT_EQ(converted.typedByRef, 1U);
    EXPECT_EQ(nothing->references(), 1U);
}

TEST(HostToNative, EveryCrossingMakesAnotherFacade) {
    RecordingHolder const host;
    {
        auto const first = convert(host.asValue());
        auto const second = convert(host.asValue());
        for (auto const* converted : {&first, &second}) {
            ASSERT_TRUE(converted->success);
            ASSERT_EQ(converted->value.get().vt, VT_DISPATCH);
            EXPECT_EQ(converted->typedByRef, 0U);
            mzComVariantC back;
            ASSERT_TRUE(
                convertMSCOMVariant2MZCOMVariant(converted->value.get(), back, false, true));
            EXPECT_EQ(objectIn(back), static_cast<mzIUnknown*>(host.dispatch()));
        }
        EXPECT_NE(first.value.get().pdispVal, second.value.get().pdispVal);
        EXPECT_EQ(host->references(), 3U) << "one for the test and one a facade";
    }
    EXPECT_EQ(host->references(), 1U);
}

TEST(HostToNative, TargetNeedNotBeInitialised) {
    VARIANT target;
    std::memset(&target, 0xee, sizeof target);
    unsigned typedByRef = 0;
    unsigned wrapperFlags = 0;
    EXPECT_TRUE(
        convertMZCOMVariant2MSCOMVariant(mzComVariantC(), target, typedByRef, wrapperFlags));
    EXPECT_EQ(target.vt, VT_EMPTY);
}

}  // namespace
