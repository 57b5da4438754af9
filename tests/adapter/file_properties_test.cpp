#include "support/document.h"
#include "support/expected_difference.h"
#include "support/script_test.h"

// The script object "qxttools.fileproperties", and sets whose properties have
// no names.

namespace {

using namespace velk::test;

constexpr char const* readOnlyText = "Dictionary is in read-only mode!";

class FileProperties : public ScriptTest {
  protected:
    void SetUp() override {
        ScriptTest::SetUp();
        document_.emplace();
        properties_ = create("qxttools.fileproperties");
        ASSERT_TRUE(properties_.isValid());
    }
    void TearDown() override {
        properties_.detach();
        document_.reset();
        ScriptTest::TearDown();
    }

    mzComPtrT<mzIDispatch> dictionary(char const* set) const {
        auto const outcome = callHost(properties_.iface(), set, mzCallPropertyGet);
        EXPECT_EQ(outcome.code, mzSuccess) << outcome.text();
        return dispatchIn(outcome.result);
    }
    std::string open(mzComStringC const& path) const {
        return callHost(properties_.iface(), "Open", mzCallMethod, {path}).text();
    }
    void openForWriting() const {
        EXPECT_EQ(
            callHost(properties_.iface(), "Open", mzCallMethod, {document_->path(), true}).text(),
            "ok integer 1");
    }
    static std::string put(mzComPtrT<mzIDispatch> const& object, char const* name,
                           std::initializer_list<mzComVariantC> arguments) {
        return callHost(object.iface(), name, mzCallPropertyPut, arguments).text();
    }
    static std::string item(mzComPtrT<mzIDispatch> const& object, char const* key) {
        return callHost(object.iface(), "Item", mzCallPropertyGet, {key}).text();
    }
    static std::string count(mzComPtrT<mzIDispatch> const& object) {
        return callHost(object.iface(), "Count", mzCallPropertyGet).text();
    }

