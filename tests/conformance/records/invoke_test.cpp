// Late-bound calls that take and give records.

#include <gtest/gtest.h>

#include "support/value_notation.h"
#include "register.h"
#include "support/expected_difference.h"

namespace velk::test {
namespace {

// Whatever has to do with a record in a late-bound call.
void passing(std::function<void()> const& calls) {
    expectDifference(System::wine, "late-bound calls pass no records", calls);
}

enum Member { birthday = 1, oldest, find, everyone, greet, move };

class RecordCalls : public testing::Test {
  protected:
    RecordCalls() { *ada = {newText(OLESTR("Ada")), 3}; }

    RegisterCall call;
    Record<Person> ada{OLESTR("Person")};
    Record<Spot> spot{OLESTR("Spot")};
};

TEST_F(RecordCalls, PassRecordsInTheirPlace) {
    VARIANT value = valueOf(ada.info.get(), ada.get());
    VARIANT outer{};
    outer.vt = VT_BYREF | VT_VARIANT;
    outer.pvarVal = &value;
    passing([&] {
        ASSERT_EQ(call.run(birthday, {value}), S_OK);
        EXPECT_EQ(call.object.seen, ada.get());
        ASSERT_EQ(call.run(birthday, {valueOf(ada.info.get(), ada.get(), VT_BYREF | VT_RECORD)}),
                  S_OK);
        EXPECT_EQ(call.object.seen, ada.get());
        EXPECT_EQ(ada->age, 5);
        ASSERT_EQ(call.run(birthday, {outer}), S_OK);
        EXPECT_EQ(ada->age, 6);
        EXPECT_EQ(textIn(ada->name), "Ada");
    });
}

TEST_F(RecordCalls, RefuseOtherRecords) {
    VARIANT const other = valueOf(spot.info.get(), spot.get());
    VARIANT number{};
    number.vt = VT_I4;
    passing([&] {
        EXPECT_EQ(call.run(birthday, {number}), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(call.run(birthday, {other}), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(call.object.seen, nullptr);
    });
}

TEST_F(RecordCalls, GiveRecords) {
    VARIANT people{};
    people.vt = VT_ARRAY | VT_RECORD;
    people.parray = peopleOf({40, 60, 50});
    passing([&] {
        ASSERT_EQ(call.run(oldest, {people}), S_OK);
        ASSERT_EQ(call.result.vt, VT_RECORD);
        EXPECT_TRUE(call.result.pRecInfo->IsMatchingType(ada.info.get()));
        auto const& person = *static_cast<Person*>(call.result.pvRecord);
        EXPECT_EQ(textIn(person.name), "b");
        EXPECT_EQ(person.age, 60);
    });
    EXPECT_EQ(VariantClear(&people), S_OK);
}

TEST_F(RecordCalls, GiveArraysOfRecords) {
    passing([&] {
        ASSERT_EQ(call.run(everyone, {}), S_OK);
        ASSERT_EQ(call.result.vt, VT_ARRAY | VT_RECORD);
        auto const& last = static_cast<Person*>(call.result.parray->pvData)[2];
        EXPECT_EQ(textIn(last.name), "c");
        EXPECT_EQ(last.age, 30);
    });
}

TEST_F(RecordCalls, FillRecordsOfTheCaller) {
    VARIANT name{};
    name.vt = VT_BSTR;
    name.bstrVal = newText(OLESTR("Bob"));
    for (VARTYPE const type : {VT_BYREF | VT_RECORD, +VT_RECORD}) {
        Record<Person> const found(OLESTR("Person"));
        // Given up by the call: the member only writes there.
        found->name = newText(OLESTR("old"));
        passing([&] {
            ASSERT_EQ(call.run(find, {name, valueOf(found.info.get(), found.get(), type)}), S_OK);
            EXPECT_EQ(textIn(found->name), "Bob");
            EXPECT_EQ(call.result.vt, VT_BOOL);
        });
    }
    SysFreeString(name.bstrVal);
}

TEST_F(RecordCalls, FillEmptyVariants) {
    Value name("BSTR:Bob");
    Value found;
    VARIANT reference{};
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = &found;
    passing([&] {
        ASSERT_EQ(call.run(find, {*name, reference}), S_OK);
        ASSERT_EQ(found->vt, VT_RECORD);
        EXPECT_EQ(textIn(static_cast<Person*>(found->pvRecord)->name), "Bob");
    });
}

TEST_F(RecordCalls, PassRecordsByValue) {
    passing([&] {
        ASSERT_EQ(call.run(greet, {valueOf(ada.info.get(), ada.get())}), S_OK);
        ASSERT_EQ(call.result.vt, VT_BSTR);
        EXPECT_EQ(textIn(call.result.bstrVal), "Ada3");
    });
    VariantClear(&call.result);
    *spot = {4, 0.5f};
    Value by("R8:2");
    passing([&] {
        ASSERT_EQ(call.run(move, {valueOf(spot.info.get(), spot.get()), *by}), S_OK);
        ASSERT_EQ(call.result.vt, VT_RECORD);
        auto const& moved = *static_cast<Spot*>(call.result.pvRecord);
        EXPECT_EQ(moved.x, 6);
        EXPECT_EQ(moved.y, 2.5f);
    });
}

TEST_F(RecordCalls, RefuseArraysOfOtherRecords) {
    VARIANT spots{};
    spots.vt = VT_ARRAY | VT_RECORD;
    spots.parray = SafeArrayCreateVectorEx(VT_RECORD, 0, 1, spot.info.get());
    passing([&] { EXPECT_EQ(call.run(oldest, {spots}), DISP_E_TYPEMISMATCH); });
    EXPECT_EQ(VariantClear(&spots), S_OK);
}

}  // namespace
}  // namespace velk::test
