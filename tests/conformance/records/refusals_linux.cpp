// Calls that cannot be made, and records that members return themselves.

#include <stdexcept>

#include <gtest/gtest.h>

#include "support/value_notation.h"
#include "register.h"

namespace velk::test {
namespace {

HRESULT STDMETHODCALLTYPE never(LONG) {
    ADD_FAILURE() << "called";
    return S_OK;
}

HRESULT callNever(VARTYPE type, VARIANTARG* argument, VARTYPE returnType) {
    Value result;
    return DispCallFunc(nullptr, reinterpret_cast<ULONG_PTR>(never), CC_STDCALL, returnType, 1,
                        &type, &argument, &result);
}

TEST(DispCallRefusals, NameWhatIsWrong) {
    Value number("I4:1");
    Record<Spot> const spot(OLESTR("Spot"));
    struct {
        VARTYPE type;
        VARIANT argument;
        VARTYPE returnType;
        HRESULT expected;
    } const cases[] = {
        {VT_EMPTY, *number, VT_I4, DISP_E_BADVARTYPE},
        {VT_NULL, *number, VT_I4, DISP_E_BADVARTYPE},
        {VT_CARRAY, *number, VT_I4, DISP_E_BADVARTYPE},
        {VT_USERDEFINED, *number, VT_I4, DISP_E_BADVARTYPE},
        {15, *number, VT_I4, DISP_E_BADVARTYPE},
        {VT_I4, *number, VT_NULL, DISP_E_BADVARTYPE},
        {VT_I4, *number, VT_RECORD, DISP_E_BADVARTYPE},
        {VT_RECORD, valueOf(nullptr, nullptr), VT_I4, DISP_E_TYPEMISMATCH},
        {VT_RECORD, valueOf(spot.info.get(), nullptr), VT_I4, DISP_E_TYPEMISMATCH},
    };
    for (auto const& entry : cases) {
        VARIANT argument = entry.argument;
        EXPECT_EQ(callNever(entry.type, &argument, entry.returnType), entry.expected)
            << entry.type << " giving " << entry.returnType;
    }
    EXPECT_EQ(callNever(VT_I4, nullptr, VT_I4), E_INVALIDARG);
}

TEST(DispCallRefusals, NeedArraysAndAFunction) {
    VARTYPE type = VT_I4;
    Value number("I4:1");
    VARIANTARG* argument = &number;
    Value result;
    auto const place = reinterpret_cast<ULONG_PTR>(never);
    EXPECT_EQ(DispCallFunc(nullptr, place, CC_STDCALL, VT_I4, 1, nullptr, &argument, &result),
              E_INVALIDARG);
    EXPECT_EQ(DispCallFunc(nullptr, place, CC_STDCALL, VT_I4, 1, &type, nullptr, &result),
              E_INVALIDARG);
    EXPECT_EQ(DispCallFunc(nullptr, 0, CC_STDCALL, VT_I4, 1, &type, &argument, &result),
              E_INVALIDARG);
    void* slots[] = {nullptr};
    void* object = slots;
    EXPECT_EQ(DispCallFunc(&object, 0, CC_STDCALL, VT_I4, 1, &type, &argument, &result),
              E_INVALIDARG);
    object = nullptr;
    EXPECT_EQ(DispCallFunc(&object, 0, CC_STDCALL, VT_I4, 1, &type, &argument, &result),
              E_INVALIDARG);
}

// The counts at the end tell whether the text was released.
TEST(DispCallRefusals, DropAResultThatNobodyTakes) {
    auto const give = +[]() -> BSTR { return newText(OLESTR("dropped")); };
    EXPECT_EQ(DispCallFunc(nullptr, reinterpret_cast<ULONG_PTR>(give), CC_STDCALL, VT_BSTR, 0,
                           nullptr, nullptr, nullptr),
              S_OK);
}

TEST(DispCallRefusals, LetNoExceptionThrough) {
    auto const fail = +[]() -> LONG { throw std::runtime_error("from the function"); };
    Value result;
    EXPECT_EQ(DispCallFunc(nullptr, reinterpret_cast<ULONG_PTR>(fail), CC_STDCALL, VT_I4, 0,
                           nullptr, nullptr, &result),
              E_UNEXPECTED);
    EXPECT_EQ(result->vt, VT_EMPTY);
}

TEST(RecordCallRefusals, ARecordIsNeeded) {
    RegisterCall call;
    Record<Person> const person(OLESTR("Person"));
    for (int const modifier : {0, int{VT_BYREF}}) {
        auto const type = static_cast<VARTYPE>(VT_RECORD | modifier);
        EXPECT_EQ(call.run(1, {valueOf(person.info.get(), nullptr, type)}), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(call.run(1, {valueOf(nullptr, person.get(), type)}), DISP_E_TYPEMISMATCH);
    }
    // What has no identifier cannot be told from others.
    EXPECT_EQ(call.run(8, {valueOf(person.info.get(), person.get())}), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(call.object.seen, nullptr);
}

// The member's old record is the VARIANT's own; the counts at the end tell
// whether its text was released.
TEST(RecordCallRefusals, NothingIsLostThatAMemberWritesOver) {
    RegisterCall call;
    Value name("BSTR:Bob");
    Value person;
    auto info = recordNamed(OLESTR("Person"));
    auto* const old = static_cast<Person*>(info->RecordCreate());
    old->name = newText(OLESTR("old"));
    *person = valueOf(info.release(), old);
    ASSERT_EQ(call.run(3, {*name, *person}), S_OK);
    EXPECT_EQ(textIn(old->name), "Bob");
}

// The compiler for Windows has another convention for these members than COM.
TEST(RecordResults, MayBeReturnedByTheMemberItself) {
    RegisterCall call;
    ASSERT_EQ(call.run(7, {}), S_OK);
    ASSERT_EQ(call.result.vt, VT_RECORD);
    auto const& person = *static_cast<Person*>(call.result.pvRecord);
    EXPECT_EQ(textIn(person.name), "last");
    EXPECT_EQ(person.age, 3);
}

}  // namespace
}  // namespace velk::test
