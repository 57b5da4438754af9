#include <cstring>

#include "com/owners.h"

#include "support/document.h"
#include "support/script_test.h"

// Named properties and values of every kind as scripts see them: of a set that
// Wine neither writes nor reads.

namespace {

using namespace velk::test;

class CustomProperties : public ScriptTest {
  protected:
    void SetUp() override {
        ScriptTest::SetUp();
        setenv("TZ", "UTC", 1);
        document_.emplace();
        properties_ = create("qxttools.fileproperties");
        ASSERT_TRUE(properties_.isValid());
        callHost(properties_.iface(), "Open", mzCallMethod, {document_->path(), true});
    }
    void TearDown() override {
        properties_.detach();
        document_.reset();
        ScriptTest::TearDown();
    }

    void put(OLECHAR const* name, PROPVARIANT const& value) const {
        document_->put(customSet, byName(name), value);
    }
    /// What the file has, as a new dictionary shows it.
    mzComPtrT<mzIDispatch> custom() const {
        return dispatchIn(callHost(properties_.iface(), "Custom", mzCallPropertyGet).result);
    }
    std::string item(char const* key) const {
        return callHost(custom().iface(), "Item", mzCallPropertyGet, {key}).text();
    }
    VARTYPE storedType(OLECHAR const* name) const {
        PROPVARIANT value{};
        auto const specifier = byName(name);
        document_->set(customSet)->ReadMultiple(1, &specifier, &value);
        document_->close();
        VARTYPE const type = value.vt;
        PropVariantClear(&value);
        return type;
    }

