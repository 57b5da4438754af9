// Calls of functions and slots whose types only the caller knows.

#include <iterator>
#include <vector>

#include <gtest/gtest.h>

#include "support/fake_objects.h"
#include "support/value_notation.h"
#include "records.h"
#include "support/expected_difference.h"

namespace velk::test {
namespace {

template <typename Function>
ULONG_PTR addressOf(Function* function) {
    return reinterpret_cast<ULONG_PTR>(function);
}

// One call with its arguments; each is passed as the type that it is of,
// unless another is told.
class Call {
  public:
    void add(VARIANT const& value, VARTYPE type) {
        values_.push_back(value);
        types_.push_back(type);
    }
    void add(VARIANT const& value) { add(value, value.vt); }
    void addReference(void* place, VARTYPE type) {
        VARIANT value{};
        value.vt = VT_BYREF | type;
        value.byref = place;
        add(value);
    }
    HRESULT run(void* instance, ULONG_PTR place, VARTYPE returnType,
                CALLCONV convention = CC_STDCALL) {
        std::vector<VARIANTARG*> pointers;
        for (auto& value : values_) pointers.push_back(&value);
        return DispCallFunc(instance, place, convention, returnType,
                            static_cast<UINT>(values_.size()), types_.data(), pointers.data(),
                            &result);
    }

    Value result;

