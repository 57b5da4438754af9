// Records through the sample's members.
#include "servers/automation/sample_interfaces.h"
#include "servers/automation/support/server_test.h"
#include "support/expected_difference.h"

namespace {

using namespace velk::test;
using server::Point;

struct SampleRecords : ServerTest {
    void SetUp() override {
        ServerTest::SetUp();
        create("VelkTest.Sample");
    }
    NativeAnswer call(char const* member, std::vector<VARIANT> arguments = {}) {
        return callByName(*object_, member, std::move(arguments));
    }
    static Point pointIn(VARIANT const& value) { return *static_cast<Point*>(value.pvRecord); }
};

TEST_F(SampleRecords, AreMadeAndComeBackAsCopies) {
    auto const made = call("MakePoint", {number(5), number(-6)});
    ASSERT_EQ(made.text(), "VT_RECORD Point");
    EXPECT_EQ(pointIn(made.result.get()).x, 5);
    EXPECT_EQ(pointIn(made.result.get()).y, -6);
    GUID id{};
    EXPECT_EQ(made.result.get().pRecInfo->GetGuid(&id), S_OK);
    EXPECT_EQ(id, server::pointId);
    auto const same = call("EchoRecord", {made.result.get()});
    ASSERT_EQ(same.text(), "VT_RECORD Point");
    EXPECT_NE(same.result.get().pvRecord, made.result.get().pvRecord);
    EXPECT_EQ(pointIn(same.result.get()).y, -6);
    auto const refused = call("EchoRecord", {number(1)});
    EXPECT_EQ(refused.exception.get().scode, DISP_E_TYPEMISMATCH);
}

TEST_F(SampleRecords, AreChangedInPlace) {
    auto made = call("MakePoint", {number(5), number(-6)});
    auto const whole = reference(VT_VARIANT, made.result.address());
    EXPECT_EQ(call("ChangeRecord", {whole}).code, S_OK);
    EXPECT_EQ(pointIn(made.result.get()).x, -6);
    auto direct = made.result.get();
    direct.vt = VT_BYREF | VT_RECORD;
    expectDifference(System::wine, "passes no references to records", [&] {
        EXPECT_EQ(call("ChangePoint", {direct}).code, S_OK);
        EXPECT_EQ(pointIn(made.result.get()).x, 5);
        EXPECT_EQ(call("GivePoint", {direct}).code, S_OK);
        EXPECT_EQ(pointIn(made.result.get()).x, 3);
        EXPECT_EQ(pointIn(made.result.get()).y, 4);
    });
}

TEST_F(SampleRecords, FillArrays) {
    auto const made = call("MakePoints", {number(3)});
    ASSERT_EQ(made.code, S_OK);
    ASSERT_EQ(made.result.get().vt, VT_ARRAY | VT_RECORD);
    auto const& array = *made.result.get().parray;
    EXPECT_EQ(array.rgsabound[0].cElements, 3u);
    EXPECT_EQ(static_cast<Point*>(array.pvData)[2].y, -2);
    EXPECT_EQ(call("MakePoints", {number(-1)}).exception.get().scode, E_INVALIDARG);
}

}  // namespace
