// Records of native libraries in host code.

#include <vector>

#include "support/expected_difference.h"
#include "support/script_test.h"

namespace {

using namespace velk::test;

constexpr int record = 36;

class Records : public ScriptTest {
  protected:
    /// An empty record by its name.
    mzComPtrT<mzIDispatch> make(char const* name) const {
        auto const wrapper = create("comadapter.variantwrapper");
        EXPECT_EQ(callText(wrapper, "Create", {record, valueOf(object_), name}), "ok empty");
        return wrapper;
    }
    static std::string put(mzComPtrT<mzIDispatch> const& target, char const* field,
                           mzComVariantC const& value) {
        return callHost(target.iface(), "", mzCallPropertyPut, {field, value}).text();
    }
    void SetUp() override {
        ScriptTest::SetUp();
        object_ = sample();
    }
    void TearDown() override {
        object_.detach();
        ScriptTest::TearDown();
    }

    mzComPtrT<mzIDispatch> object_;
};

TEST_F(Records, FieldsAreReadAndWritten) {
    expectDifference(System::wine8, "IRecordInfo::PutField is not implemented", [this] {
        auto const point = make("Point");
        EXPECT_EQ(callText(point, "", {"x"}), "ok integer 0");
        EXPECT_EQ(put(point, "x", 3), "ok empty");
        EXPECT_EQ(put(point, "y", "4"), "ok empty");
        EXPECT_EQ(callText(point, "", {"x"}), "ok integer 3");
        EXPECT_EQ(callText(point, "", {"y"}), "ok integer 4");
        EXPECT_EQ(callText(point, "", {"z"}), "Invoke DSP: Failed to get field: z");
        EXPECT_EQ(put(point, "z", 1), "Invoke DSP: Failed to put field: z");
        EXPECT_EQ(put(point, "x", "no number"), "Invoke DSP: Failed to put field: x");
        EXPECT_EQ(callText(point, ""), "ok empty") << "the default read comes first";
        EXPECT_EQ(callText(point, "", {"x", 1}), "Invoke DSP: Invalid parameter count");
        EXPECT_EQ(callHost(point.iface(), "vt", mzCallPropertyGet).text(),
                  "Invoke DSP: Invalid parameter at position: 0");
        EXPECT_EQ(callHost(point.iface(), "vt", mzCallPropertyGet, {"x"}).text(),
                  "Invoke DSP: Invalid parameter count");
        auto const copy = dispatchIn(callHost(point.iface(), "Copy", mzCallMethod).result);
        put(copy, "x", 9);
        EXPECT_EQ(callText(point, "", {"x"}), "ok integer 3");
    });
}

TEST_F(Records, EveryTypeOfField) {
    expectDifference(System::wine, "IRecordInfo::PutField is not implemented", [this] {
        auto const person = make("Person");
        RecordingHolder const host;
        EXPECT_EQ(put(person, "name", "text"), "ok empty");
        EXPECT_EQ(callText(person, "", {"name"}), "ok text text");
        EXPECT_EQ(put(person, "data", host.asValue()), "ok empty");
        EXPECT_EQ(objectIn(callHost(person.iface(), "", mzCallMethod, {"data"}).result),
                  static_cast<mzIUnknown*>(host.dispatch()));
        EXPECT_EQ(put(person, "data", valueOf(object_)), "ok empty");
        auto const data = callHost(person.iface(), "", mzCallMethod, {"data"}).result;
        EXPECT_EQ(callText(object_, "Same", {data, valueOf(object_)}), "ok integer -1");
        // Records in records and arrays in records have no host form.
        EXPECT_EQ(callText(person, "", {"home"}), "Invoke DSP: Invalid result");
        put(person, "data", mzComVariantC());
    });
}

TEST_F(Records, CreationFailures) {
    auto const wrapper = create("comadapter.variantwrapper");
    struct {
        std::vector<mzComVariantC> arguments;
        char const* expected;
    } const rows[] = {
        {{record, valueOf(create("scripting.dictionary")), "Point"},
         "Invoke DSP: Failed to cast argument at position 1 to a dispatch wrapper => not a native "
         "COM object"},
        {{record, valueOf(create("comadapter.dspwrapper")), "Point"},
         "Invoke DSP: Failed to retrieve the original dispatch from the dispatch wrapper"},
        {{record, valueOf(object_), valueOf(object_)},
         "Invoke DSP: Invalid parameter at position: 2"},
        {{record, valueOf(object_), "Missing"},
         "Invoke DSP: Failed to find a struct named Missing inside the type lib: Invalid name"},
    };
    for (auto const& row : rows) {
        mzComVariantArrayC arguments;
        for (auto const& argument : row.arguments) arguments << argument;
        HostOutcome outcome;
        outcome.code = wrapper->invokeByName("Create", mzCallMethod, arguments, outcome.result,
                                             outcome.exception);
        EXPECT_EQ(outcome.text(), row.expected);
        EXPECT_EQ(callText(wrapper, "", {"x"}), "Invoke DSP: The underlying variant is not valid");
    }
    auto const withoutType = native("VelkTest.Faulty");
    EXPECT_EQ(callText(wrapper, "Create", {record, valueOf(withoutType), "Point"}).substr(0, 76),
              "Invoke DSP: Failed to get the type info object from the dispatch: 0x80004001");
}

TEST_F(Records, LooseGetsAnIdAndIsFilled) {
    for (int const x : {1, 2}) {
        auto const wrapper = create("comadapter.variantwrapper");
        EXPECT_EQ(callText(wrapper, "Create", {record, valueOf(object_), "Loose"}), "ok empty");
        expectDifference(System::wine, "IRecordInfo::PutField is not implemented", [&] {
            auto const put = [&](char const* field, int value) {
                return callHost(wrapper.iface(), "", mzCallPropertyPut, {field, value}).text();
            };
            EXPECT_EQ(put("x", x), "ok empty");
            EXPECT_EQ(put("y", 40), "ok empty");
            EXPECT_EQ(callText(wrapper, "", {"x"}), "ok integer " + std::to_string(x));
            EXPECT_EQ(callText(object_, "SumLoose", {variable(valueOf(wrapper))}),
                      "ok integer " + std::to_string(40 + x));
        });
    }
}

TEST_F(Records, GivenByNativeObjects) {
    auto const point =
        dispatchIn(callHost(object_.iface(), "MakePoint", mzCallMethod, {3, 4}).result);
    ASSERT_TRUE(point.isValid());
    EXPECT_EQ(callText(point, "", {"y"}), "ok integer 4");
    auto const back =
        dispatchIn(callHost(object_.iface(), "EchoRecord", mzCallMethod, {valueOf(point)}).result);
    ASSERT_TRUE(back.isValid());
    EXPECT_EQ(callText(back, "", {"x"}), "ok integer 3");
    auto const points =
        dispatchIn(callHost(object_.iface(), "MakePoints", mzCallMethod, {3}).result);
    ASSERT_TRUE(points.isValid());
    auto const element = dispatchIn(callHost(points.iface(), "", mzCallMethod, {2}).result);
    ASSERT_TRUE(element.isValid());
    EXPECT_EQ(callText(element, "", {"y"}), "ok integer -2");
    EXPECT_EQ(callHost(points.iface(), "", mzCallPropertyPut, {0, valueOf(element)}).text(),
              "ok empty");
    auto const first = dispatchIn(callHost(points.iface(), "", mzCallMethod, {0}).result);
    EXPECT_EQ(callText(first, "", {"y"}), "ok integer -2");
    EXPECT_EQ(callHost(points.iface(), "", mzCallPropertyPut, {0, valueOf(make("Person"))}).code,
              mzFailure);
}

TEST_F(Records, ChangedByReference) {
    expectDifference(
        System::wine, "references to records as arguments are not implemented", [this] {
            auto const point = make("Point");
            put(point, "x", 3);
            auto const held = variable(valueOf(point));
            EXPECT_EQ(callText(object_, "ChangePoint", {held}), "ok empty");
            EXPECT_EQ(callText(point, "", {"x"}), "ok integer 0");
            EXPECT_EQ(callText(point, "", {"y"}), "ok integer 3");
            EXPECT_EQ(callText(object_, "ChangePoint", {valueOf(point)}).substr(0, 2), "ok");
            EXPECT_EQ(callText(point, "", {"y"}), "ok integer 3")
                << "a plain value is not written back";
        });
}

TEST_F(Records, OutliveTheirLibrary) {
    expectDifference(System::wine8, "IRecordInfo::PutField is not implemented", [this] {
        auto const point = make("Point");
        put(point, "x", 3);
        object_.detach();
        CoFreeUnusedLibraries();
        EXPECT_EQ(callText(point, "", {"x"}), "ok integer 3");
    });
}

}  // namespace
