// Conversions beyond plain values: in place, by reference, objects, arrays.
#include <cstring>

#include <gtest/gtest.h>

#include "fake_objects.h"
#include "value_notation.h"

namespace velk::test {
namespace {

VARIANT objectValue(FakeDispatch& object, VARTYPE type = VT_DISPATCH) {
    VARIANT value;
    VariantInit(&value);
    value.vt = type;
    value.pdispVal = &object;
    return value;
}

TEST(ChangeType, InPlace) {
    Value value("BSTR:12");
    EXPECT_EQ(VariantChangeType(&value, &value, 0, VT_I4), S_OK);
    EXPECT_EQ(value.notation(), "I4:12");
    EXPECT_EQ(VariantChangeType(&value, &value, 0, VT_DECIMAL), S_OK);
    EXPECT_EQ(value.notation(), "DECIMAL:12");
    EXPECT_EQ(VariantChangeType(&value, &value, 0, VT_BSTR), S_OK);
    EXPECT_EQ(value.notation(), "BSTR:12");
    EXPECT_EQ(VariantChangeType(&value, &value, 0, VT_BSTR), S_OK);
    EXPECT_EQ(value.notation(), "BSTR:12");
}

TEST(ChangeType, AFailureKeepsTheDestination) {
    Value text("BSTR:no number");
    Value number("BSTR:kept");
    EXPECT_EQ(VariantChangeType(&number, &text, 0, VT_I4), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(number.notation(), "BSTR:kept");
    EXPECT_EQ(VariantChangeType(&text, &text, 0, VT_I4), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(text.notation(), "BSTR:no number");
    Value large("R8:1e300");
    EXPECT_EQ(VariantChangeType(&large, &large, 0, VT_CY), DISP_E_OVERFLOW);
    EXPECT_EQ(large.notation(), "R8:1e+300");
}

TEST(ChangeType, NullReferencesAreRefused) {
    for (VARTYPE const type :
         {VT_I4, VT_R8, VT_BSTR, VT_DATE, VT_DECIMAL, VT_VARIANT, VT_DISPATCH}) {
        VARIANT reference;
        VariantInit(&reference);
        reference.vt = static_cast<VARTYPE>(VT_BYREF | type);
        Value result("I4:1");
        EXPECT_EQ(VariantChangeType(&result, &reference, 0, VT_I2), DISP_E_TYPEMISMATCH) << type;
        EXPECT_EQ(result.notation(), "I4:1");
    }
}

TEST(ChangeType, ReferencesToReferences) {
    SHORT number = 5;
    VARIANT inner;
    VariantInit(&inner);
    inner.vt = VT_BYREF | VT_I2;
    inner.piVal = &number;
    VARIANT outer;
    VariantInit(&outer);
    outer.vt = VT_BYREF | VT_VARIANT;
    outer.pvarVal = &inner;
    Value result;
    EXPECT_EQ(VariantChangeType(&result, &outer, 0, VT_BSTR), S_OK);
    EXPECT_EQ(result.notation(), "BSTR:5");
    VARIANT outermost = outer;
    outermost.pvarVal = &outer;
    EXPECT_EQ(VariantChangeType(&result, &outermost, 0, VT_I4), E_INVALIDARG);
    // Nothing is converted to a reference, not even the same one.
    EXPECT_EQ(VariantChangeType(&result, &inner, 0, VT_BYREF | VT_I2), DISP_E_TYPEMISMATCH);
}

TEST(ChangeType, ObjectsGiveTheirDefaultValue) {
    FakeDispatch object;
    object.defaultValue = [](VARIANT* value) {
        value->vt = VT_BSTR;
        value->bstrVal = SysAllocString(wide("12").c_str());
        return S_OK;
    };
    VARIANT source = objectValue(object);
    Value result;
    EXPECT_EQ(VariantChangeTypeEx(&result, &source, 0x407, 0, VT_I4), S_OK);
    EXPECT_EQ(result.notation(), "I4:12");
    EXPECT_EQ(object.lastLcid, 0x407U);
    EXPECT_EQ(object.lastFlags, DISPATCH_PROPERTYGET);
    EXPECT_EQ(object.calls, 1);
    EXPECT_EQ(object.references, 1U);

    EXPECT_EQ(VariantChangeType(&result, &source, VARIANT_NOVALUEPROP, VT_I4), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(object.calls, 1);
    object.defaultValue = [](VARIANT*) { return DISP_E_EXCEPTION; };
    EXPECT_EQ(VariantChangeType(&result, &source, 0, VT_I4), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(result.notation(), "I4:12");
}

TEST(ChangeType, ADefaultValueMayBeAnObjectAgain) {
    FakeDispatch inner;
    inner.defaultValue = [](VARIANT* value) {
        value->vt = VT_R8;
        value->dblVal = 2.5;
        return S_OK;
    };
    FakeDispatch outer;
    outer.defaultValue = [&inner](VARIANT* value) {
        value->vt = VT_DISPATCH;
        value->pdispVal = &inner;
        inner.AddRef();
        return S_OK;
    };
    VARIANT source = objectValue(outer);
    Value result;
    EXPECT_EQ(VariantChangeType(&result, &source, 0, VT_BSTR), S_OK);
    EXPECT_EQ(result.notation(), "BSTR:2.5");
    EXPECT_EQ(inner.references, 1U);
}

TEST(ChangeType, ObjectsTurnIntoTheirInterfaces) {
    FakeDispatch object;
    VARIANT source = objectValue(object, VT_UNKNOWN);
    {
        Value result;
        EXPECT_EQ(VariantChangeType(&result, &source, 0, VT_DISPATCH), S_OK);
        EXPECT_EQ(result->pdispVal, &object);
        EXPECT_EQ(object.references, 2U);
    }
    EXPECT_EQ(object.references, 1U);
    Value result;
    EXPECT_EQ(VariantChangeType(&result, &source, 0, VT_I4), DISP_E_TYPEMISMATCH);
    object.answersDispatch = false;
    EXPECT_EQ(VariantChangeType(&result, &source, 0, VT_DISPATCH), E_NOINTERFACE);
    EXPECT_EQ(object.references, 1U);
}

TEST(ChangeType, ArraysKeepTheirTypeOrBecomeText) {
    VARIANT source;
    VariantInit(&source);
    source.vt = VT_ARRAY | VT_UI1;
    source.parray = SafeArrayCreateVector(VT_UI1, 0, 4);
    std::memcpy(source.parray->pvData, "a\0b", 4);
    Value copy;
    EXPECT_EQ(VariantChangeType(&copy, &source, 0, VT_ARRAY | VT_UI1), S_OK);
    EXPECT_NE(copy->parray, source.parray);
    Value text;
    EXPECT_EQ(VariantChangeType(&text, &source, 0, VT_BSTR), S_OK);
    EXPECT_EQ(text.notation(), "BSTR:ab");
    Value bytes;
    EXPECT_EQ(VariantChangeType(&bytes, &text, 0, VT_ARRAY | VT_UI1), S_OK);
    LONG upper = 0;
    EXPECT_EQ(SafeArrayGetUBound(bytes->parray, 1, &upper), S_OK);
    EXPECT_EQ(upper, 3);
    for (VARTYPE const type : {VT_EMPTY, VT_I4, VT_VARIANT, VT_DISPATCH}) {
        EXPECT_EQ(VariantChangeType(&copy, &source, 0, type), DISP_E_TYPEMISMATCH) << type;
    }
    EXPECT_EQ(VariantChangeType(&copy, &source, 0, VT_ARRAY | VT_I4), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(VariantClear(&source), S_OK);
}

}  // namespace
}  // namespace velk::test
