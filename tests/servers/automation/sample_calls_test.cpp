// Properties, arguments, failures and calls back of the sample.
#include "servers/automation/arrays.h"
#include "servers/automation/support/server_test.h"
#include "support/expected_difference.h"

namespace {

using namespace velk::test;

struct SampleCalls : ServerTest {
    void SetUp() override {
        ServerTest::SetUp();
        create("VelkTest.Sample");
    }
    std::string call(char const* member, std::vector<VARIANT> arguments = {}) {
        return callByName(*object_, member, std::move(arguments)).text();
    }
    std::string read(char const* member, std::vector<VARIANT> indexes = {}) {
        return getByName(*object_, member, std::move(indexes)).text();
    }
    HRESULT write(char const* member, std::vector<VARIANT> arguments,
                  WORD flags = DISPATCH_PROPERTYPUT) {
        return putByName(*object_, member, std::move(arguments), flags).code;
    }
};

TEST_F(SampleCalls, PropertiesKeepWhatIsWritten) {
    auto const name = text("name");
    EXPECT_EQ(write("Value", {number(5)}), S_OK);
    EXPECT_EQ(read("Value"), "VT_I4 5");
    EXPECT_EQ(write("Name", {name.get()}), S_OK);
    EXPECT_EQ(read("Name"), "VT_BSTR \"name\"");
    EXPECT_EQ(write("Secret", {name.get()}), S_OK);
    EXPECT_EQ(call("RevealSecret"), "VT_BSTR \"name\"");
    EXPECT_EQ(write("Item", {name.get(), number(8)}), S_OK);
    EXPECT_EQ(read("Item", {name.get()}), "VT_I4 8");
    EXPECT_EQ(write("Cell", {number(2), number(3), number(9)}), S_OK);
    EXPECT_EQ(read("Cell", {number(2), number(3)}), "VT_I4 9");
    EXPECT_EQ(read("Cell", {number(3), number(2)}), "VT_EMPTY");
    EXPECT_EQ(read("Count"), "VT_I4 2");
    EXPECT_EQ(write("Peer", {object(object_.get())}, DISPATCH_PROPERTYPUTREF), S_OK);
    EXPECT_EQ(read("Peer"), "VT_DISPATCH object");
    EXPECT_EQ(write("Peer", {object(nullptr)}, DISPATCH_PROPERTYPUTREF), S_OK);
}

TEST_F(SampleCalls, PropertiesRefuseTheOtherDirection) {
    EXPECT_EQ(write("Count", {number(1)}), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(read("Secret"), "0x80020003");
}

TEST_F(SampleCalls, ArgumentsMayBeLeftOut) {
    auto const given = text("x");
    EXPECT_EQ(call("Add", {number(3), number(4)}), "VT_I4 7");
    EXPECT_EQ(call("Describe"), "VT_BSTR \"5/none/missing\"");
    EXPECT_EQ(call("Describe", {number(1), given.get(), number(2)}), "VT_BSTR \"1/x/VT_I4 2\"");
    expectDifference(System::wine, "takes exactly one argument for a variable list", [&] {
        EXPECT_EQ(call("AddNumbers", {number(1), number(2), number(4)}), "VT_R8 7");
    });
    auto texts = server::makeVector(VT_BSTR, 2);
    for (ULONG i = 0; i < 2; ++i) {
        server::elementsOf<BSTR>(texts)[i] = velk::com::makeBstr(server::textOf("ab")).release();
    }
    VARIANT vector{};
    vector.vt = VT_ARRAY | VT_BSTR;
    vector.parray = texts.get();
    EXPECT_EQ(call("Join", {vector}), "VT_BSTR \"ab,ab\"");
    EXPECT_EQ(call("Join", {vector, given.get()}), "VT_BSTR \"abxab\"");
}

TEST_F(SampleCalls, FailuresSayWhatTheyWereTold) {
    auto const source = text("source");
    auto const description = text("description");
    auto const file = text("file.hlp");
    auto const failed = callByName(
        *object_, "Fail",
        {number(E_ACCESSDENIED), source.get(), description.get(), file.get(), number(12)});
    EXPECT_EQ(failed.code, DISP_E_EXCEPTION);
    auto const& info = failed.exception.get();
    EXPECT_EQ(info.scode, E_ACCESSDENIED);
    EXPECT_EQ(asciiOf(info.bstrSource), "source");
    EXPECT_EQ(asciiOf(info.bstrDescription), "description");
    EXPECT_EQ(asciiOf(info.bstrHelpFile), "file.hlp");
    EXPECT_EQ(info.dwHelpContext, 12u);
    EXPECT_EQ(call("FailPlain", {number(E_ABORT)}), "0x80004004");
    auto const byCode = callByName(*object_, "FailByCode", {number(E_ABORT)});
    EXPECT_EQ(byCode.code, DISP_E_EXCEPTION);
    EXPECT_EQ(byCode.exception.get().scode, E_ABORT);
    auto const refused =
        callByName(*object_, "Mismatch", {number(1), number(2), number(3), number(2)});
    EXPECT_EQ(refused.code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(refused.argumentError, 2u);
}

TEST_F(SampleCalls, CallsBackAndTellsObjectsApart) {
    auto const echo = text("EchoVariant");
    auto const fail = text("FailPlain");
    auto const self = object(object_.get());
    EXPECT_EQ(call("CallBack", {self, echo.get(), number(6)}), "VT_I4 6");
    EXPECT_EQ(call("CallBack", {self, fail.get(), number(E_ABORT)}), "0x80004004");
    auto const other =
        velk::com::ComPtr<IDispatch>(object_).query<IDispatch>(server::sampleExtraInterface);
    EXPECT_EQ(call("Same", {self, object(other.get())}), "VT_BOOL True");
    velk::com::ComPtr<IDispatch> second;
    ASSERT_EQ(createByProgId("VelkTest.Sample", IID_IDispatch, second.putVoid()), S_OK);
    EXPECT_EQ(call("Same", {self, object(second.get())}), "VT_BOOL False");
}

TEST_F(SampleCalls, AreRecordedAsTheyCame) {
    LONG place = 7;
    call("ClearRecorded");
    call("Add", {number(3), reference(VT_I4, &place)});
    write("Value", {number(5)});
    std::vector<std::string> const expected = {
        "flags=1 args=[VT_BYREF|VT_I4 7, VT_I4 3] named=0",
        "flags=4 args=[VT_I4 5] named=1 (-3)",
    };
    EXPECT_EQ(textsIn(callByName(*object_, "RecordedCalls").result), expected);
    call("ClearRecorded");
    EXPECT_TRUE(textsIn(callByName(*object_, "RecordedCalls").result).empty());
}

}  // namespace
