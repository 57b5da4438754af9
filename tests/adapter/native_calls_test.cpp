// Host code calls the members of native objects.

#include <vector>

#include "support/expected_difference.h"
#include "support/script_test.h"

namespace {

using namespace velk::test;

constexpr char const* references =
    "a reference to a VARIANT is no argument for a reference to another type";

class NativeCalls : public ScriptTest {
  protected:
    /// What reached the object last, as it recorded it.
    static std::string recorded(mzComPtrT<mzIDispatch> const& object) {
        auto const texts =
            dispatchIn(callHost(object.iface(), "RecordedCalls", mzCallMethod).result);
        auto const last = callHost(texts.iface(), "ubound", mzCallMethod).result;
        return describe(callHost(texts.iface(), "", mzCallMethod, {last}).result);
    }
};

TEST_F(NativeCalls, ValuesOfEveryType) {
    auto const object = sample();
    struct {
        char const* member;
        mzComVariantC value;
        char const* expected;
    } const rows[] = {
        {"EchoI1", -5, "ok integer -5"},
        {"EchoI2", -300, "ok integer -300"},
        {"EchoI4", -70000, "ok integer -70000"},
        {"EchoI8", -70000, "ok integer -70000"},
        {"EchoUI1", 200, "ok integer 200"},
        {"EchoUI2", 60000, "ok integer 60000"},
        {"EchoUI4", 70000, "ok integer 70000"},
        {"EchoUI8", 70000, "ok integer 70000"},
        {"EchoInt", 7, "ok integer 7"},
        {"EchoUInt", 7, "ok integer 7"},
        {"EchoR4", 0.5, "ok number 0.500000"},
        {"EchoR8", 2.5, "ok number 2.500000"},
        {"EchoCy", 1.5, "ok number 1.500000"},
        {"EchoBstr", "text", "ok text text"},
        {"EchoBool", true, "ok integer -1"},
        {"EchoColor", 2, "ok integer 2"},
        {"EchoVariant", "text", "ok text text"},
        {"EchoVariant", mzComVariantC(), "ok empty"},
        {"EchoI1", 300, "Invoke DSP: unknown exception :0x8002000a"},
        {"EchoI4", "no number", "Invoke DSP: Argument mismatch at position :1"},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(callText(object, row.member, {row.value}), row.expected) << row.member;
    }
}

TEST_F(NativeCalls, ReferencesComeBackWithoutDeclaration) {
    auto const object = sample();
    struct {
        char const* member;
        mzComVariantC before;
        char const* after;
    } const rows[] = {
        {"ChangeVariant", 5, "integer 10"},
        {"GiveVariant", "old", "text given"},
        {"ChangeShort", 5, "integer 6"},
        {"ChangeLong", 5, "integer 6"},
        {"ChangeDouble", 2.5, "number 5.000000"},
        {"ChangeBool", true, "integer 0"},
        {"ChangeCurrency", 1, "number 2.000000"},
        {"ChangeText", "a", "text a!"},
        {"ChangeVariant", "a", "text a!"},
        {"GiveLong", mzComVariantC(), "integer 42"},
        {"GiveDouble", 0, "number 1.500000"},
        {"GiveBool", 0, "integer -1"},
        {"GiveText", mzComVariantC(), "text given"},
    };
    auto const check = [&](auto const& row) {
        auto const value = variable(row.before);
        EXPECT_EQ(callText(object, row.member, {value}), "ok empty") << row.member;
        EXPECT_EQ(describe(value.skipVariable()), row.after) << row.member;
    };
    check(rows[0]);
    check(rows[1]);
    // A reference to a text, whose old one nobody else gives up.
    auto const wrapper = create("comadapter.variantwrapper");
    callHost(wrapper.iface(), "val", mzCallPropertyPut, {"old"});
    EXPECT_EQ(callText(object, "GiveText", {variable(valueOf(wrapper))}), "ok empty");
    EXPECT_EQ(callText(wrapper, ""), "ok text given");
    expectDifference(System::wine, references, [&] {
        for (auto const& row : rows) check(row);
        auto const number = variable(0);
        auto const text = variable("");
        EXPECT_EQ(callText(object, "GiveTwo", {number, text}), "ok integer -1");
        EXPECT_EQ(describe(number.skipVariable()), "integer 42");
        EXPECT_EQ(describe(text.skipVariable()), "text given");
    });
}

TEST_F(NativeCalls, Properties) {
    auto const object = sample();
    auto const put = [&](char const* name, std::initializer_list<mzComVariantC> arguments) {
        return callHost(object.iface(), name, mzCallPropertyPut, arguments).text();
    };
    auto const get = [&](char const* name, std::initializer_list<mzComVariantC> arguments) {
        return callHost(object.iface(), name, mzCallPropertyGet, arguments).text();
    };
    EXPECT_EQ(put("Name", {"changed"}), "ok empty");
    EXPECT_EQ(get("Name", {}), "ok text changed");
    EXPECT_EQ(put("Item", {"key", variable(7)}), "ok empty");
    EXPECT_EQ(get("Item", {"key"}), "ok integer 7");
    EXPECT_EQ(put("Cell", {1, 2, 2.5}), "ok empty");
    EXPECT_EQ(get("Cell", {1, 2}), "ok number 2.500000");
    EXPECT_EQ(put("Value", {"default"}), "ok empty");
    EXPECT_EQ(callText(object, ""), "ok text default");
    EXPECT_EQ(get("Count", {}), "ok integer 2");
    expectDifference(System::wine10, "a value put on what is read-only is one too many",
                     [&] { EXPECT_EQ(put("Count", {1}), "Invoke DSP: Member 'Count' not found"); });
    EXPECT_EQ(callText(object, "Add", {1}), "Invoke DSP: wrong number of arguments");
    EXPECT_EQ(callText(object, "Describe"), "ok text 5/none/missing");
    expectDifference(System::wine, "[vararg] takes exactly one argument", [&] {
        EXPECT_EQ(callText(object, "AddNumbers", {1, 2.5, 3}), "ok number 6.500000");
    });
}

TEST_F(NativeCalls, ExactValuesReachTheObject) {
    auto const object = sample();
    auto const other = sample();
    RecordingHolder const host;
    struct {
        unsigned kind;
        std::vector<mzComVariantC> arguments;
        char const* expected;
    } const rows[] = {
        {mzCallMethod, {7}, "text flags=3 args=[VT_I4 7] named=0"},
        {mzCallMethod, {variable(7)}, "text flags=3 args=[VT_BYREF|VT_VARIANT (VT_I4 7)] named=0"},
        {mzCallMethod, {host.asValue()}, "text flags=3 args=[VT_DISPATCH object] named=0"},
        {mzCallMethod,
         {variable(valueOf(other))},
         "text flags=3 args=[VT_BYREF|VT_DISPATCH object] named=0"},
        {mzCallPropertyGet, {"a"}, "text flags=2 args=[VT_BSTR \"a\"] named=0"},
    };
    for (auto const& row : rows) {
        mzComVariantArrayC arguments;
        for (auto const& argument : row.arguments) arguments << argument;
        HostOutcome outcome;
        object->invokeByName("EchoVariant", row.kind, arguments, outcome.result, outcome.exception);
        EXPECT_EQ(recorded(object), row.expected);
    }
}

TEST_F(NativeCalls, ObjectsKeepTheirIdentity) {
    auto const object = sample();
    RecordingHolder const host;
    auto const back = callHost(object.iface(), "EchoDispatch", mzCallMethod, {host.asValue()});
    EXPECT_EQ(objectIn(back.result), static_cast<mzIUnknown*>(host.dispatch()));
    auto const held = variable(host.asValue());
    callHost(object.iface(), "EchoVariant", mzCallMethod, {held});
    EXPECT_EQ(objectIn(held.skipVariable()), static_cast<mzIUnknown*>(host.dispatch()));
    auto const other = sample();
    EXPECT_EQ(callText(object, "Same", {valueOf(other), valueOf(other)}), "ok integer -1");
    EXPECT_EQ(callText(object, "Same", {valueOf(object), valueOf(other)}), "ok integer 0");
    EXPECT_EQ(callText(object, "Keep", {valueOf(other)}), "ok empty");
    auto const kept = callHost(object.iface(), "Kept", mzCallMethod).result;
    EXPECT_EQ(callText(object, "Same", {kept, valueOf(other)}), "ok integer -1");
    callText(object, "Keep", {mzComVariantC()});
}

TEST_F(NativeCalls, NativeObjectsCallBack) {
    auto const object = sample();
    RecordingHolder const host;
    host->respond = [](RecordedCall const& call) {
        if (call.name == "Fail") {
            return Answer{mzFailure, {}, mzComCreateException("host", "told so", {})};
        }
        return Answer{mzSuccess, call.arguments.empty() ? mzComVariantC() : call.arguments[0]};
    };
    EXPECT_EQ(callText(object, "CallBack", {host.asValue(), "Member", "text"}), "ok text text");
    EXPECT_EQ(host->lastCall().name, "Member");
    EXPECT_EQ(callText(object, "CallBack", {host.asValue(), "Fail", 1}),
              "Invoke DSP: Exception:VELKCOMADAPTER:told so:0");
}

TEST_F(NativeCalls, Arrays) {
    auto const object = sample();
    auto const cube =
        dispatchIn(callHost(object.iface(), "MakeCube", mzCallMethod, {2, 3, 4}).result);
    ASSERT_TRUE(cube.isValid());
    EXPECT_EQ(callText(cube, "", {1, 2, 3}), "ok integer 123");
    EXPECT_EQ(callText(cube, "ubound", {2}), "ok integer 3");
    EXPECT_EQ(callText(object, "SumArray", {valueOf(cube)}), "ok number 1476.000000");
    EXPECT_EQ(callHost(cube.iface(), "", mzCallPropertyPut, {1, 2, 3, 1123}).code, mzSuccess);
    EXPECT_EQ(callText(object, "SumArray", {valueOf(cube)}), "ok number 2476.000000");
    auto const list = create("comadapter.variantwrapper");
    callText(list, "Create", {0x2000, 12, 1});
    auto const held = variable(valueOf(list));
    EXPECT_EQ(callText(object, "ChangeArray", {held}), "ok empty");
    EXPECT_EQ(objectIn(held.skipVariable()), objectIn(valueOf(list))) << "the wrapper stays";
    EXPECT_EQ(callText(list, "ubound"), "ok integer 1");
    EXPECT_EQ(callText(list, "", {1}), "ok text added");
}

TEST_F(NativeCalls, FaultyServersAreToldApart) {
    auto const object = native("VelkTest.Faulty");
    struct {
        char const* member;
        char const* expected;
    } const rows[] = {
        {"SuccessWithoutResult", "ok empty"},
        {"AnswersFalse", "Invoke DSP: unknown exception :0x1"},
        {"Throws", "Invoke DSP: unknown exception :0x8000ffff"},
        {"ThrowsAcross", "Invoke DSP: Unhandled exception"},
        {"DeferredFillIn", "Invoke DSP: Exception:::0"},
        {"DeferredFails", "Invoke DSP: Exception:::0"},
        {"DeferredThrows", "Invoke DSP: Exception:::0"},
        {"GarbageArgumentIndex", "Invoke DSP: Argument mismatch at position :-559038736"},
        {"UnsetArgumentIndex", "Invoke DSP: Argument mismatch at position :1"},
        {"ParamNotFoundGarbage", "Invoke DSP: unknown exception :0x80020004"},
        {"ExceptionWithoutInfo", "Invoke DSP: Exception:::0"},
        {"BadType", "Invoke DSP: unknown exception :0x80020008"},
        {"NullByRef", "failed"},
        {"SelfReference", "failed"},
        {"NullDispatch", "ok empty"},
        {"WrongDispId", "Invoke DSP: Member 'WrongDispId' not found"},
        {"NamesFail", "Invoke DSP: Member 'NamesFail' not found"},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(callText(object, row.member), row.expected) << row.member;
    }
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

}  // namespace
