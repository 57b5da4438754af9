#include <gtest/gtest.h>

#include "com/error.h"
#include "conversion/conversions.h"
#include "native_to_host/facade.h"
#include "support/counting_dispatch.h"
#include "support/crossings.h"
#include "support/data_table.h"
#include "support/native_values.h"

namespace {

using namespace velk::test;
using velk::com::ComPtr;

std::string const refused = "refused";

/// The host value as text, "refused" when the value has no host form, "raised"
/// when it cannot even be copied.
std::string convert(VARIANT const& source, bool follow = false, bool wrap = true) {
    mzComVariantC target("left over");
    try {
        if (convertMSCOMVariant2MZCOMVariant(source, target, follow, wrap)) {
            return described(target);
        }
    } catch (velk::com::Error const&) {
        return "raised";
    }
    EXPECT_EQ(target.getType(), mzTypeEmpty) << "a refused value leaves something behind";
    return refused;
}

/// The value itself, a reference of its type, where there is such a thing, and one
/// as to a VARIANT.
std::string convertForms(VARIANT& value, bool follow, bool wrap) {
    VARIANT reference{};
    reference.vt = value.vt | VT_BYREF;
    reference.byref = value.vt == VT_DECIMAL ? static_cast<void*>(&value) : &value.llVal;
    bool const isReference = value.vt == VT_VARIANT || (value.vt & VT_BYREF);
    std::string const own = convert(value, follow, wrap);
    std::string const referred = isReference ? own : convert(reference, follow, wrap);
    std::string const variant = convert(referenceTo(value), follow, wrap);
    return own == referred && own == variant ? own : own + " | " + referred + " | " + variant;
}

/// A type in hexadecimal, and the content in 64 bits likewise.
VARIANT rawValue(std::string const& cell) {
    VARIANT value{};
    value.vt = static_cast<VARTYPE>(std::stoul(cell, nullptr, 16));
    value.ullVal = std::stoull(cell.substr(cell.find(':') + 1), nullptr, 16);
    return value;
}

TEST(NativeToHost, ValuesAsTheTableSays) {
    expectTable("bridge/native_to_host.tsv", [](DataRow const& row) {
        std::string const& cell = row["value"];
        Value owned(std::isdigit(cell[0]) ? "EMPTY" : cell);
        VARIANT value = std::isdigit(cell[0]) ? rawValue(cell) : *owned;
        std::string const wrapped = convertForms(value, false, true);
        EXPECT_EQ(convertForms(value, true, true), wrapped) << "whoever follows the references";
        std::string const plain = convertForms(value, false, false);
        std::string const followed = convertForms(value, true, false);
        std::string text = wrapped;
        if (plain != wrapped) text += " // " + plain;
        if (followed != plain) text += " // " + followed;
        return text;
    });
}

TEST(NativeToHost, ReferencesAreFollowedToTheirEnd) {
    for (int type = 0; type <= 0x48; ++type) {
        VARIANT source{};
        source.vt = static_cast<VARTYPE>(type | VT_BYREF);
        EXPECT_EQ(convert(source), refused) << "type " << type;
        EXPECT_EQ(convert(source, true), refused) << "type " << type;
    }
    // Chains of references: to a value, and in circles of each length.
    for (std::size_t const length : {0U, 1U, 2U, 3U, 7U}) {
        for (std::size_t const before : {0U, 1U, 2U, 5U}) {
            if (length + before == 0) continue;
            std::vector<VARIANT> chain(before + length, makeValue(VT_NULL, [](VARIANT&) {}));
            for (std::size_t place = 0; place + (length == 0) < chain.size(); ++place) {
                std::size_t const next = place + 1 < chain.size() ? place + 1 : before;
                chain[place] = referenceTo(chain[next]);
            }
            bool const isValue = length == 0;
            bool const isPlain = isValue && before == 1;
            SCOPED_TRACE(std::to_string(length) + " after " + std::to_string(before));
            for (bool const follow : {false, true}) {
                EXPECT_EQ(convert(chain[0], follow), isValue ? "wrapped 1" : refused);
                // Only the outer value may be refused.
                EXPECT_EQ(convert(chain[0], follow, false),
                          isValue && !follow && !isPlain ? "wrapped 1" : refused);
            }
        }
    }
}

TEST(NativeToHost, FacadeComesBackAsItsHostObject) {
    RecordingHolder host;
    ComPtr<Ivelkdspwrap> facade;
    ASSERT_EQ(velk::adapter::createBoundFacade(host.dispatch(), facade), S_OK);
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
    VARIANT const unknown = makeValue(VT_UNKNOWN, [&](VARIANT& v) { v.punkVal = pointer; });
    EXPECT_EQ(convert(unknown), "native object") << "an unknown object is not unwrapped";
    // Whatever they answer to, others are never taken for facades.
    for (IID const* claimed : {static_cast<IID const*>(nullptr), &IID_Ivelkdspwrap}) {
        CountingDispatch foreign(claimed);
        VARIANT const source = makeValue(VT_DISPATCH, [&](VARIANT& v) { v.pdispVal = &foreign; });
        EXPECT_EQ(convert(source), "native object");
        EXPECT_EQ(foreign.references(), 1U);
    }
    EXPECT_EQ(host->references(), 2U);
}

TEST(NativeToHost, WhatIsWrappedDoesNotReferToTheCaller) {
    mzComVariantC target;
    {
        Value content("DECIMAL:7");
        VARIANT const source =
            makeValue(VT_DECIMAL | VT_BYREF, [&](VARIANT& v) { v.pdecVal = &content->decVal; });
        ASSERT_TRUE(convertMSCOMVariant2MZCOMVariant(source, target, false, true));
        content->decVal.Lo64 = 8;
    }
    Value back;
    unsigned typedByRef = 0;
    unsigned flags = 9;
    ASSERT_TRUE(convertMZCOMVariant2MSCOMVariant(target, *back, typedByRef, flags));
    EXPECT_EQ(back.notation(), "DECIMAL:7");
    EXPECT_EQ(typedByRef, 1U);
    EXPECT_EQ(flags, 0U);
}

}  // namespace
