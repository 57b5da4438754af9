// Late-bound calls that take and give records, which other systems do not pass.

#include <gtest/gtest.h>

#include "records.h"
#include "support/fake_objects.h"

#include <algorithm>

namespace velk::test {
namespace {

/// The members of IRegister after those of IDispatch, as its description lays
/// them out.
class Register final : public FakeDispatch {
  public:
    virtual HRESULT STDMETHODCALLTYPE Birthday(Person* person) {
        seen = person;
        ++person->age;
        return S_OK;
    }
    virtual HRESULT STDMETHODCALLTYPE Oldest(SAFEARRAY* people, Person* oldest) {
        auto const* const elements = static_cast<Person*>(people->pvData);
        auto const& last = elements[people->rgsabound[0].cElements - 1];
        *oldest = {SysAllocString(last.name), last.age};
        return S_OK;
    }
    // As any out-parameter: what it held is not looked at.
    virtual HRESULT STDMETHODCALLTYPE Find(BSTR name, Person* person, VARIANT_BOOL* found) {
        *person = {SysAllocString(name), 44};
        *found = VARIANT_TRUE;
        return S_OK;
    }
    virtual HRESULT STDMETHODCALLTYPE Everyone(SAFEARRAY** people) {
        *people = peopleOf(2).parray;
        return S_OK;
    }
    virtual HRESULT STDMETHODCALLTYPE Greet(Person person, BSTR* text) {
        *text = newText(
            (narrow(person.name, SysStringLen(person.name)) + std::to_string(person.age)).c_str());
        return S_OK;
    }
    virtual HRESULT STDMETHODCALLTYPE Move(Spot from, DOUBLE by, Spot* to) {
        *to = {from.x + static_cast<LONG>(by), from.y + static_cast<FLOAT>(by)};
        return S_OK;
    }
    virtual Person STDMETHODCALLTYPE Latest() { return {newText("last"), 3}; }
    virtual HRESULT STDMETHODCALLTYPE Nobody(void* nobody) {
        seen = nobody;
        return S_OK;
    }

    /// Ada of 1, Ada of 2 and so on.
    static VARIANT peopleOf(ULONG count) {
        SAFEARRAYBOUND bound{count, 0};
        VARIANT people{};
        people.vt = VT_ARRAY | VT_RECORD;
        people.parray = SafeArrayCreateEx(VT_RECORD, 1, &bound, recordNamed("Person").get());
        for (ULONG i = 0; i < count; ++i) {
            static_cast<Person*>(people.parray->pvData)[i] = {newText("Ada"),
                                                              static_cast<LONG>(i + 1)};
        }
        return people;
    }

    void* seen = nullptr;
};

class RecordCalls : public testing::Test {
  protected:
    RecordCalls() { *ada.get() = {newText("Ada"), 3}; }

    /// What a call gives: its result, or the name of the failure.
    std::string call(MEMBERID member, std::vector<VARIANT> arguments) {
        std::reverse(arguments.begin(), arguments.end());
        DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
        Value result;
        HRESULT const code =
            type->Invoke(&object, member, DISPATCH_METHOD, &parameters, &result, nullptr, nullptr);
        return code == S_OK ? result.notation() : resultName(code);
    }

    Register object;
    com::ComPtr<ITypeInfo> type = typeOfRecords("IRegister");
    Record<Person> ada{"Person"};
    Record<Spot> spot{"Spot"};
};

enum Member { birthday = 1, oldest, find, everyone, greet, move, latest, nobody };

TEST_F(RecordCalls, PassRecordsInTheirPlace) {
    VARIANT value = ada.value();
    VARIANT outer{};
    outer.vt = VT_BYREF | VT_VARIANT;
    outer.pvarVal = &value;
    for (VARIANT const& given : {value, ada.value(VT_BYREF | VT_RECORD), outer}) {
        object.seen = nullptr;
        EXPECT_EQ(call(birthday, {given}), "EMPTY");
        EXPECT_EQ(object.seen, ada.get());
    }
    EXPECT_EQ(ada.notation(), "Person{name=BSTR:Ada, age=I4:6}");
}

TEST_F(RecordCalls, PassAndGiveRecordsAndArrays) {
    *spot.get() = {4, 0.5F};
    Value people;
    *people = Register::peopleOf(3);
    EXPECT_EQ(call(oldest, {*people}), "Person{name=BSTR:Ada, age=I4:3}");
    EXPECT_EQ(call(everyone, {}),
              "[0..1]{Person{name=BSTR:Ada, age=I4:1}, Person{name=BSTR:Ada, age=I4:2}}");
    EXPECT_EQ(call(greet, {ada.value()}), "BSTR:Ada3");
    EXPECT_EQ(call(move, {spot.value(), *Value("R8:2")}), "Spot{x=I4:6, y=R4:2.5}");
    EXPECT_EQ(call(latest, {}), "Person{name=BSTR:last, age=I4:3}");
}

// What a record of the caller held is given up, as the counts at the end tell.
TEST_F(RecordCalls, FillRecordsOfTheCaller) {
    Value name("BSTR:Bob");
    for (VARTYPE const type : {VARTYPE{VT_RECORD}, VARTYPE{VT_BYREF | VT_RECORD}}) {
        Record<Person> const found("Person");
        found->name = newText("old");
        EXPECT_EQ(call(find, {*name, found.value(type)}), "BOOL:-1");
        EXPECT_EQ(found.notation(), "Person{name=BSTR:Bob, age=I4:44}");
    }
    Value empty;
    VARIANT reference{};
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = &empty;
    EXPECT_EQ(call(find, {*name, reference}), "BOOL:-1");
    EXPECT_EQ(empty.notation(), "Person{name=BSTR:Bob, age=I4:44}");
}

TEST_F(RecordCalls, RefuseWhatIsNotTheirRecord) {
    SAFEARRAYBOUND bound{1, 0};
    Value spots;
    spots->vt = VT_ARRAY | VT_RECORD;
    spots->parray = SafeArrayCreateEx(VT_RECORD, 1, &bound, spot.info.get());
    EXPECT_EQ(call(oldest, {*spots}), "mismatch");
    for (VARTYPE const type : {VARTYPE{VT_RECORD}, VARTYPE{VT_BYREF | VT_RECORD}}) {
        VARIANT const person = ada.value(type);
        VARIANT noRecord = person;
        noRecord.pvRecord = nullptr;
        VARIANT noInfo = person;
        noInfo.pRecInfo = nullptr;
        for (VARIANT const& wrong : {spot.value(type), noRecord, noInfo, *Value("I4:1")}) {
            EXPECT_EQ(call(birthday, {wrong}), "mismatch");
        }
        // What has no identifier cannot be told from others.
        EXPECT_EQ(call(nobody, {person}), "mismatch");
    }
    EXPECT_EQ(object.seen, nullptr);
}

}  // namespace
}  // namespace velk::test
