// What records are described as, and what VARIANTs and SAFEARRAYs of them own.

#include <gtest/gtest.h>

#include "records.h"
#include "support/data_table.h"
#include "support/expected_difference.h"
#include "support/fake_objects.h"

#include <algorithm>

namespace velk::test {
namespace {

std::string descriptionOf(std::string const& type) {
    com::ComPtr<IRecordInfo> info;
    HRESULT const result = GetRecordInfoFromTypeInfo(typeOfRecords(type.c_str()).get(), info.put());
    if (result != S_OK) return resultName(result);
    Value name;
    name->vt = VT_BSTR;
    ULONG size = 0;
    GUID id{};
    ULONG count = 64;
    BSTR names[64] = {};
    com::ComPtr<ITypeInfo> described;
    if (info->GetName(&name->bstrVal) || info->GetSize(&size) || info->GetGuid(&id) ||
        info->GetFieldNames(&count, names) || info->GetTypeInfo(described.put())) {
        return "something is missing";
    }
    char text[64];
    std::snprintf(text, sizeof text, ", %lu bytes, %08lx..%02x:", static_cast<unsigned long>(size),
                  static_cast<unsigned long>(id.Data1), id.Data4[7]);
    std::string all = name.notation() + text;
    for (ULONG i = 0; i < count; ++i) {
        all += ' ' + narrow(names[i], SysStringLen(names[i]));
        SysFreeString(names[i]);
    }
    return all;
}

TEST(Records, TellNameSizeIdAndFields) {
    expectTable("records/description.tsv",
                [](DataRow const& row) { return descriptionOf(row["type"]); });
    auto const info = recordNamed("Everything");
    ULONG count = 4711;
    EXPECT_EQ(info->GetFieldNames(&count, nullptr), S_OK);
    EXPECT_EQ(count, 24U);
    for (ULONG const room : {0U, 2U}) {
        BSTR names[3] = {};
        count = room;
        EXPECT_EQ(info->GetFieldNames(&count, names), S_OK);
        EXPECT_EQ(count, room);
        EXPECT_EQ(names[room], nullptr);
        for (BSTR const name : names) SysFreeString(name);
    }
}

// Each field as it stands in memory; Wine lends the record's own text.
TEST(Records, AreReadWhereTheirFieldsStand) {
    Record<Everything> const record("Everything");
    *record.get() = {.i1 = -5,
                     .ui1 = 250,
                     .i2 = -300,
                     .ui2 = 65000,
                     .i4 = -70000,
                     .ui4 = 4000000000,
                     .i8 = -5000000000,
                     .ui8 = 18446744073709551615U,
                     .native = -8,
                     .unsignedNative = 9,
                     .single = 1.5F,
                     .real = -2.25,
                     .money = {},
                     .day = 2.25,
                     .truth = VARIANT_TRUE,
                     .code = E_ACCESSDENIED,
                     .text = newText("text"),
                     .dispatch = nullptr,
                     .unknown = nullptr,
                     .any = {},
                     .exact = {},
                     .owner = {newText("owner"), 3},
                     .rank = 40000,
                     .price = 99};
    record->money.int64 = 12500;
    record->any.vt = VT_I2;
    record->any.iVal = 12;
    record->exact.Lo64 = 150;
    record->exact.scale = 2;
    expectTable("records/fields.tsv", [&](DataRow const& row) {
        Value value("I4:1");
        HRESULT const result =
            record.info->GetField(record.get(), wide(row["field"]).c_str(), &value);
        auto const text = result == S_OK ? value.notation() : resultName(result);
        if (value->vt == VT_BSTR && value->bstrVal == record->text) VariantInit(&value);
        return text;
    });
}

TEST(Records, MatchTheSameTypeOfEveryLoad) {
    auto const person = recordNamed("Person");
    EXPECT_TRUE(person->IsMatchingType(person.get()));
    EXPECT_TRUE(person->IsMatchingType(recordNamed("Person").get()));
    EXPECT_FALSE(person->IsMatchingType(recordNamed("Team").get()));
    expectDifference("alias-id",
                     [&] { EXPECT_TRUE(person->IsMatchingType(recordNamed("Colleague").get())); });
    com::ComPtr<IUnknown> other;
    EXPECT_EQ(person->QueryInterface(IID_IRecordInfo, other.putVoid()), S_OK);
    EXPECT_EQ(person->QueryInterface(IID_IDispatch, other.putVoid()), E_NOINTERFACE);
    EXPECT_FALSE(other);
}

TEST(Records, NeedAllTheirArguments) {
    Record<Person> const person("Person");
    auto* const info = person.info.get();
    Value value("I4:1");
    auto const age = wide("age");
    OLECHAR const* const name = age.c_str();
    void* const record = person.get();
    void* made = nullptr;
    HRESULT const results[] = {
        GetRecordInfoFromTypeInfo(nullptr, reinterpret_cast<IRecordInfo**>(&made)),
        GetRecordInfoFromTypeInfo(typeOfRecords("Person").get(), nullptr),
        info->GetField(nullptr, name, &value),
        info->GetField(record, nullptr, &value),
        info->GetField(record, name, nullptr),
        info->GetFieldNames(nullptr, nullptr),
        info->GetGuid(nullptr),
        info->GetName(nullptr),
        info->GetSize(nullptr),
        info->GetTypeInfo(nullptr),
        info->PutField(INVOKE_PROPERTYPUT, nullptr, name, &value),
        info->PutField(INVOKE_PROPERTYPUT, record, nullptr, &value),
        info->PutField(INVOKE_PROPERTYPUT, record, name, nullptr),
        info->PutField(INVOKE_PROPERTYGET, record, name, &value),
        info->RecordInit(nullptr),
        info->RecordClear(nullptr),
        info->RecordCopy(nullptr, record),
        info->RecordCopy(record, nullptr),
        info->RecordCreateCopy(nullptr, &made),
        info->RecordCreateCopy(record, nullptr),
        info->RecordDestroy(nullptr)};
    for (auto const& result : results) EXPECT_EQ(result, E_INVALIDARG) << &result - results;
    auto const wrong = wide("agE2");
    EXPECT_EQ(info->GetField(record, wrong.c_str(), &value), TYPE_E_FIELDNOTFOUND);
}

// Whatever the memory held is no content.
TEST(Records, StartAsZeroes) {
    Record<Everything> const made("Everything");
    unsigned char memory[sizeof(Everything) + 8];
    std::fill(std::begin(memory), std::end(memory), 0xcd);
    EXPECT_EQ(made.info->RecordInit(memory), S_OK);
    EXPECT_EQ(memory[sizeof(Everything)], 0xcd);
    for (void const* const record :
         {static_cast<void const*>(made.get()), static_cast<void const*>(memory)}) {
        EXPECT_EQ(std::string(static_cast<char const*>(record), sizeof(Everything)),
                  std::string(sizeof(Everything), '\0'));
    }
}

// One VARIANT or array owns one more reference to the object in the record.
TEST(Records, AreOwnedByVariantsAndArrays) {
    FakeDispatch object;
    {
        Record<Objects> const record("Objects");
        record->dispatch = &object;
        object.AddRef();
        VARIANT const source = record.value();
        VARIANT reference = record.value(VT_BYREF | VT_RECORD);
        VARIANT outer{};
        outer.vt = VT_BYREF | VT_VARIANT;
        outer.pvarVal = const_cast<VARIANT*>(&source);
        Value copy("BSTR:old"), direct, indirect, same;
        VARIANT shallow{};
        EXPECT_EQ(VariantCopy(&shallow, &reference), S_OK);
        EXPECT_EQ(shallow.pvRecord, record.get());
        EXPECT_EQ(VariantClear(&shallow), S_OK);
        EXPECT_EQ(object.references, 2U);
        EXPECT_EQ(VariantCopy(&copy, const_cast<VARIANT*>(&source)), S_OK);
        EXPECT_EQ(VariantCopyInd(&direct, &reference), S_OK);
        EXPECT_EQ(VariantCopyInd(&indirect, &outer), S_OK);
        EXPECT_EQ(VariantChangeType(&same, const_cast<VARIANT*>(&source), 0, VT_RECORD), S_OK);
        EXPECT_EQ(object.references, 6U);
        for (VARIANT const* const value : {&copy, &direct, &indirect, &same}) {
            EXPECT_NE(value->pvRecord, record.get());
            EXPECT_EQ(static_cast<Objects*>(value->pvRecord)->dispatch, &object);
        }
        for (VARTYPE const type : {VT_EMPTY, VT_NULL, VT_I4, VT_BSTR, VT_UNKNOWN, VT_DISPATCH}) {
            EXPECT_EQ(VariantChangeType(&copy, const_cast<VARIANT*>(&source), 0, type),
                      DISP_E_TYPEMISMATCH);
        }
        for (char const* const notation : {"I4:1", "BSTR:x", "DISPATCH:null", "NULL"}) {
            Value other(notation);
            EXPECT_EQ(VariantChangeType(&copy, &other, 0, VT_RECORD), DISP_E_TYPEMISMATCH);
        }
        EXPECT_EQ(object.references, 6U);

        SAFEARRAYBOUND bound{3, 0};
        Value array;
        array->vt = VT_ARRAY | VT_RECORD;
        array->parray = SafeArrayCreateEx(VT_RECORD, 1, &bound, record.info.get());
        for (LONG index : {0, 2, 2}) {
            EXPECT_EQ(SafeArrayPutElement(array->parray, &index, record.get()), S_OK);
        }
        EXPECT_EQ(object.references, 8U);
        Value arrayCopy;
        EXPECT_EQ(VariantCopy(&arrayCopy, &array), S_OK);
        EXPECT_EQ(object.references, 10U);
        LONG index = 1;
        EXPECT_EQ(SafeArrayGetElement(array->parray, &index, record.get()), S_OK);
        EXPECT_EQ(record->dispatch, nullptr);
        EXPECT_EQ(object.references, 9U);
    }
    EXPECT_EQ(object.references, 1U);
}

TEST(Records, ArraysKnowTheirElements) {
    auto const info = recordNamed("Person");
    SAFEARRAYBOUND bounds[] = {{2, 0}, {3, 1}};
    Value array;
    array->vt = VT_ARRAY | VT_RECORD;
    array->parray = SafeArrayCreateEx(VT_RECORD, 2, bounds, info.get());
    EXPECT_TRUE(array->parray->fFeatures & FADF_RECORD);
    EXPECT_EQ(SafeArrayGetElemsize(array->parray), sizeof(Person));
    VARTYPE type = VT_EMPTY;
    EXPECT_EQ(SafeArrayGetVartype(array->parray, &type), S_OK);
    EXPECT_EQ(type, VT_RECORD);
    auto const again = recordNamed("Person");
    for (auto const& set : {info, again}) {
        com::ComPtr<IRecordInfo> kept;
        EXPECT_EQ(SafeArraySetRecordInfo(array->parray, set.get()), S_OK);
        EXPECT_EQ(SafeArrayGetRecordInfo(array->parray, kept.put()), S_OK);
        EXPECT_EQ(kept.get(), set.get());
    }
    EXPECT_EQ(SafeArrayCreateEx(VT_RECORD, 1, bounds, nullptr), nullptr);
    Value numbers;
    numbers->vt = VT_ARRAY | VT_I4;
    numbers->parray = SafeArrayCreateVector(VT_I4, 0, 1);
    com::ComPtr<IRecordInfo> none;
    EXPECT_EQ(SafeArrayGetRecordInfo(numbers->parray, none.put()), E_INVALIDARG);
    EXPECT_EQ(SafeArraySetRecordInfo(numbers->parray, info.get()), E_INVALIDARG);
}

// A record without an identifier is given one, and stays the same record when
// it is given another.
TEST(Records, CanBeGivenAnId) {
    auto const type = typeOfRecords("Nameless");
    com::ComPtr<ICreateTypeInfo> changed;
    ASSERT_EQ(type->QueryInterface(IID_ICreateTypeInfo, changed.putVoid()), S_OK);
    com::ComPtr<IRecordInfo> infos[2];
    for (BYTE last = 0; last < 2; ++last) {
        GUID const id{0x5A0E7C31, 1, 2, {3, 4, 5, 6, 7, 8, 9, last}};
        ASSERT_EQ(changed->SetGuid(id), S_OK);
        EXPECT_EQ(GetRecordInfoFromTypeInfo(type.get(), infos[last].put()), S_OK);
        GUID told{};
        EXPECT_EQ(infos[last]->GetGuid(&told), S_OK);
        EXPECT_TRUE(told == id);
    }
    expectDifference("record-given-id",
                     [&] { EXPECT_TRUE(infos[0]->IsMatchingType(infos[1].get())); });
    EXPECT_FALSE(infos[0]->IsMatchingType(recordNamed("Person").get()));
}

}  // namespace
}  // namespace velk::test