    std::optional<Document> document_;
    mzComPtrT<mzIDispatch> properties_;
};

TEST_F(FileProperties, OpenTellsOfFilesOnNtfs) {
    EXPECT_EQ(open(document_->path()), "ok integer 1");
    EXPECT_EQ(open("C:\\nothing.doc"), "ok integer 0");
    EXPECT_EQ(open("relative.doc"), "ok integer 0");
    EXPECT_EQ(open(""), "ok integer 0");
    EXPECT_EQ(open("\\\\server\\nothing\\file.doc"), "ok integer 0");
}

TEST_F(FileProperties, PropertiesWithoutNamesHaveTheirNumbersAsKeys) {
    document_->put(summarySet, byId(PIDSI_TITLE), textValue("A title"));
    document_->put(summarySet, byId(PIDSI_PAGECOUNT), numberValue(VT_I4, -3));
    document_->put(summarySet, byId(100), numberValue(VT_I2, 0xFDE9));
    open(document_->path());
    auto const summary = dictionary("SummaryInformation");
    EXPECT_EQ(count(summary), "ok integer 3");
    EXPECT_EQ(item(summary, "2"), "ok text A title");
    EXPECT_EQ(item(summary, "14"), "ok integer -3");
    EXPECT_EQ(item(summary, "100"), "ok integer 65001");
    EXPECT_EQ(count(dictionary("Custom")), "ok integer 0");
    EXPECT_EQ(count(dictionary("MediaFileSummaryInfo")), "ok integer 0");
}

TEST_F(FileProperties, OthersThanDocumentsAreEmpty) {
    EXPECT_EQ(count(dictionary("SummaryInformation")), "ok integer 0");
    open("C:\\nothing.doc");
    EXPECT_EQ(count(dictionary("SummaryInformation")), "ok integer 0");
    EXPECT_EQ(count(dictionary("DocSummaryInformation")), "ok integer 0");
}

// What memory shows after a refused change is part of the behaviour.
TEST_F(FileProperties, ReadOnlyDictionariesRefuseChanges) {
    document_->put(summarySet, byId(PIDSI_TITLE), textValue("title"));
    document_->put(summarySet, byId(PIDSI_AUTHOR), textValue("author"));
    open(document_->path());
    auto const summary = dictionary("SummaryInformation");
    auto const call = [&](char const* name, std::initializer_list<mzComVariantC> arguments) {
        return callHost(summary.iface(), name, mzCallMethod, arguments).text();
    };
    auto const refusal = [](char const* operation) {
        return std::string(operation) + ": " + readOnlyText;
    };
    EXPECT_EQ(call("Add", {"new", 1}), refusal("addObj"));
    EXPECT_EQ(put(summary, "", {"new", 1}), refusal("addObj"));
    EXPECT_EQ(count(summary), "ok integer 2");
    EXPECT_EQ(put(summary, "Item", {"2", "changed"}), refusal("setItem"));
    EXPECT_EQ(item(summary, "2"), "ok text changed");
    EXPECT_EQ(put(summary, "Key", {"2", "two"}), refusal("setKey"));
    EXPECT_EQ(item(summary, "two"), "ok text changed");
    EXPECT_EQ(call("Remove", {"nobody"}), "ok integer 0");
    EXPECT_EQ(call("Remove", {"4"}), refusal("removeKey"));
    EXPECT_EQ(count(summary), "ok integer 1");
    EXPECT_EQ(call("RemoveAll", {}), refusal("delAll"));
    EXPECT_EQ(count(summary), "ok integer 0");
    EXPECT_EQ(item(dictionary("SummaryInformation"), "2"), "ok text title");
}

TEST_F(FileProperties, ChangesReachTheFile) {
    document_->put(summarySet, byId(PIDSI_TITLE), textValue("title"));
    openForWriting();
    auto const summary = dictionary("SummaryInformation");
    // A number as key is a name when it is written.
    EXPECT_EQ(put(summary, "Item", {"2", 5}).substr(0, 9), "ok object");
    EXPECT_EQ(callHost(summary.iface(), "Add", mzCallMethod, {"k", "text"}).text(), "ok integer 0");
    expectDifference(System::wine, "it does not read every dictionary of names", [&] {
        auto const again = dictionary("SummaryInformation");
        EXPECT_EQ(item(again, "k"), "ok text text");
        EXPECT_EQ(callHost(again.iface(), "RemoveAll", mzCallMethod).text(), "ok integer 1");
        EXPECT_EQ(count(dictionary("SummaryInformation")), "ok integer 0");
    });
}

TEST_F(FileProperties, WhatTheFileRefusesStaysInMemory) {
    openForWriting();
    auto const custom = dictionary("Custom");
    auto const call = [&](char const* name, std::initializer_list<mzComVariantC> arguments) {
        return callHost(custom.iface(), name, mzCallMethod, arguments).text();
    };
    EXPECT_EQ(call("Add", {"key", 1}), "addObj: Failed to write property to source file!");
    EXPECT_EQ(item(custom, "key"), "ok integer 1");
    EXPECT_EQ(put(custom, "Item", {"key", 2}), "setItem: Failed to write property to source file!");
    EXPECT_EQ(put(custom, "Key", {"key", "other"}),
              "setKey: Failed to write property to source file!");
    EXPECT_EQ(call("Remove", {"other"}), "removeKey: Failed to remove property from source file!");
    EXPECT_EQ(call("RemoveAll", {}), "delAll: Failed to remove all properties from source file!");
    auto const container = create("qxttools.fileproperties.container");
    EXPECT_EQ(callHost(container.iface(), "Add", mzCallMethod, {"key", 1}).text(),
              "addObj: Dictionary is in read-only mode!");
}

TEST_F(FileProperties, ChangesFailWhileAnotherHasTheFile) {
    document_->put(summarySet, byId(PIDSI_TITLE), textValue("title"));
    openForWriting();
    auto const summary = dictionary("SummaryInformation");
    {
        auto const kept = document_->set(summarySet);
        EXPECT_EQ(callHost(summary.iface(), "Add", mzCallMethod, {"k", 1}).text(),
                  "addObj: Failed to write property to source file!");
        EXPECT_EQ(count(dictionary("SummaryInformation")), "ok integer 0");
    }
    document_->close();
    EXPECT_EQ(count(dictionary("SummaryInformation")), "ok integer 1");
}

}  // namespace
