// Host code calls the members of native objects.

#include "support/cells.h"
#include "support/expected_difference.h"
#include "support/native_values.h"
#include "support/script_test.h"

namespace {

using namespace velk::test;

class NativeCalls : public ScriptTest {};

// The objects of the table stay from row to row.
TEST_F(NativeCalls, Table) {
    auto const object = sample();
    auto const faulty = native("VelkTest.Faulty");
    auto const other = sample();
    auto const cube =
        dispatchIn(callHost(object.iface(), "MakeCube", mzCallMethod, {2, 3, 4}).result);
    ASSERT_TRUE(cube.isValid());
    auto const list = create("comadapter.variantwrapper");
    callText(list, "Create", {0x2000, 12, 1});
    auto const text = create("comadapter.variantwrapper");
    callHost(text.iface(), "val", mzCallPropertyPut, {"old"});
    RecordingHolder const host;
    host->respond = [](RecordedCall const& call) {
        if (call.name == "Fail")
            return Answer{mzFailure, {}, mzComCreateException("host", "told so", {})};
        return Answer{mzSuccess, call.arguments.empty() ? mzComVariantC() : call.arguments[0]};
    };
    std::map<std::string, mzComPtrT<mzIDispatch>> const objects = {
        {"sample", object}, {"faulty", faulty}, {"cube", cube}, {"list", list}, {"text", text}};
    NamedValues const names = {
        {"host", [&] { return host.asValue(); }},  {"self", [&] { return valueOf(object); }},
        {"other", [&] { return valueOf(other); }}, {"cube", [&] { return valueOf(cube); }},
        {"list", [&] { return valueOf(list); }},   {"text", [&] { return valueOf(text); }}};
    // What reached the object last, as it recorded it.
    auto const recorded = [&] {
        auto const texts =
            dispatchIn(callHost(object.iface(), "RecordedCalls", mzCallMethod).result);
        auto const last = callHost(texts.iface(), "ubound", mzCallMethod).result;
        return describe(callHost(texts.iface(), "", mzCallMethod, {last}).result);
    };
    expectTable("bridge/native_calls.tsv", [&](DataRow const& row) {
        std::string const answer = callOfRow(objects.at(row["on"]).iface(), row, names);
        return row["shows"] == "record" ? recorded() : answer;
    });
    callText(object, "Keep", {mzComVariantC()});
    host->respond = {};
    host->forgetCalls();
}

TEST_F(NativeCalls, ReferencesOfOtherTypesComeBackWithoutDeclaration) {
    auto const object = sample();
    expectDifference("reference-conversion", [&] {
        for (auto const& row : rowsOf("bridge/native_references.tsv"))
            EXPECT_EQ(callOfRow(object.iface(), row), row["expected"]) << row.place();
    });
    expectDifference("variable-lists", [&] {
        EXPECT_EQ(callText(object, "AddNumbers", {1, 2.5, 3}), "ok number 6.500000");
    });
}

TEST_F(NativeCalls, ObjectsKeepTheirIdentity) {
    auto const object = sample();
    RecordingHolder const host;
    auto const back = callHost(object.iface(), "EchoDispatch", mzCallMethod, {host.asValue()});
    EXPECT_EQ(objectIn(back.result), static_cast<mzIUnknown*>(host.dispatch()));
    auto const held = variable(host.asValue());
    callHost(object.iface(), "EchoVariant", mzCallMethod, {held});
    EXPECT_EQ(objectIn(held.skipVariable()), static_cast<mzIUnknown*>(host.dispatch()));
    auto const list = create("comadapter.variantwrapper");
    callText(list, "Create", {0x2000, 12, 1});
    auto const array = variable(valueOf(list));
    EXPECT_EQ(callText(object, "ChangeArray", {array}), "ok empty");
    EXPECT_EQ(objectIn(array.skipVariable()), objectIn(valueOf(list))) << "the wrapper stays";
}

TEST_F(NativeCalls, OddResultsOfFaultyServers) {
    auto const object = native("VelkTest.Faulty");
    for (char const* member : {"NullRecord", "NullArray"}) {
        auto const held = dispatchIn(callHost(object.iface(), member, mzCallMethod).result);
        ASSERT_TRUE(held.isValid()) << member;
        EXPECT_EQ(callText(held, "", {0}).substr(0, 2),
                  member == std::string("NullArray") ? "fa" : "In");
    }
    auto const text = callHost(object.iface(), "EmbeddedNull", mzCallMethod).result;
    mzComStringC whole;
    ASSERT_EQ(text.get(whole), mzSuccess);
    EXPECT_GT(whole.length(), static_cast<int>(std::string(whole.toUtf8().c_str()).size()));
    EXPECT_GT(callText(object, "LongText").size(), 1000000U);
    callText(object, "Vanish");
    EXPECT_EQ(callText(object, "Anything").substr(0, 10), "Invoke DSP");
}

// What stays behind is found after the last test.
TEST_F(NativeCalls, ResultsThatNobodyWantsAreGivenUp) {
    velk::com::ComPtr<IDispatch> object;
    ASSERT_EQ(createByProgId("VelkTest.Sample", IID_IDispatch, object.putVoid()), S_OK);
    for (auto const* const name : {OLESTR("Name"), OLESTR("RecordedCalls"), OLESTR("Kept")}) {
        DISPPARAMS none{};
        EXPECT_EQ(object->Invoke(idOf(*object.get(), name), IID_NULL, 0,
                                 DISPATCH_METHOD | DISPATCH_PROPERTYGET, &none, nullptr, nullptr,
                                 nullptr),
                  S_OK);
    }
}

}  // namespace
