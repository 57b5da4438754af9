// VARIANTs without conversion: initialising, clearing and copying.
#include <gtest/gtest.h>

#include "fake_objects.h"
#include "support/expected_difference.h"
#include "value_notation.h"

namespace velk::test {
namespace {

TEST(Variant, ClearRefusesWhatNoVariantCarries) {
    constexpr VARTYPE bad[] = {15,
                               24,
                               25,
                               37,
                               VT_BYREF | VT_EMPTY,
                               VT_ARRAY,
                               VT_VECTOR,
                               VT_VECTOR | VT_I4,
                               VT_RESERVED | VT_I4,
                               VT_LPWSTR,
                               VT_ARRAY | VT_NULL,
                               VT_BYREF | 15};
    for (VARTYPE const type : bad) {
        VARIANT value;
        VariantInit(&value);
        value.vt = type;
        EXPECT_EQ(VariantClear(&value), DISP_E_BADVARTYPE) << type;
        EXPECT_EQ(value.vt, type);
        Value copy("I4:7");
        EXPECT_EQ(VariantCopy(&copy, &value), DISP_E_BADVARTYPE) << type;
        EXPECT_EQ(copy.notation(), "I4:7");
    }
}

TEST(Variant, ClearReleasesObjectsButNotWhatAReferencePointsAt) {
    FakeDispatch object;
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_DISPATCH;
    value.pdispVal = &object;
    object.AddRef();
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(value.vt, VT_EMPTY);
    EXPECT_EQ(object.references, 1U);

    IDispatch* pointer = &object;
    value.vt = VT_BYREF | VT_DISPATCH;
    value.ppdispVal = &pointer;
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(object.references, 1U);
}

TEST(Variant, CopyOwnsWhatItHolds) {
    FakeDispatch object;
    VARIANT source;
    VariantInit(&source);
    source.vt = VT_UNKNOWN;
    source.punkVal = &object;
    VARIANT copy;
    VariantInit(&copy);
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(object.references, 2U);
    EXPECT_EQ(VariantCopy(&copy, &copy), S_OK);
    EXPECT_EQ(object.references, 2U);
    EXPECT_EQ(VariantClear(&copy), S_OK);
    EXPECT_EQ(object.references, 1U);

    Value text;
    text->vt = VT_BSTR;
    text->bstrVal = SysAllocStringByteLen("abc", 3);
    Value textCopy("I4:1");
    EXPECT_EQ(VariantCopy(&textCopy, &text), S_OK);
    EXPECT_NE(textCopy->bstrVal, text->bstrVal);
    EXPECT_EQ(SysStringByteLen(textCopy->bstrVal), 3U);
}

TEST(Variant, CopyIndFollowsReferences) {
    LONG number = 42;
    VARIANT reference;
    VariantInit(&reference);
    reference.vt = VT_BYREF | VT_I4;
    reference.plVal = &number;
    Value copy;
    EXPECT_EQ(VariantCopyInd(&copy, &reference), S_OK);
    EXPECT_EQ(copy.notation(), "I4:42");

    VARIANT outer;
    VariantInit(&outer);
    outer.vt = VT_BYREF | VT_VARIANT;
    outer.pvarVal = &reference;
    number = 43;
    EXPECT_EQ(VariantCopyInd(&copy, &outer), S_OK);
    EXPECT_EQ(copy.notation(), "I4:43");

    // No further: a reference to a reference to a VARIANT is malformed.
    VARIANT outermost;
    VariantInit(&outermost);
    outermost.vt = VT_BYREF | VT_VARIANT;
    outermost.pvarVal = &outer;
    EXPECT_EQ(VariantCopyInd(&copy, &outermost), E_INVALIDARG);

    // In place: the reference turns into what it points at.
    EXPECT_EQ(VariantCopyInd(&reference, &reference), S_OK);
    EXPECT_EQ(reference.vt, VT_I4);
    EXPECT_EQ(reference.lVal, 43);
}

TEST(Variant, ReferencesOfEveryTypeAreFollowed) {
    for (char const* const notation :
         {"I1:-1", "UI1:255", "I2:-300", "UI2:65535", "I4:-70000", "UI4:4000000000",
          "I8:-5000000000", "UI8:18446744073709551615", "INT:-1", "UINT:1", "R4:1.5", "R8:-2.5",
          "CY:1.2345", "DATE:2.25", "BOOL:-1", "ERROR:80020004", "DECIMAL:-1.50", "BSTR:text"}) {
        Value value(notation);
        VARIANT reference;
        VariantInit(&reference);
        reference.vt = VT_BYREF | value->vt;
        reference.byref = value->vt == VT_DECIMAL ? static_cast<void*>(&value->decVal)
                                                  : static_cast<void*>(&value->llVal);
        Value copy;
        EXPECT_EQ(VariantCopyInd(&copy, &reference), S_OK) << notation;
        EXPECT_EQ(copy.notation(), notation);
        Value same;
        EXPECT_EQ(VariantChangeType(&same, &reference, 0, value->vt), S_OK) << notation;
        EXPECT_EQ(same.notation(), notation);
    }
}

TEST(Variant, ALockedArrayStopsClearing) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_I4, 0, 2);
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_ARRAY | VT_I4;
    value.parray = array;
    ASSERT_EQ(SafeArrayLock(array), S_OK);
    EXPECT_EQ(VariantClear(&value), DISP_E_ARRAYISLOCKED);
    ASSERT_EQ(SafeArrayUnlock(array), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(Variant, ALockedArrayIsNotOverwritten) {
    for (bool const copies : {true, false}) {
        SAFEARRAY* const array = SafeArrayCreateVector(VT_I4, 0, 2);
        ASSERT_EQ(SafeArrayLock(array), S_OK);
        VARIANT value;
        VariantInit(&value);
        value.vt = VT_ARRAY | VT_I4;
        value.parray = array;
        Value number("I4:1");
        expectDifference(System::wine, "a copy lets go of a locked array", [&] {
            EXPECT_EQ(copies ? VariantCopy(&value, &number)
                             : VariantChangeType(&value, &number, 0, VT_R8),
                      DISP_E_ARRAYISLOCKED);
            EXPECT_EQ(value.vt, VT_ARRAY | VT_I4);
        });
        EXPECT_EQ(SafeArrayUnlock(array), S_OK);
        EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    }
}

}  // namespace
}  // namespace velk::test