    std::optional<Document> document_;
    mzComPtrT<mzIDispatch> properties_;
};

TEST_F(CustomProperties, EveryKindOfValue) {
    PROPVARIANT value{};
    value.vt = VT_R4;
    value.fltVal = 1.5F;
    put(u"r4", value);
    value.vt = VT_R8;
    value.dblVal = -2.25;
    put(u"r8", value);
    put(u"true", numberValue(VT_BOOL, 0xFFFF));
    put(u"one", numberValue(VT_BOOL, 1));
    put(u"ui4", numberValue(VT_UI4, 5));
    put(u"text", textValue("na\xc3\xafve"));
    put(u"empty", PROPVARIANT{});
    char16_t wide[] = u"\u0416";
    value = {};
    value.vt = VT_LPWSTR;
    value.pwszVal = wide;
    put(u"wide", value);
    // 5 March 2024, 09:07:04.045 UTC.
    value = {};
    value.vt = VT_FILETIME;
    SYSTEMTIME const time = {2024, 3, 0, 5, 9, 7, 4, 45};
    ASSERT_TRUE(SystemTimeToFileTime(&time, &value.filetime));
    put(u"time", value);
    value.filetime = {0, 0x80000000};
    put(u"no time", value);

    EXPECT_EQ(item("r4"), "ok number 1.500000");
    EXPECT_EQ(item("r8"), "ok number -2.250000");
    EXPECT_EQ(item("true"), "ok integer -1");
    EXPECT_EQ(item("one"), "ok integer 0");
    EXPECT_EQ(item("ui4"), "ok empty");
    EXPECT_EQ(item("text"), "ok text na\xc3\xafve");
    EXPECT_EQ(item("empty"), "ok empty");
    EXPECT_EQ(item("WIDE"), "ok text \xd0\x96");
    EXPECT_EQ(item("time"), "ok text 05.03.2024 09:07:04.045");
    EXPECT_EQ(item("no time"), "ok text ");
    EXPECT_EQ(callHost(custom().iface(), "Count", mzCallPropertyGet).text(), "ok integer 10");
}

TEST_F(CustomProperties, WrittenTypesFollowFromTheValue) {
    put(u"first", numberValue(VT_I4, 1));
    auto const dictionary = custom();
    auto const add = [&](char const* key, mzComVariantC const& value) {
        return callHost(dictionary.iface(), "Add", mzCallMethod, {key, value}).text();
    };
    EXPECT_EQ(add("integer", 5), "ok integer 0");
    EXPECT_EQ(add("number", 2.5), "ok integer 0");
    EXPECT_EQ(add("text", mzComStringC::fromUtf8("\xd0\x96", -1)), "ok integer 0");
    EXPECT_EQ(add("nothing", mzComVariantC()), "ok integer 0");
    EXPECT_EQ(storedType(u"integer"), VT_I4);
    EXPECT_EQ(storedType(u"number"), VT_R8);
    EXPECT_EQ(storedType(u"text"), VT_LPWSTR);
    EXPECT_EQ(storedType(u"nothing"), VT_EMPTY);
    EXPECT_EQ(item("text"), "ok text \xd0\x96");
    // An object cannot be read as text.
    EXPECT_EQ(add("object", valueOf(properties_)),
              "addObj: Failed to write property to source file!");
}

TEST_F(CustomProperties, RenamedOnesBecomeText) {
    put(u"Count", numberValue(VT_I4, 42));
    auto const outcome = callHost(custom().iface(), "Key", mzCallPropertyPut, {"Count", "Number"});
    EXPECT_EQ(outcome.text(), "ok object");
    EXPECT_EQ(item("Number"), "ok text 42");
    EXPECT_EQ(storedType(u"Number"), VT_LPWSTR);
    EXPECT_EQ(storedType(u"Count"), VT_EMPTY);
    EXPECT_EQ(callHost(custom().iface(), "Count", mzCallPropertyGet).text(), "ok integer 1");
}

// No value is lost: what cannot be renamed stays, here and in the file.
TEST_F(CustomProperties, KeysThatCannotBeSetChangeNothing) {
    put(u"Count", numberValue(VT_I4, 42));
    put(u"Other", numberValue(VT_I4, 7));
    auto const dictionary = custom();
    put(u"Later", numberValue(VT_I4, 8));
    char const* const refused = "setKey: Failed to write property to source file!";
    struct Case {
        char const* key;
        char const* newKey;
        char const* outcome;
    };
    for (Case const& entry :
         {Case{"Count", "Count", "ok object"}, Case{"Count", "OTHER", refused},
          Case{"Count", "later", refused}, Case{"nobody", "Other", refused},
          Case{"nobody", "new", refused}, Case{"Count", "COUNT", "ok object"}}) {
        auto const outcome =
            callHost(dictionary.iface(), "Key", mzCallPropertyPut, {entry.key, entry.newKey});
        EXPECT_EQ(outcome.text(), entry.outcome) << entry.key << " " << entry.newKey;
        EXPECT_EQ(callHost(dictionary.iface(), "Item", mzCallPropertyGet, {"Count"}).text(),
                  "ok integer 42");
        EXPECT_EQ(callHost(dictionary.iface(), "Count", mzCallPropertyGet).text(), "ok integer 2");
        EXPECT_EQ(item("Count"), "ok integer 42") << entry.key << " " << entry.newKey;
        EXPECT_EQ(item("Other"), "ok integer 7") << entry.key << " " << entry.newKey;
        EXPECT_EQ(item("Later"), "ok integer 8") << entry.key << " " << entry.newKey;
    }
    auto const set = document_->set(customSet);
    velk::com::ComPtr<IEnumSTATPROPSTG> all;
    ASSERT_EQ(set->Enum(all.put()), S_OK);
    STATPROPSTG first{};
    ASSERT_EQ(all->Next(1, &first, nullptr), S_OK);
    velk::com::TaskMemory const name(first.lpwstrName);
    EXPECT_EQ(std::u16string(first.lpwstrName), u"COUNT");
}

TEST_F(CustomProperties, RemovedOnesAreGone) {
    put(u"a", numberValue(VT_I4, 1));
    put(u"b", numberValue(VT_I4, 2));
    EXPECT_EQ(callHost(custom().iface(), "Remove", mzCallMethod, {"A"}).text(), "ok integer 1");
    EXPECT_EQ(callHost(custom().iface(), "Count", mzCallPropertyGet).text(), "ok integer 1");
    EXPECT_EQ(item("b"), "ok integer 2");
}

}  // namespace
