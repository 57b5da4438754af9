// Single fields: read, referred to, converted and replaced.

#include <gtest/gtest.h>

#include "conformance/automation/fake_objects.h"
#include "conformance/automation/value_notation.h"
#include "records.h"
#include "support/expected_difference.h"

namespace velk::test {
namespace {

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

struct FieldCase {
    char const* name;
    char const* content;
    bool wineReads = true;
};
// What a filled record holds, and of which type.
constexpr FieldCase contents[] = {
    {"i1", "I1:-5"},
    {"ui1", "UI1:250"},
    {"i2", "I2:-300"},
    {"ui2", "UI2:65000"},
    {"i4", "I4:-70000"},
    {"ui4", "UI4:4000000000"},
    {"i8", "I8:-5000000000"},
    {"ui8", "UI8:18446744073709551615"},
    {"native", "INT:-8"},
    {"unsignedNative", "UINT:9"},
    {"single", "R4:1.5"},
    {"real", "R8:-2.25"},
    {"money", "CY:1.25"},
    {"day", "DATE:2.25"},
    {"truth", "BOOL:-1"},
    {"code", "ERROR:80070005"},
    {"text", "BSTR:text"},
    {"dispatch", "DISPATCH:null", false},
    {"any", "I2:12", false},
    {"exact", "DECIMAL:1.50"},
    {"rank", "I4:40000", false},
    {"price", "I4:99", false},
};

class RecordFields : public testing::Test {
  protected:
    // Made first, because the record holds on to it to its end.
    FakeDispatch object;
    Record<Everything> record{OLESTR("Everything")};

    HRESULT get(char const* name, VARIANT* value) {
        return record.info->GetField(record.get(), wide(name).c_str(), value);
    }
    HRESULT put(char const* name, VARIANT* value, ULONG flags = INVOKE_PROPERTYPUTREF) {
        return record.info->PutField(flags, record.get(), wide(name).c_str(), value);
    }
    HRESULT putNoCopy(char const* name, VARIANT* value) {
        return record.info->PutFieldNoCopy(INVOKE_PROPERTYPUT, record.get(), wide(name).c_str(),
                                           value);
    }
    std::string content(char const* name) {
        Value value;
        EXPECT_EQ(get(name, &value), S_OK) << name;
        std::string const result = value.notation();
        // Wine lends the record's own text.
        if (value->vt == VT_BSTR && value->bstrVal == record->text) VariantInit(&value);
        return result;
    }
};

TEST_F(RecordFields, AreReadAsWhatTheyAre) {
    fill(*record);
    for (auto const& entry : contents) {
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

TEST_F(RecordFields, AreReplacedByTheirOwnType) {
    Record<Everything> const source(OLESTR("Everything"));
    fill(*source);
    expectDifference(System::wine, "fields cannot be put", [&] {
        for (auto const& entry : contents) {
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

}  // namespace
}  // namespace velk::test
