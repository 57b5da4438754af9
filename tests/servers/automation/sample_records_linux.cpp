// Records with an array in them: Wine does not copy the array with its record,
// and ends the process when both go.
#include "servers/automation/sample_interfaces.h"
#include "servers/automation/support/server_test.h"

namespace {

using namespace velk::test;

using SampleArrayFields = ServerTest;

TEST_F(SampleArrayFields, BelongToTheirRecord) {
    auto& sample = create("VelkTest.Sample");
    auto const name = text("Ada");
    auto const made = callByName(sample, "MakePerson", {name.get()});
    ASSERT_EQ(made.text(), "VT_RECORD Person");
    auto& person = *static_cast<server::Person*>(made.result.get().pvRecord);
    EXPECT_EQ(asciiOf(person.name), "Ada");
    EXPECT_EQ(person.home.y, 2);
    EXPECT_EQ(describe(person.data), "VT_I4 7");
    ASSERT_NE(person.numbers, nullptr);
    EXPECT_EQ(person.numbers->rgsabound[0].cElements, 3u);
    auto direct = made.result.get();
    direct.vt = VT_BYREF | VT_RECORD;
    EXPECT_EQ(callByName(sample, "ChangePerson", {direct}).code, S_OK);
    EXPECT_EQ(asciiOf(person.name), "Ada!");
    EXPECT_EQ(person.home.x, 2);
}

}  // namespace
