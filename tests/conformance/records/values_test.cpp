// Records inside VARIANTs and SAFEARRAYs.

#include <gtest/gtest.h>

#include "support/fake_objects.h"
#include "support/value_notation.h"
#include "records.h"
#include "support/expected_difference.h"

namespace velk::test {
namespace {

// A VARIANT that owns a new record whose fields hold the object.
void holdObject(Value& value, FakeDispatch& object) {
    auto info = recordNamed(OLESTR("Objects"));
    auto* const objects = static_cast<Objects*>(info->RecordCreate());
    objects->dispatch = &object;
    object.AddRef();
    *value = valueOf(info.release(), objects);
}

TEST(RecordValues, OwnTheirRecord) {
    FakeDispatch object;
    Value value;
    holdObject(value, object);
    EXPECT_EQ(object.references, 2u);
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(value->vt, VT_EMPTY);
    EXPECT_EQ(object.references, 1u);
}

TEST(RecordValues, MayHoldNoRecord) {
    VARIANT value = valueOf(nullptr, nullptr);
    EXPECT_EQ(VariantClear(&value), S_OK);
    auto info = recordNamed(OLESTR("Team"));
    value = valueOf(info.release(), nullptr);
    Value copy;
    EXPECT_EQ(VariantClear(&value), S_OK);
}

TEST(RecordValues, LeaveAReferencedRecordAlone) {
    FakeDispatch object;
    Value value;
    holdObject(value, object);
    VARIANT reference = valueOf(value->pRecInfo, value->pvRecord, VT_BYREF | VT_RECORD);
    VARIANT copy{};
    EXPECT_EQ(VariantCopy(&copy, &reference), S_OK);
    EXPECT_EQ(copy.pvRecord, value->pvRecord);
    EXPECT_EQ(VariantClear(&copy), S_OK);
    EXPECT_EQ(VariantClear(&reference), S_OK);
    EXPECT_EQ(object.references, 2u);
}

void expectCopy(VARIANT const& copy, VARIANT const& original) {
    ASSERT_EQ(copy.vt, VT_RECORD);
    ASSERT_NE(copy.pvRecord, original.pvRecord);
    EXPECT_TRUE(copy.pRecInfo->IsMatchingType(original.pRecInfo));
    auto const& objects = *static_cast<Objects*>(copy.pvRecord);
    EXPECT_EQ(objects.dispatch, static_cast<Objects*>(original.pvRecord)->dispatch);
    EXPECT_EQ(objects.unknown, nullptr);
}

TEST(RecordValues, AreCopiedDeeply) {
    FakeDispatch object;
    {
        Value value;
        holdObject(value, object);
        Value copy("BSTR:old");
        ASSERT_EQ(VariantCopy(&copy, &value), S_OK);
        expectCopy(*copy, *value);
        EXPECT_EQ(object.references, 3u);
        VARIANT reference = valueOf(value->pRecInfo, value->pvRecord, VT_BYREF | VT_RECORD);
        Value direct;
        ASSERT_EQ(VariantCopyInd(&direct, &reference), S_OK);
        expectCopy(*direct, *value);
        VARIANT outer{};
        outer.vt = VT_BYREF | VT_VARIANT;
        outer.pvarVal = &value;
        Value indirect;
        ASSERT_EQ(VariantCopyInd(&indirect, &outer), S_OK);
        expectCopy(*indirect, *value);
        EXPECT_EQ(object.references, 5u);
    }
    EXPECT_EQ(object.references, 1u);
}

TEST(RecordValues, TurnIntoNothingElse) {
    FakeDispatch object;
    Value value;
    holdObject(value, object);
    for (VARTYPE const type : {VT_EMPTY, VT_NULL, VT_I4, VT_BSTR, VT_UNKNOWN, VT_DISPATCH}) {
        Value changed("I4:7");
        EXPECT_EQ(VariantChangeType(&changed, &value, 0, type), DISP_E_TYPEMISMATCH) << type;
        EXPECT_EQ(changed.notation(), "I4:7");
    }
    for (char const* const notation : {"I4:1", "BSTR:x", "DISPATCH:null", "NULL"}) {
        Value other(notation);
        Value changed;
        EXPECT_EQ(VariantChangeType(&changed, &other, 0, VT_RECORD), DISP_E_TYPEMISMATCH)
            << notation;
    }
    Value same;
    ASSERT_EQ(VariantChangeType(&same, &value, 0, VT_RECORD), S_OK);
    expectCopy(*same, *value);
}

TEST(RecordArrays, KnowWhatTheyHold) {
    auto const info = recordNamed(OLESTR("Person"));
    SAFEARRAYBOUND bounds[] = {{2, 0}, {3, 1}};
    SAFEARRAY* const arrays[] = {SafeArrayCreateEx(VT_RECORD, 2, bounds, info.get()),
                                 SafeArrayCreateVectorEx(VT_RECORD, 0, 4, info.get())};
    for (SAFEARRAY* const array : arrays) {
        ASSERT_NE(array, nullptr);
        EXPECT_TRUE(array->fFeatures & FADF_RECORD);
        EXPECT_EQ(SafeArrayGetElemsize(array), sizeof(Person));
        VARTYPE type = VT_EMPTY;
        EXPECT_EQ(SafeArrayGetVartype(array, &type), S_OK);
        EXPECT_EQ(type, VT_RECORD);
        IRecordInfo* kept = nullptr;
        ASSERT_EQ(SafeArrayGetRecordInfo(array, &kept), S_OK);
        EXPECT_EQ(Owned<IRecordInfo>(kept).get(), info.get());
        auto const again = recordNamed(OLESTR("Person"));
        EXPECT_EQ(SafeArraySetRecordInfo(array, again.get()), S_OK);
        ASSERT_EQ(SafeArrayGetRecordInfo(array, &kept), S_OK);
        EXPECT_EQ(Owned<IRecordInfo>(kept).get(), again.get());
        EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    }
    EXPECT_EQ(SafeArrayCreateEx(VT_RECORD, 1, bounds, nullptr), nullptr);
    EXPECT_EQ(SafeArrayCreateVectorEx(VT_RECORD, 0, 1, nullptr), nullptr);
    SAFEARRAY* const numbers = SafeArrayCreateVector(VT_I4, 0, 1);
    IRecordInfo* none = nullptr;
    EXPECT_EQ(SafeArrayGetRecordInfo(numbers, &none), E_INVALIDARG);
    EXPECT_EQ(SafeArraySetRecordInfo(numbers, info.get()), E_INVALIDARG);
    EXPECT_EQ(SafeArrayDestroy(numbers), S_OK);
}

TEST(RecordArrays, CopyTheirElements) {
    auto const info = recordNamed(OLESTR("Person"));
    SAFEARRAY* const array = SafeArrayCreateVectorEx(VT_RECORD, 0, 2, info.get());
    Record<Person> const person(OLESTR("Person"));
    *person = {newText(OLESTR("Ada")), 36};
    for (LONG index : {0, 1, 1}) EXPECT_EQ(SafeArrayPutElement(array, &index, person.get()), S_OK);
    auto const* const elements = static_cast<Person*>(array->pvData);
    EXPECT_EQ(textIn(elements[1].name), "Ada");
    EXPECT_NE(elements[1].name, person->name);

    // What the receiver held goes.
    Record<Person> const got(OLESTR("Person"));
    got->name = newText(OLESTR("old"));
    LONG index = 0;
    EXPECT_EQ(SafeArrayGetElement(array, &index, got.get()), S_OK);
    EXPECT_EQ(textIn(got->name), "Ada");
    EXPECT_NE(got->name, elements[0].name);
    EXPECT_EQ(got->age, 36);
    index = 2;
    EXPECT_EQ(SafeArrayPutElement(array, &index, person.get()), DISP_E_BADINDEX);

    SAFEARRAY* copy = nullptr;
    ASSERT_EQ(SafeArrayCopy(array, &copy), S_OK);
    auto const* const copies = static_cast<Person*>(copy->pvData);
    EXPECT_EQ(textIn(copies[1].name), "Ada");
    EXPECT_NE(copies[1].name, elements[1].name);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    EXPECT_EQ(textIn(copies[0].name), "Ada");
    EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
}

TEST(RecordArrays, ReleaseWhatTheirElementsHold) {
    FakeDispatch object;
    Value record;
    holdObject(record, object);
    SAFEARRAYBOUND bound{3, 0};
    SAFEARRAY* const array = SafeArrayCreateEx(VT_RECORD, 1, &bound, record->pRecInfo);
    for (LONG index : {0, 2}) EXPECT_EQ(SafeArrayPutElement(array, &index, record->pvRecord), S_OK);
    EXPECT_EQ(object.references, 4u);
    VARIANT holder{};
    holder.vt = VT_ARRAY | VT_RECORD;
    holder.parray = array;
    Value copy;
    EXPECT_EQ(VariantCopy(&copy, &holder), S_OK);
    EXPECT_EQ(object.references, 6u);
    EXPECT_EQ(VariantClear(&copy), S_OK);
    EXPECT_EQ(VariantClear(&holder), S_OK);
    EXPECT_EQ(object.references, 2u);
    SAFEARRAY* const vector = SafeArrayCreateVectorEx(VT_RECORD, 0, 1, record->pRecInfo);
    LONG index = 0;
    EXPECT_EQ(SafeArrayPutElement(vector, &index, record->pvRecord), S_OK);
    EXPECT_EQ(SafeArrayDestroyData(vector), S_OK);
    EXPECT_EQ(object.references, 2u);
    EXPECT_EQ(SafeArrayDestroy(vector), S_OK);
}

TEST(RecordArrays, ReleaseElementsThatAreCutOff) {
    FakeDispatch object;
    Value record;
    holdObject(record, object);
    SAFEARRAYBOUND bound{3, 0};
    SAFEARRAY* const array = SafeArrayCreateEx(VT_RECORD, 1, &bound, record->pRecInfo);
    for (LONG index : {0, 2}) EXPECT_EQ(SafeArrayPutElement(array, &index, record->pvRecord), S_OK);
    SAFEARRAYBOUND shorter{1, 0};
    EXPECT_EQ(SafeArrayRedim(array, &shorter), S_OK);
    EXPECT_EQ(object.references, 3u);
    expectDifference(System::wine, "the first records are cut off instead of the last", [&] {
        EXPECT_EQ(static_cast<Objects*>(array->pvData)->dispatch, &object);
        EXPECT_EQ(SafeArrayDestroy(array), S_OK);
        EXPECT_EQ(object.references, 2u);
    });
}

}  // namespace
}  // namespace velk::test