  private:
    std::vector<VARIANT> values_;
    std::vector<VARTYPE> types_;
};

struct Numbers {
    signed char i1;
    BYTE ui1;
    SHORT i2;
    USHORT ui2;
    LONG i4;
    ULONG ui4;
    LONGLONG i8;
    ULONGLONG ui8;
    FLOAT single;
    DOUBLE real;
    INT native;
    UINT unsignedNative;
};

void STDMETHODCALLTYPE takeNumbers(Numbers* seen, signed char i1, BYTE ui1, SHORT i2, USHORT ui2,
                                   LONG i4, ULONG ui4, LONGLONG i8, ULONGLONG ui8, FLOAT single,
                                   DOUBLE real, INT native, UINT unsignedNative) {
    *seen = {i1, ui1, i2, ui2, i4, ui4, i8, ui8, single, real, native, unsignedNative};
}

TEST(DispCall, PassesEveryNumber) {
    for (CALLCONV const convention : {CC_STDCALL, CC_CDECL}) {
        Numbers seen{};
        Call call;
        call.addReference(&seen, VT_UI1);
        for (auto const* notation : {"I1:-5", "UI1:250", "I2:-300", "UI2:65000", "I4:-70000",
                                     "UI4:4000000000", "I8:-5000000000", "UI8:18446744073709551615",
                                     "R4:1.5", "R8:-2.25", "INT:-8", "UINT:9"}) {
            call.add(*Value(notation));
        }
        ASSERT_EQ(call.run(nullptr, addressOf(takeNumbers), VT_EMPTY, convention), S_OK);
        EXPECT_EQ(call.result->vt, VT_EMPTY);
        EXPECT_EQ(seen.i1, -5);
        EXPECT_EQ(seen.ui1, 250);
        EXPECT_EQ(seen.i2, -300);
        EXPECT_EQ(seen.ui2, 65000);
        EXPECT_EQ(seen.i4, -70000);
        EXPECT_EQ(seen.ui4, 4000000000u);
        EXPECT_EQ(seen.i8, -5000000000);
        EXPECT_EQ(seen.ui8, 18446744073709551615u);
        EXPECT_EQ(seen.single, 1.5f);
        EXPECT_EQ(seen.real, -2.25);
        EXPECT_EQ(seen.native, -8);
        EXPECT_EQ(seen.unsignedNative, 9u);
    }
}

struct Things {
    CY money;
    DATE day;
    VARIANT_BOOL truth;
    SCODE code;
    BSTR text;
    IDispatch* dispatch;
    IUnknown* unknown;
    VARIANT any;
    DECIMAL exact;
    SAFEARRAY* list;
    LONG last;
};

void STDMETHODCALLTYPE takeThings(Things* seen, CY money, DATE day, VARIANT_BOOL truth, SCODE code,
                                  BSTR text, IDispatch* dispatch, IUnknown* unknown, VARIANT any,
                                  DECIMAL exact, SAFEARRAY* list, LONG last) {
    *seen = {money, day, truth, code, text, dispatch, unknown, any, exact, list, last};
}

TEST(DispCall, PassesEverythingElseByValue) {
    Things seen{};
    FakeDispatch object;
    Call call;
    call.addReference(&seen, VT_UI1);
    for (auto const* notation : {"CY:1.25", "DATE:2.25", "BOOL:-1", "ERROR:80070005"}) {
        call.add(*Value(notation));
    }
    Value text("BSTR:text");
    call.add(*text);
    VARIANT value{};
    value.vt = VT_DISPATCH;
    value.pdispVal = &object;
    call.add(value);
    value.vt = VT_UNKNOWN;
    call.add(value);
    call.add(*Value("I2:12"), VT_VARIANT);
    call.add(*Value("DECIMAL:1.50"));
    Value list;
    list->vt = VT_ARRAY | VT_I4;
    list->parray = SafeArrayCreateVector(VT_I4, 0, 1);
    call.add(*list);
    call.add(*Value("I4:99"));
    ASSERT_EQ(call.run(nullptr, addressOf(takeThings), VT_EMPTY), S_OK);
    EXPECT_EQ(seen.money.int64, 12500);
    EXPECT_EQ(seen.day, 2.25);
    EXPECT_EQ(seen.truth, VARIANT_TRUE);
    EXPECT_EQ(seen.code, E_ACCESSDENIED);
    EXPECT_EQ(seen.text, text->bstrVal);
    EXPECT_EQ(seen.dispatch, &object);
    EXPECT_EQ(seen.unknown, &object);
    EXPECT_EQ(seen.any.vt, VT_I2);
    EXPECT_EQ(seen.any.iVal, 12);
    EXPECT_EQ(seen.exact.Lo64, 150u);
    EXPECT_EQ(seen.exact.scale, 2);
    EXPECT_EQ(seen.list, list->parray);
    EXPECT_EQ(seen.last, 99);
    EXPECT_EQ(object.references, 1u);
}

HRESULT STDMETHODCALLTYPE fillReferences(LONG* number, DOUBLE* real, BSTR* text, VARIANT* any,
                                         DECIMAL* exact, Person* person, SAFEARRAY** list) {
    *number += 1;
    *real *= 2;
    *text = newText(OLESTR("out"));
    any->vt = VT_I4;
    any->lVal = 5;
    exact->Lo64 = 7;
    person->age += 1;
    *list = SafeArrayCreateVector(VT_I4, 0, 4);
    return S_FALSE;
}

TEST(DispCall, PassesReferences) {
    LONG number = 41;
    DOUBLE real = 1.25;
    Value text;
    Value any;
    DECIMAL exact{};
    Record<Person> const person(OLESTR("Person"));
    Value list;
    Call call;
    call.addReference(&number, VT_I4);
    call.addReference(&real, VT_R8);
    call.addReference(&text->bstrVal, VT_BSTR);
    call.addReference(&any, VT_VARIANT);
    call.addReference(&exact, VT_DECIMAL);
    call.add(valueOf(person.info.get(), person.get(), VT_BYREF | VT_RECORD));
    call.addReference(&list->parray, VT_ARRAY | VT_I4);
    ASSERT_EQ(call.run(nullptr, addressOf(fillReferences), VT_I4), S_OK);
    text->vt = VT_BSTR;
    list->vt = VT_ARRAY | VT_I4;
    EXPECT_EQ(call.result.notation(), "I4:1");
    EXPECT_EQ(number, 42);
    EXPECT_EQ(real, 2.5);
    EXPECT_EQ(text.notation(), "BSTR:out");
    EXPECT_EQ(any.notation(), "I4:5");
    EXPECT_EQ(exact.Lo64, 7u);
    EXPECT_EQ(person->age, 1);
    ASSERT_NE(list->parray, nullptr);
    EXPECT_EQ(list->parray->rgsabound[0].cElements, 4u);
}

template <typename Type>
Type content(char const* notation, Type VARIANT::*member) {
    return (*Value(notation)).*member;
}

TEST(DispCall, ReturnsEveryType) {
    struct {
        char const* expected;
        ULONG_PTR function;
    } const cases[] = {
        {"I1:-5", addressOf(+[]() -> signed char { return -5; })},
        {"UI1:250", addressOf(+[]() -> BYTE { return 250; })},
        {"I2:-300", addressOf(+[]() -> SHORT { return -300; })},
        {"UI2:65000", addressOf(+[]() -> USHORT { return 65000; })},
        {"I4:-70000", addressOf(+[]() -> LONG { return -70000; })},
        {"UI4:4000000000", addressOf(+[]() -> ULONG { return 4000000000; })},
        {"I8:-5000000000", addressOf(+[]() -> LONGLONG { return -5000000000; })},
        {"UI8:18446744073709551615", addressOf(+[]() -> ULONGLONG { return ~0ULL; })},
        {"INT:-8", addressOf(+[]() -> INT { return -8; })},
        {"UINT:9", addressOf(+[]() -> UINT { return 9; })},
        {"R4:1.5", addressOf(+[]() -> FLOAT { return 1.5f; })},
        {"R8:-2.25", addressOf(+[]() -> DOUBLE { return -2.25; })},
        {"DATE:2.25", addressOf(+[]() -> DATE { return 2.25; })},
        {"CY:1.25", addressOf(+[]() -> CY { return {.int64 = 12500}; })},
        {"BOOL:-1", addressOf(+[]() -> VARIANT_BOOL { return VARIANT_TRUE; })},
        {"ERROR:80070005", addressOf(+[]() -> SCODE { return E_ACCESSDENIED; })},
        {"BSTR:text", addressOf(+[]() -> BSTR { return newText(OLESTR("text")); })},
        {"DISPATCH:null", addressOf(+[]() -> IDispatch* { return nullptr; })},
        {"DECIMAL:1.50", addressOf(+[]() -> DECIMAL { return Value("DECIMAL:1.50")->decVal; })},
    };
    for (auto const& entry : cases) {
        Call call;
        ASSERT_EQ(call.run(nullptr, entry.function, Value(entry.expected)->vt), S_OK);
        auto const returned = [&] { EXPECT_EQ(call.result.notation(), entry.expected); };
        if (call.result->vt != VT_R4) {
            returned();
        } else {
            expectDifference(System::wine, "a single is returned as 0", returned);
        }
    }
    Call call;
    auto const giveValue = +[]() -> VARIANT { return *Value("R8:2.5"); };
    ASSERT_EQ(call.run(nullptr, addressOf(giveValue), VT_VARIANT), S_OK);
    EXPECT_EQ(call.result.notation(), "R8:2.5");
}

struct ICalculator : IUnknown {
    virtual LONG STDMETHODCALLTYPE Add(LONG left, DOUBLE right) = 0;
};
class Calculator final : public ICalculator {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    LONG STDMETHODCALLTYPE Add(LONG left, DOUBLE right) override {
        return base + left + static_cast<LONG>(right);
    }

