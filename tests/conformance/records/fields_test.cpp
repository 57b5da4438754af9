// Single fields: found, read and referred to.

#include "fields.h"
#include "support/expected_difference.h"

namespace velk::test {
namespace {

// Gives each field the value of the table.
void fill(Everything& record) {
    record.i1 = -5;
    record.ui1 = 250;
    record.i2 = -300;
    record.ui2 = 65000;
    record.i4 = -70000;
    record.ui4 = 4000000000;
    record.i8 = -5000000000;
    record.ui8 = 18446744073709551615u;
    record.native = -8;
    record.unsignedNative = 9;
    record.single = 1.5f;
    record.real = -2.25;
    record.money.int64 = 12500;
    record.day = 2.25;
    record.truth = VARIANT_TRUE;
    record.code = E_ACCESSDENIED;
    record.text = newText(OLESTR("text"));
    record.any.vt = VT_I2;
    record.any.iVal = 12;
    record.exact.Lo64 = 150;
    record.exact.scale = 2;
    record.rank = 40000;
    record.price = 99;
}

}  // namespace

TEST_F(RecordFields, AreReadAsWhatTheyAre) {
    fill(*record);
    for (auto const& entry : fieldContents) {
        auto const read = [&] { EXPECT_EQ(content(entry.name), entry.content) << entry.name; };
        if (entry.wineReads) {
            read();
        } else {
            expectDifference(System::wine, "objects and VARIANTs are not read", read);
        }
    }
}

TEST_F(RecordFields, AreCopied) {
    record->text = newText(OLESTR("text"));
    // A reference is replaced, and what it points at stays.
    LONG number = 5;
    Value text;
    text->vt = VT_BYREF | VT_I4;
    text->plVal = &number;
    ASSERT_EQ(get("text", &text), S_OK);
    EXPECT_EQ(text.notation(), "BSTR:text");
    EXPECT_EQ(number, 5);
    expectDifference(System::wine, "the record's own text is lent", [&] {
        if (text->bstrVal == record->text) VariantInit(&text);
        EXPECT_EQ(text->vt, VT_BSTR);
    });
}

TEST_F(RecordFields, OfObjectsAreCounted) {
    record->dispatch = &object;
    object.AddRef();
    expectDifference(System::wine, "objects and VARIANTs are not read", [&] {
        Value dispatch("BSTR:old");
        ASSERT_EQ(get("dispatch", &dispatch), S_OK);
        EXPECT_EQ(dispatch->pdispVal, &object);
        EXPECT_EQ(object.references, 3u);
    });
    EXPECT_EQ(object.references, 2u);
}

TEST_F(RecordFields, OfRecordsAreCopied) {
    record->owner = {newText(OLESTR("owner")), 3};
    expectDifference(System::wine, "records are not read", [&] {
        Value owner;
        ASSERT_EQ(get("owner", &owner), S_OK);
        ASSERT_EQ(owner->vt, VT_RECORD);
        EXPECT_TRUE(owner->pRecInfo->IsMatchingType(recordNamed(OLESTR("Person")).get()));
        auto const* const copy = static_cast<Person*>(owner->pvRecord);
        EXPECT_NE(copy, &record->owner);
        EXPECT_EQ(textIn(copy->name), "owner");
        EXPECT_NE(copy->name, record->owner.name);
    });
}

TEST_F(RecordFields, AreReferredToWhereTheyStand) {
    fill(*record);
    struct {
        char const* name;
        VARTYPE type;
        void* place;
        bool wineNamesIt = true;
    } const cases[] = {
        {"i4", VT_I4, &record->i4},
        {"real", VT_R8, &record->real},
        {"text", VT_BSTR, &record->text},
        {"exact", VT_DECIMAL, &record->exact},
        {"owner", VT_RECORD, &record->owner, false},
        {"any", VT_VARIANT, &record->any},
    };
    for (auto const& entry : cases) {
        Value value("BSTR:old");
        PVOID array = this;
        ASSERT_EQ(
            record.info->GetFieldNoCopy(record.get(), wide(entry.name).c_str(), &value, &array),
            S_OK)
            << entry.name;
        auto const named = [&] { EXPECT_EQ(value->vt, VT_BYREF | entry.type) << entry.name; };
        if (entry.wineNamesIt) {
            named();
        } else {
            expectDifference(System::wine, "references to records have no type", named);
        }
        EXPECT_EQ(value->byref, entry.place) << entry.name;
        EXPECT_EQ(array, nullptr);
    }
}

TEST_F(RecordFields, AreFoundByName) {
    Value value;
    expectDifference(System::wine, "the case of a field's name counts",
                     [&] { EXPECT_EQ(get("I4", &value), S_OK); });
    EXPECT_EQ(get("i5", &value), TYPE_E_FIELDNOTFOUND);
    EXPECT_EQ(get("", &value), TYPE_E_FIELDNOTFOUND);
    PVOID array = nullptr;
    EXPECT_EQ(record.info->GetFieldNoCopy(record.get(), OLESTR("i5"), &value, &array),
              TYPE_E_FIELDNOTFOUND);
    expectDifference(System::wine, "fields cannot be put", [&] {
        EXPECT_EQ(put("i5", &value), TYPE_E_FIELDNOTFOUND);
        EXPECT_EQ(putNoCopy("i5", &value), TYPE_E_FIELDNOTFOUND);
    });
}

TEST_F(RecordFields, NeedAllTheirArguments) {
    Value value("I4:1");
    PVOID array = nullptr;
    auto* const info = record.info.get();
    OLECHAR const* const name = OLESTR("i4");
    EXPECT_EQ(info->GetField(nullptr, name, &value), E_INVALIDARG);
    EXPECT_EQ(info->GetField(record.get(), nullptr, &value), E_INVALIDARG);
    EXPECT_EQ(info->GetField(record.get(), name, nullptr), E_INVALIDARG);
    EXPECT_EQ(info->GetFieldNoCopy(nullptr, name, &value, &array), E_INVALIDARG);
    EXPECT_EQ(info->GetFieldNoCopy(record.get(), nullptr, &value, &array), E_INVALIDARG);
    EXPECT_EQ(info->GetFieldNoCopy(record.get(), name, nullptr, &array), E_INVALIDARG);
    EXPECT_EQ(info->GetFieldNames(nullptr, nullptr), E_INVALIDARG);
    EXPECT_EQ(info->GetGuid(nullptr), E_INVALIDARG);
    EXPECT_EQ(info->GetName(nullptr), E_INVALIDARG);
    EXPECT_EQ(info->GetSize(nullptr), E_INVALIDARG);
    EXPECT_EQ(info->GetTypeInfo(nullptr), E_INVALIDARG);
    EXPECT_EQ(info->PutField(INVOKE_PROPERTYPUT, nullptr, name, &value), E_INVALIDARG);
    EXPECT_EQ(info->PutField(INVOKE_PROPERTYPUT, record.get(), nullptr, &value), E_INVALIDARG);
    EXPECT_EQ(info->PutField(INVOKE_PROPERTYPUT, record.get(), name, nullptr), E_INVALIDARG);
    EXPECT_EQ(info->PutField(INVOKE_PROPERTYGET, record.get(), name, &value), E_INVALIDARG);
    EXPECT_EQ(info->PutFieldNoCopy(0, record.get(), name, &value), E_INVALIDARG);
}

// Unions and plain pointers belong to whoever set them, and have no VARIANT.
TEST(OddRecordFields, HaveNoValue) {
    struct Odd {
        double amount;
        LONG* pointer;
        IUnknown* typed;
    };
    Record<Odd> const odd(OLESTR("Odd"));
    LONG target = 5;
    odd->amount = 2.5;
    odd->pointer = &target;
    FakeDispatch object;
    Value value;
    value->vt = VT_DISPATCH;
    value->pdispVal = &object;
    object.AddRef();
    for (auto const* name : {OLESTR("amount"), OLESTR("pointer")}) {
        expectDifference(System::wine, "every field has a value", [&] {
            Value content;
            PVOID array = nullptr;
            EXPECT_EQ(odd.info->GetField(odd.get(), name, &content), DISP_E_BADVARTYPE);
            EXPECT_EQ(odd.info->GetFieldNoCopy(odd.get(), name, &content, &array),
                      DISP_E_BADVARTYPE);
            EXPECT_EQ(odd.info->PutField(INVOKE_PROPERTYPUT, odd.get(), name, &value),
                      DISP_E_BADVARTYPE);
        });
    }
    // A field of a certain interface takes objects that have it.
    expectDifference(System::wine, "fields cannot be put", [&] {
        auto const* const name = OLESTR("typed");
        EXPECT_EQ(odd.info->PutField(INVOKE_PROPERTYPUTREF, odd.get(), name, &value),
                  DISP_E_TYPEMISMATCH);
        EXPECT_EQ(odd.info->PutFieldNoCopy(INVOKE_PROPERTYPUTREF, odd.get(), name, &value),
                  DISP_E_TYPEMISMATCH);
    });
    Record<Odd> const copy(OLESTR("Odd"));
    EXPECT_EQ(odd.info->RecordCopy(odd.get(), copy.get()), S_OK);
    expectDifference(System::wine, "some fields of a record are not copied", [&] {
        EXPECT_EQ(copy->amount, 2.5);
        EXPECT_EQ(copy->pointer, &target);
    });
}

}  // namespace velk::test
