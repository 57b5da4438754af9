// Arrays whose elements own something.
#include <gtest/gtest.h>

#include "fake_objects.h"
#include "value_notation.h"

namespace velk::test {
namespace {

TEST(SafeArrayElements, ObjectsAreCounted) {
    FakeDispatch object;
    SAFEARRAYBOUND bound{3, 0};
    SAFEARRAY* const array = SafeArrayCreate(VT_UNKNOWN, 1, &bound);
    for (LONG index = 0; index < 3; ++index) {
        ASSERT_EQ(SafeArrayPutElement(array, &index, static_cast<IUnknown*>(&object)), S_OK);
    }
    EXPECT_EQ(object.references, 4U);

    LONG index = 1;
    IUnknown* got = nullptr;
    EXPECT_EQ(SafeArrayGetElement(array, &index, &got), S_OK);
    EXPECT_EQ(object.references, 5U);
    got->Release();
    EXPECT_EQ(SafeArrayPutElement(array, &index, nullptr), S_OK);
    EXPECT_EQ(object.references, 3U);

    SAFEARRAY* copy = nullptr;
    ASSERT_EQ(SafeArrayCopy(array, &copy), S_OK);
    EXPECT_EQ(object.references, 5U);
    EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
    EXPECT_EQ(object.references, 3U);

    SAFEARRAYBOUND shorter{1, 0};
    EXPECT_EQ(SafeArrayRedim(array, &shorter), S_OK);
    EXPECT_EQ(object.references, 2U);
    SAFEARRAYBOUND longer{4, 0};
    EXPECT_EQ(SafeArrayRedim(array, &longer), S_OK);
    EXPECT_EQ(object.references, 2U);
    index = 3;
    EXPECT_EQ(SafeArrayGetElement(array, &index, &got), S_OK);
    EXPECT_EQ(got, nullptr);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    EXPECT_EQ(object.references, 1U);
}

TEST(SafeArrayElements, TextsAreCopied) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_BSTR, 0, 2);
    BSTR const text = SysAllocString(wide("text").c_str());
    LONG index = 0;
    ASSERT_EQ(SafeArrayPutElement(array, &index, text), S_OK);
    ASSERT_EQ(SafeArrayPutElement(array, &index, text), S_OK);
    SysFreeString(text);
    BSTR got = nullptr;
    ASSERT_EQ(SafeArrayGetElement(array, &index, &got), S_OK);
    EXPECT_EQ(narrow(got, SysStringLen(got)), "text");
    EXPECT_NE(got, static_cast<BSTR*>(array->pvData)[0]);
    SysFreeString(got);
    SAFEARRAY* copy = nullptr;
    ASSERT_EQ(SafeArrayCopy(array, &copy), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    EXPECT_EQ(narrow(static_cast<BSTR*>(copy->pvData)[0], 4), "text");
    EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
}

TEST(SafeArrayElements, ValuesAreClearedWithTheArray) {
    FakeDispatch object;
    SAFEARRAYBOUND bounds[] = {{2, 0}, {2, 0}};
    SAFEARRAY* const array = SafeArrayCreate(VT_VARIANT, 2, bounds);
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_DISPATCH;
    value.pdispVal = &object;
    LONG first[] = {0, 1};
    LONG second[] = {1, 0};
    EXPECT_EQ(SafeArrayPutElement(array, first, &value), S_OK);
    EXPECT_EQ(SafeArrayPutElement(array, second, &value), S_OK);
    Value text("BSTR:over it");
    EXPECT_EQ(SafeArrayPutElement(array, second, &text), S_OK);
    EXPECT_EQ(object.references, 2U);
    Value got;
    EXPECT_EQ(SafeArrayGetElement(array, second, &got), S_OK);
    EXPECT_EQ(got.notation(), "BSTR:over it");

    VARIANT holder;
    VariantInit(&holder);
    holder.vt = VT_ARRAY | VT_VARIANT;
    holder.parray = array;
    {
        Value copy;
        EXPECT_EQ(VariantCopy(&copy, &holder), S_OK);
        EXPECT_EQ(object.references, 3U);
    }
    EXPECT_EQ(VariantClear(&holder), S_OK);
    EXPECT_EQ(object.references, 1U);
}

TEST(SafeArrayElements, InterfaceIdsAreKept) {
    SAFEARRAYBOUND bound{1, 0};
    SAFEARRAY* const array = SafeArrayCreate(VT_DISPATCH, 1, &bound);
    GUID id{};
    EXPECT_EQ(SafeArrayGetIID(array, &id), S_OK);
    EXPECT_TRUE(id == IID_IDispatch);
    EXPECT_EQ(SafeArraySetIID(array, IID_IUnknown), S_OK);
    SAFEARRAY* copy = nullptr;
    ASSERT_EQ(SafeArrayCopy(array, &copy), S_OK);
    EXPECT_EQ(SafeArrayGetIID(copy, &id), S_OK);
    EXPECT_TRUE(id == IID_IUnknown);
    EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    SAFEARRAY* const numbers = SafeArrayCreateVector(VT_I4, 0, 1);
    EXPECT_EQ(SafeArrayGetIID(numbers, &id), E_INVALIDARG);
    EXPECT_EQ(SafeArrayDestroy(numbers), S_OK);
}

// Memory that the caller owns is emptied, and stays.
TEST(SafeArrayElements, ForeignMemoryIsNotFreed) {
    FakeDispatch object;
    IUnknown* elements[2] = {&object, nullptr};
    object.AddRef();
    SAFEARRAY* array = nullptr;
    ASSERT_EQ(SafeArrayAllocDescriptor(1, &array), S_OK);
    array->cbElements = sizeof(IUnknown*);
    array->fFeatures = FADF_STATIC | FADF_UNKNOWN;
    array->rgsabound[0] = {2, 0};
    array->pvData = elements;
    EXPECT_EQ(SafeArrayDestroyData(array), S_OK);
    EXPECT_EQ(object.references, 1U);
    EXPECT_EQ(elements[0], nullptr);
    array->pvData = nullptr;
    array->fFeatures = 0;
    EXPECT_EQ(SafeArrayDestroyDescriptor(array), S_OK);
}

}  // namespace
}  // namespace velk::test
