#include <gtest/gtest.h>

#include <cstring>

#include "conversion/conversions.h"
#include "support/crossings.h"
#include "support/data_table.h"

namespace {

using namespace velk::test;

/// What a host value becomes, and `own type` where a reference to it has its type.
struct Converted {
    explicit Converted(mzComVariantC const& source) {
        // The target need not be initialised.
        std::memset(&*value, 0xee, sizeof(VARIANT));
        unsigned typedByRef = 9;
        unsigned wrapperFlags = 9;
        EXPECT_TRUE(convertMZCOMVariant2MSCOMVariant(source, *value, typedByRef, wrapperFlags));
        EXPECT_EQ(wrapperFlags, 0U);
        notation = value.notation();
        if (typedByRef) notation += typedByRef == 1 ? ", own type" : ", what?";
    }
    mzComVariantC back() {
        mzComVariantC host;
        EXPECT_TRUE(convertMSCOMVariant2MZCOMVariant(*value, host, false, true));
        return host;
    }

    Value value;
    std::string notation;
};

TEST(HostToNative, ValuesAsTheTableSays) {
    expectTable("bridge/host_to_native.tsv", [](DataRow const& row) {
        Converted converted(hostValue(row["value"]));
        return converted.notation + " | " + described(converted.back());
    });
}

TEST(HostToNative, WhatCannotBeCalledIsNullDispatch) {
    RecordingHolder const nothing(true);
    mzComVariantC exception;
    exception.set(mzComPtrT<mzIUnknown>(mzComCreateException("source", "text", {}).iface()));
    EXPECT_EQ(Converted(exception).notation, "DISPATCH:null, own type");
    EXPECT_EQ(Converted(nothing.asValue()).notation, "DISPATCH:null, own type");
    EXPECT_EQ(nothing->references(), 1U);
}

TEST(HostToNative, EveryCrossingMakesAnotherFacade) {
    RecordingHolder const host;
    {
        Converted first(host.asValue());
        Converted second(host.asValue());
        for (auto* const converted : {&first, &second}) {
            EXPECT_EQ(converted->notation, "DISPATCH:object");
            EXPECT_EQ(objectIn(converted->back()), static_cast<mzIUnknown*>(host.dispatch()));
        }
        EXPECT_NE(first.value->pdispVal, second.value->pdispVal);
        EXPECT_EQ(host->references(), 3U) << "one for the test and one a facade";
    }
    EXPECT_EQ(host->references(), 1U);
}

}  // namespace
