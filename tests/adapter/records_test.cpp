// Records of native libraries in host code.

#include "support/cells.h"
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
    expectDifference("plain-record-fields", [this] {
        auto const point = make("Point");
        for (auto const& row : rowsOf("bridge/record_fields.tsv"))
            EXPECT_EQ(callOfRow(point.iface(), row), row["expected"]) << row.place();
        auto const copy = dispatchIn(callHost(point.iface(), "Copy", mzCallMethod).result);
        put(copy, "x", 9);
        EXPECT_EQ(callText(point, "", {"x"}), "ok integer 3");
    });
}

TEST_F(Records, EveryTypeOfField) {
    expectDifference("record-put-field", [this] {
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
    auto const named = [](char const* name) { return [name] { return valueOf(create(name)); }; };
    NamedValues const names = {{"dictionary", named("scripting.dictionary")},
                               {"nobody", named("comadapter.dspwrapper")},
                               {"sample", [this] { return valueOf(object_); }},
                               {"faulty", [this] { return valueOf(native("VelkTest.Faulty")); }}};
    expectTable("bridge/record_creation.tsv", [&](DataRow const& row) {
        std::string const text = callOfRow(wrapper.iface(), row, names);
        EXPECT_EQ(callText(wrapper, "", {"x"}), "Invoke DSP: The underlying variant is not valid");
        return text;
    });
}

TEST_F(Records, LooseGetsAnIdAndIsFilled) {
    for (int const x : {1, 2}) {
        auto const wrapper = create("comadapter.variantwrapper");
        EXPECT_EQ(callText(wrapper, "Create", {record, valueOf(object_), "Loose"}), "ok empty");
        expectDifference("record-put-field", [&] {
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
    expectDifference("records-in-calls", [this] {
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
    expectDifference("plain-record-fields", [this] {
        auto const point = make("Point");
        put(point, "x", 3);
        object_.detach();
        CoFreeUnusedLibraries();
        EXPECT_EQ(callText(point, "", {"x"}), "ok integer 3");
    });
}

}  // namespace
