// Records with fields that are SAFEARRAYs.

#include "support/value_notation.h"
#include "content.h"

namespace velk::test {
namespace {

template <typename Element>
Element const* elementsOf(SAFEARRAY const* array) {
    return static_cast<Element*>(array->pvData);
}

Content const lists[] = {
    {OLESTR("Lists"),
     [](void* record, FakeDispatch&) {
         auto& lists = as<Lists>(record);
         lists.texts = SafeArrayCreateVector(VT_BSTR, 0, 2);
         static_cast<BSTR*>(lists.texts->pvData)[1] = newText(OLESTR("second"));
         lists.people = peopleOf({40, 41});
     },
     0, [](void const* record) { return !as<Lists>(record).texts && !as<Lists>(record).people; },
     [](void const* copy, void const* original) {
         auto const& lists = as<Lists>(copy);
         if (!lists.texts || lists.texts == as<Lists>(original).texts || !lists.people)
             return false;
         return textIn(elementsOf<BSTR>(lists.texts)[1]) == "second" &&
                textIn(elementsOf<Person>(lists.people)[1].name) == "b" &&
                elementsOf<Person>(lists.people)[1].age == 41;
     }},
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Arrays, RecordContent, testing::ValuesIn(lists), nameOfContent);

namespace {

class ListFields : public testing::Test {
  protected:
    Record<Lists> record{OLESTR("Lists")};

    HRESULT put(OLECHAR const* name, VARIANT* value) {
        return record.info->PutField(INVOKE_PROPERTYPUT, record.get(), name, value);
    }
    HRESULT putNoCopy(OLECHAR const* name, VARIANT* value) {
        return record.info->PutFieldNoCopy(INVOKE_PROPERTYPUT, record.get(), name, value);
    }
};

void holdArray(Value& value, VARTYPE type, SAFEARRAY* array) {
    value->vt = VT_ARRAY | type;
    value->parray = array;
}

TEST_F(ListFields, AreCopied) {
    record->people = peopleOf({1, 2});
    Value people;
    ASSERT_EQ(record.info->GetField(record.get(), OLESTR("people"), &people), S_OK);
    ASSERT_EQ(people->vt, VT_ARRAY | VT_RECORD);
    ASSERT_NE(people->parray, record->people);
    EXPECT_EQ(elementsOf<Person>(people->parray)[1].age, 2);
    Value texts;
    ASSERT_EQ(record.info->GetField(record.get(), OLESTR("texts"), &texts), S_OK);
    EXPECT_EQ(texts->vt, VT_ARRAY | VT_BSTR);
    EXPECT_EQ(texts->parray, nullptr);
}

TEST_F(ListFields, AreReferredToWhereTheyStand) {
    Value value;
    PVOID fixedArray = this;
    ASSERT_EQ(record.info->GetFieldNoCopy(record.get(), OLESTR("people"), &value, &fixedArray),
              S_OK);
    EXPECT_EQ(value->vt, VT_BYREF | VT_ARRAY | VT_RECORD);
    EXPECT_EQ(value->pparray, &record->people);
    EXPECT_EQ(fixedArray, nullptr);
}

TEST_F(ListFields, TakeArraysOfTheirElementsOnly) {
    auto const spot = recordNamed(OLESTR("Spot"));
    Value people;
    holdArray(people, VT_RECORD, peopleOf({3}));
    Value spots;
    holdArray(spots, VT_RECORD, SafeArrayCreateVectorEx(VT_RECORD, 0, 1, spot.get()));
    Value numbers;
    holdArray(numbers, VT_I4, SafeArrayCreateVector(VT_I4, 0, 1));
    Value number("I4:1");
    ASSERT_EQ(put(OLESTR("people"), &people), S_OK);
    EXPECT_NE(record->people, people->parray);
    EXPECT_EQ(elementsOf<Person>(record->people)->age, 3);
    for (VARIANT* wrong : {&spots, &numbers, &number}) {
        EXPECT_EQ(put(OLESTR("people"), wrong), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(putNoCopy(OLESTR("people"), wrong), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(put(OLESTR("texts"), wrong), DISP_E_TYPEMISMATCH);
    }
    SAFEARRAY* const moved = people->parray;
    EXPECT_EQ(putNoCopy(OLESTR("people"), &people), S_OK);
    EXPECT_EQ(record->people, moved);
    EXPECT_EQ(people->vt, VT_EMPTY);
}

TEST_F(ListFields, KeepALockedArray) {
    record->people = peopleOf({1});
    ASSERT_EQ(SafeArrayLock(record->people), S_OK);
    Value people;
    holdArray(people, VT_RECORD, peopleOf({3}));
    EXPECT_EQ(put(OLESTR("people"), &people), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(record.info->RecordClear(record.get()), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(elementsOf<Person>(record->people)->age, 1);
    ASSERT_EQ(SafeArrayUnlock(record->people), S_OK);
}

}  // namespace
}  // namespace velk::test
