// Single fields: converted to, replaced and taken over.

#include "fields.h"
#include "support/expected_difference.h"

namespace velk::test {

TEST_F(RecordFields, AreReplacedByTheirOwnType) {
    expectDifference(System::wine, "fields cannot be put", [&] {
        for (auto const& entry : fieldContents) {
            if (entry.content == std::string("DISPATCH:null")) continue;
            for (ULONG const flags : {INVOKE_PROPERTYPUT, INVOKE_PROPERTYPUTREF}) {
                Value value(entry.content);
                EXPECT_EQ(put(entry.name, &value, flags), S_OK) << entry.name;
                EXPECT_EQ(value.notation(), entry.content) << entry.name;
                EXPECT_EQ(content(entry.name), entry.content) << entry.name;
            }
        }
    });
}

TEST_F(RecordFields, ConvertWhatIsPut) {
    struct {
        char const* name;
        char const* value;
        HRESULT result;
        char const* content;
    } const cases[] = {
        {"i4", "BSTR:17", S_OK, "I4:17"},
        {"i4", "R8:2.5", S_OK, "I4:2"},
        {"text", "I4:5", S_OK, "BSTR:5"},
        {"truth", "I4:3", S_OK, "BOOL:-1"},
        {"any", "R8:2.5", S_OK, "R8:2.5"},
        {"exact", "BSTR:1.25", S_OK, "DECIMAL:1.25"},
        {"price", "BOOL:-1", S_OK, "I4:-1"},
        {"i1", "I4:300", DISP_E_OVERFLOW, "I1:0"},
        {"i4", "BSTR:seventeen", DISP_E_TYPEMISMATCH, "I4:17"},
        {"i4", "NULL", DISP_E_TYPEMISMATCH, "I4:17"},
        {"owner", "I4:1", DISP_E_TYPEMISMATCH, nullptr},
        {"dispatch", "I4:1", DISP_E_TYPEMISMATCH, "DISPATCH:null"},
    };
    expectDifference(System::wine, "fields cannot be put", [&] {
        record->i4 = 17;
        for (auto const& entry : cases) {
            Value value(entry.value);
            EXPECT_EQ(put(entry.name, &value), entry.result) << entry.name << " = " << entry.value;
            if (entry.content) {
                EXPECT_EQ(content(entry.name), entry.content) << entry.value;
            }
            if (entry.name == std::string("i4")) record->i4 = 17;
        }
    });
}

TEST_F(RecordFields, TakeReferences) {
    LONG number = 77;
    VARIANT reference{};
    reference.vt = VT_BYREF | VT_I4;
    reference.plVal = &number;
    expectDifference(System::wine, "fields cannot be put", [&] {
        EXPECT_EQ(put("i4", &reference), S_OK);
        EXPECT_EQ(content("i4"), "I4:77");
        EXPECT_EQ(put("any", &reference), S_OK);
        EXPECT_EQ(record->any.vt, VT_I4);
        EXPECT_EQ(record->any.lVal, 77);
    });
}

TEST_F(RecordFields, HoldObjectsByReference) {
    Value value;
    value->vt = VT_UNKNOWN;
    value->punkVal = &object;
    object.AddRef();
    expectDifference(System::wine, "fields cannot be put", [&] {
        for (auto const* name : {"dispatch", "unknown", "any"}) {
            EXPECT_EQ(put(name, &value), S_OK) << name;
        }
        EXPECT_EQ(record->dispatch, &object);
        EXPECT_EQ(object.references, 5u);
        object.answersDispatch = false;
        EXPECT_TRUE(FAILED(put("dispatch", &value)));
        EXPECT_EQ(record->dispatch, &object);
    });
    EXPECT_EQ(record.info->RecordClear(record.get()), S_OK);
    EXPECT_EQ(object.references, 2u);
}

// By value an object's default property is meant, on either side.
TEST_F(RecordFields, PassValuesToObjects) {
    object.defaultValue = [](VARIANT* value) {
        if (value) {
            value->vt = VT_I4;
            value->lVal = 42;
        }
        return S_OK;
    };
    Value number("I4:3");
    expectDifference(System::wine, "fields cannot be put", [&] {
        EXPECT_EQ(put("dispatch", &number, INVOKE_PROPERTYPUT), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(put("unknown", &number, INVOKE_PROPERTYPUT), DISP_E_TYPEMISMATCH);
        record->dispatch = &object;
        object.AddRef();
        EXPECT_EQ(put("dispatch", &number, INVOKE_PROPERTYPUT), S_OK);
        EXPECT_EQ(object.calls, 1);
        EXPECT_EQ(object.lastFlags, DISPATCH_PROPERTYPUT);
        EXPECT_EQ(record->dispatch, &object);
        Value value;
        value->vt = VT_DISPATCH;
        value->pdispVal = &object;
        object.AddRef();
        EXPECT_EQ(put("any", &value, INVOKE_PROPERTYPUT), S_OK);
        EXPECT_EQ(object.lastFlags, DISPATCH_PROPERTYGET);
        EXPECT_EQ(content("any"), "I4:42");
    });
}

TEST_F(RecordFields, TakeRecordsOfTheirTypeOnly) {
    Record<Person> const person(OLESTR("Person"));
    *person = {newText(OLESTR("Eve")), 5};
    Record<Spot> const spot(OLESTR("Spot"));
    VARIANT value = valueOf(person.info.get(), person.get());
    VARIANT reference = valueOf(person.info.get(), person.get(), VT_BYREF | VT_RECORD);
    VARIANT other = valueOf(spot.info.get(), spot.get());
    VARIANT nothing = valueOf(nullptr, nullptr);
    expectDifference(System::wine, "fields cannot be put", [&] {
        for (VARIANT* given : {&value, &reference}) {
            ASSERT_EQ(put("owner", given), S_OK);
            EXPECT_EQ(textIn(record->owner.name), "Eve");
            EXPECT_NE(record->owner.name, person->name);
            ASSERT_EQ(record.info->RecordClear(record.get()), S_OK);
        }
        EXPECT_EQ(put("owner", &other), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(put("owner", &nothing), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(putNoCopy("owner", &other), DISP_E_TYPEMISMATCH);
    });
    EXPECT_EQ(textIn(person->name), "Eve");
}

TEST_F(RecordFields, TakeOverWhatIsPutWithoutACopy) {
    Value text("BSTR:mine");
    BSTR const original = text->bstrVal;
    Value number("I4:1");
    expectDifference(System::wine, "fields cannot be put", [&] {
        EXPECT_EQ(putNoCopy("text", &text), S_OK);
        EXPECT_EQ(record->text, original);
        EXPECT_EQ(text->vt, VT_EMPTY);
        // Nothing is converted on this way.
        EXPECT_EQ(putNoCopy("text", &number), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(textIn(record->text), "mine");
        Value owner;
        auto const info = recordNamed(OLESTR("Person"));
        auto* const person = static_cast<Person*>(info->RecordCreate());
        *person = {newText(OLESTR("Eve")), 5};
        *owner = valueOf(recordNamed(OLESTR("Person")).release(), person);
        BSTR const name = person->name;
        EXPECT_EQ(putNoCopy("owner", &owner), S_OK);
        EXPECT_EQ(record->owner.name, name);
        EXPECT_EQ(owner->vt, VT_EMPTY);
    });
}

}  // namespace velk::test
