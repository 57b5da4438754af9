// Values of every type through the sample's members.
#include "servers/automation/arrays.h"
#include "servers/automation/support/server_test.h"

namespace {

using namespace velk::test;

struct SampleValues : ServerTest {
    void SetUp() override {
        ServerTest::SetUp();
        create("VelkTest.Sample");
    }
    std::string call(char const* member, std::vector<VARIANT> arguments = {}) {
        return callByName(*object_, member, std::move(arguments)).text();
    }
};

TEST_F(SampleValues, ComeBack) {
    struct Case {
        char const* member;
        VARTYPE type;
        char const* value;
        char const* expected;
    };
    Case const cases[] = {
        {"EchoI1", VT_I1, "-5", "VT_I1 -5"},
        {"EchoI2", VT_I2, "-30000", "VT_I2 -30000"},
        {"EchoI4", VT_I4, "2147483647", "VT_I4 2147483647"},
        {"EchoI8", VT_I8, "-9000000000", "VT_I8 -9000000000"},
        {"EchoUI1", VT_UI1, "255", "VT_UI1 255"},
        {"EchoUI2", VT_UI2, "65535", "VT_UI2 65535"},
        {"EchoUI4", VT_UI4, "4294967295", "VT_UI4 4294967295"},
        {"EchoUI8", VT_UI8, "18000000000000000000", "VT_UI8 18000000000000000000"},
        {"EchoR4", VT_R4, "1.5", "VT_R4 1.5"},
        {"EchoR8", VT_R8, "-2.25", "VT_R8 -2.25"},
        {"EchoCy", VT_CY, "12.3456", "VT_CY 12.3456"},
        {"EchoDate", VT_DATE, "36526.5", "VT_DATE 1/1/2000 12:00:00 PM"},
        {"EchoDecimal", VT_DECIMAL, "0.001", "VT_DECIMAL 0.001"},
        {"EchoBstr", VT_BSTR, "text", "VT_BSTR \"text\""},
        {"EchoBool", VT_BOOL, "True", "VT_BOOL True"},
        {"EchoColor", VT_I4, "70000", "VT_I4 70000"},
        {"EchoVariant", VT_R8, "0.5", "VT_R8 0.5"},
    };
    for (auto const& entry : cases) {
        // A date has no decimal text; it is a number of days.
        bool const isDate = entry.type == VT_DATE;
        auto source = valueOf(isDate ? VARTYPE{VT_R8} : entry.type, entry.value);
        if (isDate) source.address()->vt = VT_DATE;
        EXPECT_EQ(call(entry.member, {source.get()}), entry.expected) << entry.member;
    }
    VARIANT code{};
    code.vt = VT_ERROR;
    code.scode = E_ACCESSDENIED;
    EXPECT_EQ(call("EchoError", {code}), "VT_ERROR 0x80070005");
}

TEST_F(SampleValues, ObjectsAndArraysComeBack) {
    auto const same = callByName(*object_, "EchoDispatch", {object(object_.get())});
    EXPECT_EQ(same.text(), "VT_DISPATCH object");
    EXPECT_EQ(same.result.get().pdispVal, object_.get());
    EXPECT_EQ(call("EchoDispatch", {object(nullptr)}), "VT_DISPATCH null");
    auto const list = callByName(*object_, "GiveArray", {});
    EXPECT_EQ(list.code, DISP_E_BADPARAMCOUNT);
}

TEST_F(SampleValues, AreChangedByReference) {
    SHORT small = 6;
    LONG whole = 6;
    DOUBLE real = 1.25;
    VARIANT_BOOL truth = VARIANT_FALSE;
    CY money{};
    DATE day = 10.5;
    velk::com::Bstr name = velk::com::makeBstr(server::textOf("a"));
    auto any = number(21);
    struct Case {
        char const* member;
        VARTYPE type;
        void* place;
        char const* expected;
    };
    Case const cases[] = {
        {"ChangeShort", VT_I2, &small, "VT_BYREF|VT_I2 7"},
        {"ChangeLong", VT_I4, &whole, "VT_BYREF|VT_I4 7"},
        {"ChangeDouble", VT_R8, &real, "VT_BYREF|VT_R8 2.5"},
        {"ChangeBool", VT_BOOL, &truth, "VT_BYREF|VT_BOOL True"},
        {"ChangeCurrency", VT_CY, &money, "VT_BYREF|VT_CY 1"},
        {"ChangeText", VT_BSTR, name.address(), "VT_BYREF|VT_BSTR \"a!\""},
        {"ChangeVariant", VT_VARIANT, &any, "VT_BYREF|VT_VARIANT (VT_I4 42)"},
    };
    for (auto const& entry : cases) {
        auto const argument = reference(entry.type, entry.place);
        EXPECT_EQ(call(entry.member, {argument}), "VT_EMPTY") << entry.member;
        EXPECT_EQ(describe(argument), entry.expected) << entry.member;
    }
    EXPECT_EQ(call("ChangeDate", {reference(VT_DATE, &day)}), "VT_EMPTY");
    EXPECT_EQ(day, 11.5);
}

TEST_F(SampleValues, ArraysAndObjectsAreChangedByReference) {
    velk::com::SafeArray numbers = server::makeVector(VT_I4, 2);
    EXPECT_EQ(call("ChangeLongs", {reference(VT_ARRAY | VT_I4, numbers.address())}), "VT_EMPTY");
    EXPECT_EQ(server::elementsOf<LONG>(numbers)[1], 1);
    velk::com::SafeArray list = server::makeVector(VT_VARIANT, 2);
    EXPECT_EQ(call("ChangeArray", {reference(VT_ARRAY | VT_VARIANT, list.address())}), "VT_EMPTY");
    EXPECT_EQ(describe(server::elementsOf<VARIANT>(list)[2]), "VT_BSTR \"added\"");
    EXPECT_EQ(call("Keep", {object(object_.get())}), "VT_EMPTY");
    IDispatch* place = nullptr;
    EXPECT_EQ(call("ChangeDispatch", {reference(VT_DISPATCH, &place)}), "VT_EMPTY");
    EXPECT_EQ(place, object_.get());
    velk::com::ComPtr<IDispatch> const given(place, velk::com::adopt);
    EXPECT_EQ(call("Keep", {object(nullptr)}), "VT_EMPTY");
}

TEST_F(SampleValues, AreGivenOut) {
    LONG whole = 0;
    DOUBLE real = 0;
    VARIANT_BOOL truth = VARIANT_FALSE;
    velk::com::Bstr name;
    velk::com::Variant any;
    velk::com::SafeArray list;
    velk::com::ComPtr<IDispatch> self;
    struct Case {
        char const* member;
        VARTYPE type;
        void* place;
        char const* expected;
    };
    Case const cases[] = {
        {"GiveLong", VT_I4, &whole, "VT_BYREF|VT_I4 42"},
        {"GiveDouble", VT_R8, &real, "VT_BYREF|VT_R8 1.5"},
        {"GiveBool", VT_BOOL, &truth, "VT_BYREF|VT_BOOL True"},
        {"GiveText", VT_BSTR, name.address(), "VT_BYREF|VT_BSTR \"given\""},
        {"GiveVariant", VT_VARIANT, any.address(), "VT_BYREF|VT_VARIANT (VT_BSTR \"given\")"},
        {"GiveArray", VT_ARRAY | VT_VARIANT, list.address(), "VT_BYREF|VT_ARRAY|VT_VARIANT [0..2]"},
        {"GiveDispatch", VT_DISPATCH, self.put(), "VT_BYREF|VT_DISPATCH object"},
    };
    for (auto const& entry : cases) {
        auto const argument = reference(entry.type, entry.place);
        EXPECT_EQ(call(entry.member, {argument}), "VT_EMPTY") << entry.member;
        EXPECT_EQ(describe(argument), entry.expected) << entry.member;
    }
    EXPECT_EQ(self, object_);
    EXPECT_EQ(describe(server::elementsOf<VARIANT>(list)[1]), "VT_BSTR \"two\"");
}

TEST_F(SampleValues, ArraysHaveTheirDimensions) {
    EXPECT_EQ(call("MakeCube", {number(2), number(3), number(4)}),
              "VT_ARRAY|VT_I4 [0..1, 0..2, 0..3]");
    auto const cube = callByName(*object_, "MakeCube", {number(2), number(3), number(4)});
    LONG indexes[] = {1, 2, 3};
    LONG element = 0;
    EXPECT_EQ(SafeArrayGetElement(cube.result.get().parray, indexes, &element), S_OK);
    EXPECT_EQ(element, 123);
    auto const grid = callByName(*object_, "MakeGrid", {number(2), number(3)});
    EXPECT_EQ(grid.text(), "VT_ARRAY|VT_R8 [0..1, 0..2]");
    // Two rows of 0 and 1, and twice the columns 0, 1/8 and 2/8.
    EXPECT_EQ(call("SumArray", {grid.result.get()}), "VT_R8 3.75");
    EXPECT_EQ(call("MakeGrid", {number(-1), number(3)}), "0x80020009");
}

}  // namespace
