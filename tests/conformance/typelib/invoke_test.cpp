// Late-bound calls by type information, seen from the object that is called.

#include <vector>

#include <gtest/gtest.h>

#include "recorder.h"
#include "shapes.h"
#include "support/expected_difference.h"

namespace velk::test {
namespace {

VARIANT integer(LONG value) {
    VARIANT result{};
    result.vt = VT_I4;
    result.lVal = value;
    return result;
}

VARIANT real(double value) {
    VARIANT result{};
    result.vt = VT_R8;
    result.dblVal = value;
    return result;
}

VARIANT text(OLECHAR const* value) {
    VARIANT result{};
    result.vt = VT_BSTR;
    result.bstrVal = SysAllocString(value);
    return result;
}

// One call with its results; arguments stand in the order of the declaration.
class Call {
  public:
    explicit Call(OLECHAR const* type = OLESTR("IRecorder"))
        : library_(loadShapes()), type_(typeNamed(library_.get(), type)) {
        VariantInit(&result);
    }
    ~Call() { VariantClear(&result); }

    HRESULT run(MEMBERID member, WORD flags, std::vector<VARIANT> arguments,
                std::vector<DISPID> named = {}) {
        std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
        DISPPARAMS parameters{reversed.data(), named.data(), static_cast<UINT>(reversed.size()),
                              static_cast<UINT>(named.size())};
        return type_->Invoke(static_cast<IRecorder*>(&recorder), member, flags, &parameters,
                             &result, &exception, &argument);
    }

    Recorder recorder;
    VARIANT result;
    EXCEPINFO exception{};
    UINT argument = 4711;