    ULONG references = 1;
    LONG base = 1000;
};

TEST(DispCall, ReachesSlotsOfAnObject) {
    Calculator calculator;
    for (CALLCONV const convention : {CC_STDCALL, CC_CDECL}) {
        Call call;
        call.add(*Value("I4:30"));
        call.add(*Value("R8:12"));
        ASSERT_EQ(
            call.run(static_cast<ICalculator*>(&calculator), 3 * sizeof(void*), VT_I4, convention),
            S_OK);
        EXPECT_EQ(call.result.notation(), "I4:1042");
    }
    Call add;
    ASSERT_EQ(add.run(static_cast<ICalculator*>(&calculator), sizeof(void*), VT_UI4), S_OK);
    EXPECT_EQ(add.result.notation(), "UI4:2");
}

TEST(DispCall, RefusesOtherConventions) {
    auto const never = +[]() -> LONG {
        ADD_FAILURE() << "called";
        return 0;
    };
    for (int const convention : {0, 2, 3, 5, 6, 7, 8, 9, 255}) {
        Call call;
        EXPECT_EQ(call.run(nullptr, addressOf(never), VT_I4, static_cast<CALLCONV>(convention)),
                  E_INVALIDARG);
        EXPECT_EQ(call.result->vt, VT_EMPTY);
    }
}

LONG STDMETHODCALLTYPE agesOf(Person person, Team team, LONG last) {
    return person.age * 100 + team.second.age * 10 + last;
}
LONG STDMETHODCALLTYPE sumOf(Spot spot, FLOAT last) {
    return spot.x + static_cast<LONG>(spot.y + last);
}

TEST(DispCall, PassesRecordsByValue) {
    Record<Person> const person(OLESTR("Person"));
    person->age = 4;
    Record<Team> const team(OLESTR("Team"));
    team->second.age = 5;
    Call large;
    large.add(valueOf(person.info.get(), person.get()));
    large.add(valueOf(team.info.get(), team.get()));
    large.add(*Value("I4:6"));
    ASSERT_EQ(large.run(nullptr, addressOf(agesOf), VT_I4), S_OK);
    EXPECT_EQ(large.result.notation(), "I4:456");

    Record<Spot> const spot(OLESTR("Spot"));
    *spot = {7, 3.5f};
    Call small;
    small.add(valueOf(spot.info.get(), spot.get()));
    small.add(*Value("R4:1.5"));
    ASSERT_EQ(small.run(nullptr, addressOf(sumOf), VT_I4), S_OK);
    expectDifference(System::wine, "small records do not travel in registers",
                     [&] { EXPECT_EQ(small.result.notation(), "I4:12"); });
}

}  // namespace
}  // namespace velk::test
