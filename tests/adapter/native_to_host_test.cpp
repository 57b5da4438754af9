#include <gtest/gtest.h>

#include <limits>
#include <map>

#include "VelkQXTProxy/wrapper_interfaces.h"
#include "com/error.h"
#include "conversion/conversions.h"
#include "native_to_host/facade.h"
#include "support/counting_dispatch.h"
#include "support/native_values.h"
#include "support/recording_object.h"

namespace {

using namespace velk::test;
using velk::com::Bstr;
using velk::com::ComPtr;
using velk::com::makeBstr;
using velk::com::Variant;

std::string const refused = "refused";

std::string hexadecimal(unsigned number) {
    return mzComStringC::fromInt(static_cast<int>(number), 16).toUtf8();
}

/// A wrapper as what it wraps, every other value by its content.
std::string describeWrapped(mzComVariantC const& value) {
    mzComPtrC const object(objectIn(value));
    if (mzComPtrT<mzIComVariantWrapper> const wrapper{object}; wrapper.isValid()) {
        unsigned type = 0;
        wrapper->getVartype(type);
        return "wrapped " + hexadecimal(type);
    }
    if (mzComPtrT<mzIComDispatchWrapper>(object).isValid()) return "native object";
    return describe(value);
}

/// The host value as text, "refused" when the value has no host form, "raised"
/// when it cannot even be copied.
std::string convert(VARIANT const& source, bool follow = false, bool wrap = true) {
    mzComVariantC target("left over");
    try {
        if (convertMSCOMVariant2MZCOMVariant(source, target, follow, wrap)) {
            return describeWrapped(target);
        }
    } catch (velk::com::Error const&) {
        return "raised";
    }
    EXPECT_EQ(target.getType(), mzTypeEmpty) << "a refused value leaves something behind";
    return refused;
}

struct NumberRow {
    char const* name;
    VARTYPE type;
    long long bits;  // written over the whole value
    char const* expected;
};

constexpr NumberRow numberRows[] = {
    {"empty", VT_EMPTY, 0, "empty"},
    {"I1", VT_I1, 0x80, "integer -128"},
    {"UI1", VT_UI1, 0xff, "integer 255"},
    {"I2", VT_I2, 0x8000, "integer -32768"},
    {"UI2", VT_UI2, 0xffff, "integer 65535"},
    {"I4", VT_I4, 0x80000000, "integer -2147483648"},
    {"UI4 that fits", VT_UI4, 0x7fffffff, "integer 2147483647"},
    {"UI4 above the host's integers", VT_UI4, 0x80000000, "wrapped 13"},
    {"I8 that fits", VT_I8, -5, "integer -5"},
    {"I8 above the host's integers", VT_I8, 0x80000000, "wrapped 14"},
    {"UI8 that fits", VT_UI8, 5, "integer 5"},
    {"UI8 above the host's integers", VT_UI8, -1, "wrapped 15"},
    {"INT", VT_INT, 7, "integer 7"},
    {"UINT", VT_UINT, 7, "integer 7"},
    {"BOOL true", VT_BOOL, 0xffff, "integer -1"},
    {"BOOL false", VT_BOOL, 0, "integer 0"},
    // Any value but 0 is true.
    {"BOOL 1", VT_BOOL, 1, "integer -1"},
    {"CY 1.5", VT_CY, 15000, "number 1.500000"},
    {"NULL", VT_NULL, 0, "wrapped 1"},
    {"ERROR", VT_ERROR, 0x80020004, "wrapped a"},
    {"VARIANT without a reference", VT_VARIANT, 0x1234, "refused"},
    {"code 15", 15, 0, "raised"},
    {"VOID", VT_VOID, 0, "raised"},
    {"RECORD without content", VT_RECORD, 0, "wrapped 24"},
    {"null array", VT_ARRAY | VT_I4, 0, "wrapped 2003"},
    {"vector", VT_VECTOR | VT_I4, 0, "raised"},
    {"reserved bit", VT_RESERVED | VT_I4, 0, "raised"},
    {"all bits", 0xffff, 0, "refused"},
};

TEST(NativeToHost, NumbersAndTypeCodes) {
    for (auto const& row : numberRows) {
        VARIANT const source = makeValue(row.type, [&](VARIANT& value) { value.llVal = row.bits; });
        EXPECT_EQ(convert(source), row.expected) << row.name;
    }
}

TEST(NativeToHost, NumbersByReference) {
    std::map<VARTYPE, std::string> const otherwise = {
        {VT_EMPTY, "raised"}, {VT_CY, "wrapped 6"}, {VT_NULL, "raised"}, {VT_RECORD, "raised"}};
    for (auto const& row : numberRows) {
        if (row.type == VT_VARIANT || row.expected == refused) continue;
        long long content = row.bits;
        VARIANT const source =
            makeValue(row.type | VT_BYREF, [&](VARIANT& value) { value.byref = &content; });
        auto const found = otherwise.find(row.type);
        EXPECT_EQ(convert(source), found != otherwise.end() ? found->second : row.expected)
            << row.name;
    }
}

TEST(NativeToHost, FloatingPoint) {
    float single = -0.5F;
    double number = 2.5;
    EXPECT_EQ(convert(makeValue(VT_R4, [&](VARIANT& v) { v.fltVal = single; })),
              "number -0.500000");
    EXPECT_EQ(convert(makeValue(VT_R8, [&](VARIANT& v) { v.dblVal = number; })), "number 2.500000");
    EXPECT_EQ(convert(makeValue(VT_R4 | VT_BYREF, [&](VARIANT& v) { v.pfltVal = &single; })),
              "number -0.500000");
    EXPECT_EQ(convert(makeValue(VT_R8 | VT_BYREF, [&](VARIANT& v) { v.pdblVal = &number; })),
              "number 2.500000");
}

TEST(NativeToHost, DecimalIsWrappedAsItsValue) {
    VARIANT source{};
    source.decVal.Lo64 = 5;
    source.vt = VT_DECIMAL;
    EXPECT_EQ(convert(source), "wrapped e");
    DECIMAL content{};
    EXPECT_EQ(convert(makeValue(VT_DECIMAL | VT_BYREF, [&](VARIANT& v) { v.pdecVal = &content; })),
              "wrapped e");
}

TEST(NativeToHost, DateBecomesTheTextThatTheSystemMakes) {
    double day = 36526.5;
    VARIANT const byValue = makeValue(VT_DATE, [&](VARIANT& value) { value.date = day; });
    velk::com::Variant text;
    ASSERT_EQ(velk::com::changeType(byValue, VT_BSTR, text), S_OK);
    std::string const expected = "text " + mzComStringC::fromBSTR(text.get().bstrVal).toUtf8();
    EXPECT_EQ(convert(byValue), expected);
    EXPECT_EQ(convert(makeValue(VT_DATE | VT_BYREF, [&](VARIANT& v) { v.pdate = &day; })),
              expected);
    double const never = std::numeric_limits<double>::infinity();
    EXPECT_EQ(convert(makeValue(VT_DATE, [&](VARIANT& v) { v.date = never; })), "wrapped 7");
}

TEST(NativeToHost, TextKeepsEveryCodeUnit) {
    Bstr const text = makeBstr({OLESTR("a\0\xd800z"), 4});
    VARIANT const source = makeValue(VT_BSTR, [&](VARIANT& v) { v.bstrVal = text.get(); });
    mzComVariantC target;
    ASSERT_TRUE(convertMSCOMVariant2MZCOMVariant(source, target, false, true));
    mzComStringC read;
    ASSERT_EQ(target.get(read), mzSuccess);
    ASSERT_EQ(read.length(), 4);
    EXPECT_EQ(velk::com::TextView(read.oleText(), 4), velk::com::viewBstr(text));
}

TEST(NativeToHost, NullTextIsEmptyText) {
    BSTR none = nullptr;
    EXPECT_EQ(convert(makeValue(VT_BSTR, [](VARIANT& v) { v.bstrVal = nullptr; })), "text ");
    EXPECT_EQ(convert(makeValue(VT_BSTR | VT_BYREF, [&](VARIANT& v) { v.pbstrVal = &none; })),
              "text ");
}

TEST(NativeToHost, NullReferencesHaveNoHostForm) {
    for (int type = 0; type <= 0x48; ++type) {
        VARIANT const source = makeValue(static_cast<VARTYPE>(type | VT_BYREF),
                                         [](VARIANT& value) { value.byref = nullptr; });
        EXPECT_EQ(convert(source), refused) << "type " << type;
        EXPECT_EQ(convert(source, true), refused) << "type " << type;
    }
}

TEST(NativeToHost, ReferencesToValuesAreFollowed) {
    VARIANT number = integerValue(7);
    VARIANT first = referenceTo(number);
    VARIANT second = referenceTo(first);
    VARIANT third = referenceTo(second);
    EXPECT_EQ(convert(first), "integer 7");
    EXPECT_EQ(convert(third, false), "integer 7");
    EXPECT_EQ(convert(third, true), "integer 7");
    number.vt = VT_NULL;
    EXPECT_EQ(convert(third), "wrapped 1");
    EXPECT_EQ(convert(third, false, false), "wrapped 1") << "only the outer value may be refused";
    EXPECT_EQ(convert(third, true, false), refused);
    EXPECT_EQ(convert(number, false, false), refused);
}

TEST(NativeToHost, CirclesOfReferencesEnd) {
    for (std::size_t length : {1U, 2U, 3U, 7U}) {
        for (std::size_t before : {0U, 1U, 4U}) {
            std::vector<VARIANT> chain(before + length);
            for (std::size_t place = 0; place < chain.size(); ++place) {
                std::size_t const next = place + 1 < chain.size() ? place + 1 : before;
                chain[place] = referenceTo(chain[next]);
            }
            EXPECT_EQ(convert(chain[0], false), refused) << length << " after " << before;
            EXPECT_EQ(convert(chain[0], true), refused) << length << " after " << before;
        }
    }
}

TEST(NativeToHost, NullDispatchIsEmpty) {
    IDispatch* none = nullptr;
    EXPECT_EQ(convert(makeValue(VT_DISPATCH, [](VARIANT& v) { v.pdispVal = nullptr; })), "empty");
    EXPECT_EQ(convert(makeValue(VT_DISPATCH | VT_BYREF, [&](VARIANT& v) { v.ppdispVal = &none; })),
              "empty");
}

TEST(NativeToHost, FacadeComesBackAsItsHostObject) {
    RecordingHolder host;
    ComPtr<Ivelkdspwrap> facade;
    ASSERT_EQ(velk::adapter::createBoundFacade(host.dispatch(), facade), S_OK);
    EXPECT_EQ(host->references(), 2U) << "the holder and the facade";
    IDispatch* pointer = facade.get();
    VARIANT const byValue = makeValue(VT_DISPATCH, [&](VARIANT& v) { v.pdispVal = pointer; });
    VARIANT const byReference =
        makeValue(VT_DISPATCH | VT_BYREF, [&](VARIANT& v) { v.ppdispVal = &pointer; });
    for (VARIANT const& source : {byValue, byReference}) {
        mzComVariantC target;
        ASSERT_TRUE(convertMSCOMVariant2MZCOMVariant(source, target, false, true));
        EXPECT_EQ(objectIn(target), static_cast<mzIUnknown*>(host.dispatch()));
        EXPECT_EQ(host->references(), 3U);
    }
    EXPECT_EQ(host->references(), 2U);
    facade.reset();
    EXPECT_EQ(host->references(), 1U);
}

TEST(NativeToHost, FacadeAsUnknownIsNotUnwrapped) {
    RecordingHolder host;
    ComPtr<Ivelkdspwrap> facade;
    ASSERT_EQ(velk::adapter::createBoundFacade(host.dispatch(), facade), S_OK);
    VARIANT const source = makeValue(VT_UNKNOWN, [&](VARIANT& v) { v.punkVal = facade.get(); });
    EXPECT_EQ(convert(source), "native object");
    EXPECT_EQ(host->references(), 2U);
}

TEST(NativeToHost, ForeignObjectsAreNeverTakenForFacades) {
    // A facade must exist: only then is there something to be mistaken for.
    RecordingHolder host;
    ComPtr<Ivelkdspwrap> facade;
    ASSERT_EQ(velk::adapter::createBoundFacade(host.dispatch(), facade), S_OK);
    for (IID const* claimed : {static_cast<IID const*>(nullptr), &IID_Ivelkdspwrap}) {
        CountingDispatch foreign(claimed);
        VARIANT const source = makeValue(VT_DISPATCH, [&](VARIANT& v) { v.pdispVal = &foreign; });
        EXPECT_EQ(convert(source), "native object");
        EXPECT_EQ(foreign.references(), 1U);
    }
}

TEST(NativeToHost, BareInterfacesAreWrapped) {
    VARIANT const none = makeValue(VT_UNKNOWN, [](VARIANT& v) { v.punkVal = nullptr; });
    EXPECT_EQ(convert(none), "wrapped d");
    EXPECT_EQ(convert(none, true, false), "wrapped d") << "whatever the caller says";
}

TEST(NativeToHost, WhatIsWrappedDoesNotReferToTheCaller) {
    mzComVariantC target;
    {
        DECIMAL content{};
        content.Lo64 = 7;
        VARIANT const source =
            makeValue(VT_DECIMAL | VT_BYREF, [&](VARIANT& v) { v.pdecVal = &content; });
        ASSERT_TRUE(convertMSCOMVariant2MZCOMVariant(source, target, false, true));
        content.Lo64 = 8;
    }
    Variant back;
    unsigned typedByRef = 0;
    unsigned flags = 9;
    ASSERT_TRUE(convertMZCOMVariant2MSCOMVariant(target, *back.address(), typedByRef, flags));
    EXPECT_EQ(back.get().vt, VT_DECIMAL);
    EXPECT_EQ(back.get().decVal.Lo64, 7U);
    EXPECT_EQ(typedByRef, 1U);
    EXPECT_EQ(flags, 0U);
}

}  // namespace