  private:
    Owned<ITypeLib> library_;
    Owned<ITypeInfo> type_;
};

// Which argument the last call refused, by its index in the reversed array.
void expectArgument(Call const& call, UINT index) {
    expectDifference(System::wine, "a call does not tell which argument it refused",
                     [&] { EXPECT_EQ(call.argument, index); });
}

TEST(Invoke, PassesArgumentsInOrderAndGivesTheResult) {
    Call call;
    ASSERT_EQ(call.run(1, DISPATCH_METHOD, {integer(30), integer(12)}), S_OK);
    EXPECT_EQ(call.result.vt, VT_I4);
    EXPECT_EQ(call.result.lVal, 42);
}

TEST(Invoke, FillsInDefaults) {
    Call call;
    ASSERT_EQ(call.run(1, DISPATCH_METHOD, {integer(30)}), S_OK);
    EXPECT_EQ(call.result.lVal, 35);
}

TEST(Invoke, TakesNamedArguments) {
    Call call;
    // Named arguments come first in the reversed array: 1 is named 0.
    ASSERT_EQ(call.run(1, DISPATCH_METHOD, {integer(2), integer(100)}, {0, 1}), S_OK);
    EXPECT_EQ(call.result.lVal, 102);
    ASSERT_EQ(call.run(1, DISPATCH_METHOD, {integer(2)}, {0}), S_OK);
    EXPECT_EQ(call.result.lVal, 7);
}

TEST(Invoke, RefusesNamesThatDoNotFit) {
    struct {
        std::vector<VARIANT> arguments;
        std::vector<DISPID> names;
        HRESULT expected;
    } const cases[] = {
        {{integer(2)}, {7}, DISP_E_PARAMNOTFOUND},
        {{integer(1), integer(2)}, {7, 0}, DISP_E_PARAMNOTFOUND},
        {{integer(1), integer(2)}, {0, 0}, DISP_E_PARAMNOTFOUND},
        // The second parameter alone: the first is needed.
        {{integer(2)}, {1}, DISP_E_PARAMNOTOPTIONAL},
    };
    for (auto const& entry : cases) {
        expectDifference(System::wine, "names of arguments are not checked", [&] {
            Call call;
            EXPECT_EQ(call.run(1, DISPATCH_METHOD, entry.arguments, entry.names), entry.expected);
        });
    }
}

TEST(Invoke, CoercesArguments) {
    Call call;
    VARIANT const given = text(OLESTR("17"));
    ASSERT_EQ(call.run(1, DISPATCH_METHOD, {given, real(2.0)}), S_OK);
    EXPECT_EQ(call.result.lVal, 19);
    VARIANT const wrong = text(OLESTR("seventeen"));
    EXPECT_EQ(call.run(1, DISPATCH_METHOD, {integer(1), wrong}), DISP_E_TYPEMISMATCH);
    expectArgument(call, 0);
    SysFreeString(given.bstrVal);
    SysFreeString(wrong.bstrVal);
}

TEST(Invoke, ReachesProperties) {
    Call call;
    VARIANT const title = text(OLESTR("shape"));
    ASSERT_EQ(call.run(2, DISPATCH_PROPERTYPUT, {title}, {DISPID_PROPERTYPUT}), S_OK);
    EXPECT_EQ(call.recorder.title, OLESTR("shape"));
    ASSERT_EQ(call.run(2, DISPATCH_PROPERTYGET, {}), S_OK);
    ASSERT_EQ(call.result.vt, VT_BSTR);
    EXPECT_EQ(Wide(call.result.bstrVal), OLESTR("shape"));
    SysFreeString(title.bstrVal);
    ASSERT_EQ(VariantClear(&call.result), S_OK);
    ASSERT_EQ(call.run(0, DISPATCH_PROPERTYPUT, {integer(3), integer(8)}, {DISPID_PROPERTYPUT}),
              S_OK);
    EXPECT_EQ(call.recorder.firstValue, 3);
    EXPECT_EQ(call.recorder.lastValue, 8);
    ASSERT_EQ(call.run(0, DISPATCH_METHOD | DISPATCH_PROPERTYGET, {integer(4)}), S_OK);
    EXPECT_EQ(call.result.lVal, 40);
}

TEST(Invoke, PassesEveryWidthOfNumber) {
    Call call;
    VARIANT wide{};
    wide.vt = VT_I8;
    wide.llVal = 0x123456789abcdefLL;
    VARIANT yes{};
    yes.vt = VT_BOOL;
    yes.boolVal = VARIANT_TRUE;
    ASSERT_EQ(call.run(4, DISPATCH_METHOD,
                       {integer(200), integer(-300), wide, real(1.5), real(-2.25), yes}),
              S_OK);
    EXPECT_EQ(call.recorder.byteValue, 200);
    EXPECT_EQ(call.recorder.shortValue, -300);
    EXPECT_EQ(call.recorder.hyperValue, 0x123456789abcdefLL);
    EXPECT_EQ(call.recorder.floatValue, 1.5f);
    EXPECT_EQ(call.recorder.doubleValue, -2.25);
    EXPECT_EQ(call.recorder.boolValue, VARIANT_TRUE);
    EXPECT_EQ(call.run(4, DISPATCH_METHOD, {integer(300), integer(0), wide, real(0), real(0), yes}),
              DISP_E_OVERFLOW);
    expectArgument(call, 5);
}

TEST(Invoke, PassesStructuresByValue) {
    Call call;
    VARIANT amount{};
    amount.vt = VT_CY;
    amount.cyVal.int64 = 123456;
    VARIANT date{};
    date.vt = VT_DATE;
    date.date = 36526.5;
    VARIANT decimal{};
    decimal.decVal.Lo64 = 987654321;
    decimal.decVal.scale = 3;
    decimal.vt = VT_DECIMAL;
    ASSERT_EQ(call.run(5, DISPATCH_METHOD,
                       {amount, date, decimal, integer(77), integer(7), integer(1000)}),
              S_OK);
    EXPECT_EQ(call.recorder.hyperValue, 123456);
    EXPECT_EQ(call.recorder.doubleValue, 36526.5);
    EXPECT_EQ(call.recorder.decimalValue.Lo64, 987654321u);
    EXPECT_EQ(call.recorder.decimalValue.scale, 3);
    EXPECT_EQ(call.recorder.anyType, VT_I4);
    EXPECT_EQ(call.recorder.anyValue, 77);
    EXPECT_EQ(call.recorder.firstValue, 7);
    EXPECT_EQ(call.recorder.lastValue, 1000);
}

TEST(Invoke, PassesFittingReferencesThrough) {
    Call call;
    LONG value = 5;
    // Given up by the call, because the member only writes there and no caller by
    // name can know of it.
    BSTR out = SysAllocString(OLESTR("old"));
    VARIANT any = real(1.0);
    VARIANT references[3] = {};
    references[0].vt = VT_BYREF | VT_I4;
    references[0].plVal = &value;
    references[1].vt = VT_BYREF | VT_BSTR;
    references[1].pbstrVal = &out;
    references[2].vt = VT_BYREF | VT_VARIANT;
    references[2].pvarVal = &any;
    ASSERT_EQ(call.run(6, DISPATCH_METHOD, {references[0], references[1], references[2]}), S_OK);
    EXPECT_EQ(value, 6);
    expectDifference(System::wine, "what an out-parameter holds is neither given up nor hidden",
                     [&] { EXPECT_EQ(call.recorder.outBefore, nullptr); });
    EXPECT_EQ(taken(out), OLESTR("out"));
    EXPECT_EQ(call.recorder.anyType, VT_R8);
    EXPECT_EQ(any.vt, VT_I4);
    EXPECT_EQ(any.lVal, 99);
}

TEST(Invoke, GivesTheMemberAReferenceToAValue) {
    Call call;
    BSTR out = nullptr;
    VARIANT reference{};
    reference.vt = VT_BYREF | VT_BSTR;
    reference.pbstrVal = &out;
    ASSERT_EQ(call.run(6, DISPATCH_METHOD, {integer(5), reference, integer(1)}), S_OK);
    EXPECT_EQ(call.recorder.lastValue, 5);
    EXPECT_EQ(call.recorder.anyType, VT_I4);
    EXPECT_EQ(taken(out), OLESTR("out"));
}

TEST(Invoke, ConvertsReferencesThereAndBack) {
    Call call;
    double value = 5.0;
    BSTR out = nullptr;
    VARIANT references[2] = {};
    references[0].vt = VT_BYREF | VT_R8;
    references[0].pdblVal = &value;
    references[1].vt = VT_BYREF | VT_BSTR;
    references[1].pbstrVal = &out;
    expectDifference(System::wine, "a reference to another type is not converted", [&] {
        ASSERT_EQ(call.run(6, DISPATCH_METHOD, {references[0], references[1], integer(1)}), S_OK);
        EXPECT_EQ(call.recorder.lastValue, 5);
        EXPECT_EQ(value, 6.0);
    });
    SysFreeString(out);
}

TEST(Invoke, FillsReferencedVariants) {
    Call call;
    VARIANT title{};
    VARIANT reference{};
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = &title;
    expectDifference(System::wine, "an empty VARIANT takes no text by reference", [&] {
        ASSERT_EQ(call.run(6, DISPATCH_METHOD, {integer(5), reference, integer(1)}), S_OK);
        ASSERT_EQ(title.vt, VT_BSTR);
        EXPECT_EQ(Wide(title.bstrVal), OLESTR("out"));
    });
    VariantClear(&title);
}

TEST(Invoke, TellsTheMemberWhatWasLeftOut) {
    Call call;
    ASSERT_EQ(call.run(7, DISPATCH_METHOD, {}), S_OK);
    EXPECT_EQ(call.recorder.anyType, VT_ERROR);
    EXPECT_EQ(call.recorder.anyValue, DISP_E_PARAMNOTFOUND);
    EXPECT_EQ(call.result.vt, VT_BSTR);
}

TEST(Invoke, GathersVariableArguments) {
    Call call;
    ASSERT_EQ(call.run(3, DISPATCH_METHOD, {integer(11)}), S_OK);
    EXPECT_EQ(call.result.lVal, 1);
    EXPECT_EQ(call.recorder.firstValue, 11);
    struct Case {
        std::vector<VARIANT> list;
        System others;
    };
    Case const cases[] = {{{}, System::wine8},
                          {{integer(12), integer(13), integer(14)}, System::wine}};
    for (auto const& [list, others] : cases) {
        expectDifference(others, "a variable list takes exactly one argument", [&, &list = list] {
            ASSERT_EQ(call.run(3, DISPATCH_METHOD, list), S_OK);
            EXPECT_EQ(call.result.lVal, static_cast<LONG>(list.size()));
        });
    }
}

TEST(Invoke, PassesArraysOfTheirElements) {
    Call call;
    SAFEARRAY* list = SafeArrayCreateVector(VT_I4, 0, 3);
    for (LONG i = 0; i < 3; ++i) static_cast<LONG*>(list->pvData)[i] = i + 1;
    VARIANT array{};
    array.vt = VT_ARRAY | VT_I4;
    array.parray = list;
    ASSERT_EQ(call.run(11, DISPATCH_METHOD, {array}), S_OK);
    EXPECT_EQ(call.result.lVal, 6);
    EXPECT_EQ(call.run(11, DISPATCH_METHOD, {integer(1)}), DISP_E_TYPEMISMATCH);
    SafeArrayDestroy(list);
}

TEST(Invoke, PassesObjectsAndKeepsTheirCounts) {
    Call call;
    Recorder other;
    VARIANT object{};
    object.vt = VT_UNKNOWN;
    object.punkVal = static_cast<IRecorder*>(&other);
    ASSERT_EQ(call.run(9, DISPATCH_METHOD, {object}), S_OK);
    ASSERT_EQ(call.result.vt, VT_DISPATCH);
    EXPECT_EQ(call.result.pdispVal, static_cast<IDispatch*>(&other));
    VariantClear(&call.result);
    EXPECT_EQ(other.references, 1u);
    ASSERT_EQ(call.run(10, DISPATCH_PROPERTYPUTREF, {object}, {DISPID_PROPERTYPUT}), S_OK);
    EXPECT_EQ(call.recorder.partner, object.punkVal);
}

TEST(Invoke, ReportsTheFailureOfTheMember) {
    Call call;
    VARIANT code{};
    code.vt = VT_ERROR;
    code.scode = E_ACCESSDENIED;
    EXPECT_EQ(call.run(8, DISPATCH_METHOD, {code}), DISP_E_EXCEPTION);
    EXPECT_EQ(call.exception.scode, E_ACCESSDENIED);
    EXPECT_EQ(call.exception.wCode, 0);
    SysFreeString(call.exception.bstrSource);
    SysFreeString(call.exception.bstrDescription);
}

TEST(Invoke, RefusesCallsThatDoNotFit) {
    Call call;
    struct {
        MEMBERID member;
        WORD flags;
        std::vector<VARIANT> arguments;
        HRESULT expected;
    } const cases[] = {
        {4711, DISPATCH_METHOD, {}, DISP_E_MEMBERNOTFOUND},
        {1, DISPATCH_PROPERTYGET, {integer(1)}, DISP_E_MEMBERNOTFOUND},
        {1, DISPATCH_METHOD, {integer(1), integer(2), integer(3)}, DISP_E_BADPARAMCOUNT},
        {1, DISPATCH_METHOD, {}, DISP_E_BADPARAMCOUNT},
        {4, DISPATCH_METHOD, {integer(1), integer(2), integer(3)}, DISP_E_BADPARAMCOUNT},
        {12, DISPATCH_METHOD, {}, DISP_E_MEMBERNOTFOUND},
    };
    for (auto const& entry : cases) {
        EXPECT_EQ(call.run(entry.member, entry.flags, entry.arguments), entry.expected);
    }
}

TEST(Invoke, ForwardsMembersThatHaveNoSlot) {
    Call call(OLESTR("Events"));
    ASSERT_EQ(call.run(12, DISPATCH_METHOD, {real(1.0)}), S_OK);
    EXPECT_EQ(call.recorder.forwarded, 12);
    EXPECT_EQ(call.recorder.forwardedFlags, DISPATCH_METHOD);
    expectDifference(System::wine, "properties without functions cannot be reached", [&] {
        ASSERT_EQ(call.run(11, DISPATCH_PROPERTYGET, {}), S_OK);
        EXPECT_EQ(call.recorder.forwarded, 11);
    });
}

}  // namespace
}  // namespace velk::test
