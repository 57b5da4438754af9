#include <vector>

#include <gtest/gtest.h>

#include "sample_objects.h"

// The dictionary as scripts use it, by member name.

namespace {

using velk::test::call;
using velk::test::Outcome;

constexpr unsigned method = mzCallMethod;
constexpr unsigned get = mzCallPropertyGet;
constexpr unsigned put = mzCallPropertyPut;
constexpr unsigned methodOrGet = method | get;

TEST(DictionaryScript, Members) {
    struct Row {
        char const* what;
        char const* name;
        unsigned kind;
        std::vector<mzComVariantC> args;
        char const* text;  // of the value, or of the exception after "!"
    };
    // One dictionary, one step after the other.
    Row const rows[] = {
        {"new and empty", "Count", get, {}, "0"},
        {"add", "Add", method, {"one", 1}, ""},
        {"add again", "Add", method, {"one", 2}, "!The key is already in the dictionary"},
        {"put adds", "Item", put, {"two", 2}, ""},
        {"default put", "", put, {"three", 3}, ""},
        {"default get of a native client", "", method, {"three"}, "3"},
        {"default get", "", get, {"three"}, "3"},
        {"item", "Item", methodOrGet, {"two"}, "2"},
        {"exists", "Exists", method, {"two"}, "-1"},
        {"exists as a property", "Exists", get, {"TWO"}, "0"},
        {"reading a new key adds it", "Item", get, {"new"}, ""},
        {"which counts", "Count", method, {}, "4"},
        {"rename", "Key", put, {"new", "newer"}, ""},
        {"rename what is not there", "Key", put, {"new", "x"}, "!The key is not in the dictionary"},
        {"rename onto another",
         "Key",
         put,
         {"one", "two"},
         "!The new key is already in the dictionary"},
        {"remove", "Remove", method, {"newer"}, ""},
        {"remove again", "Remove", method, {"newer"}, "!The key is not in the dictionary"},
        {"mode of a full one",
         "CompareMode",
         put,
         {1},
         "!The compare mode of a dictionary with entries cannot be changed"},
        {"the same mode is no change", "CompareMode", put, {0}, ""},
        {"remove all", "RemoveAll", method, {}, ""},
        {"bad mode", "CompareMode", put, {2}, "!The compare mode is 0 (binary) or 1 (text)"},
        {"mode that is no number",
         "CompareMode",
         put,
         {"text"},
         "!An argument of 'CompareMode' cannot be read as the type that it takes"},
        {"text mode", "CompareMode", put, {1}, ""},
        {"mode read", "CompareMode", get, {}, "1"},
        {"now any case", "Item", put, {"KEY", 1}, ""},
        {"is found", "Exists", method, {"key"}, "-1"},
        {"too many arguments", "Add", method, {1, 2, 3}, "!'Add' does not take 3 arguments"},
    };
    mzComPtrT<prxDictionaryObjC> dictionary(new prxDictionaryObjC);
    for (Row const& row : rows) {
        SCOPED_TRACE(row.what);
        mzComVariantArrayC args;
        for (auto const& arg : row.args) {
            args.append(arg);
        }
        Outcome outcome{0, {}, {}};
        mzComPtrT<mzIException> exception;
        outcome.code = dictionary->invokeByName(row.name, row.kind, args, outcome.value, exception);
        bool const isFailure = row.text[0] == '!';
        EXPECT_EQ(outcome.code, isFailure ? mzFailure : mzSuccess);
        ASSERT_EQ(exception.isValid(), isFailure);
        EXPECT_EQ(isFailure ? exception->description().toUtf8() : outcome.text(),
                  row.text + isFailure);
    }
}

TEST(DictionaryScript, KeysAndItemsAreLists) {
    mzComPtrT<prxDictionaryObjC> dictionary(new prxDictionaryObjC);
    dictionary->addObj("a", 1);
    dictionary->addObj("b", 2);
    for (char const* name : {"Keys", "Items"}) {
        for (unsigned kind : {method, get}) {
            SCOPED_TRACE(name);
            mzComPtrT<mzIUnknown> list;
            ASSERT_EQ(call(dictionary.iface(), name, kind).value.get(list), mzSuccess);
            EXPECT_EQ(call(list.iface(), "Count", get).integer(), 2);
            EXPECT_EQ(call(list.iface(), "", method, {1}).text(), name[0] == 'K' ? "b" : "2");
        }
    }
}

TEST(DictionaryScript, AVariableIsStoredAsItsValue) {
    mzComPtrT<prxDictionaryObjC> dictionary(new prxDictionaryObjC);
    auto const variable = mzComVariantC::createSymbolRef("first");
    ASSERT_EQ(call(dictionary.iface(), "Add", method, {variable, variable}).code, mzSuccess);
    mzComPtrT<mzIException> ignored;
    mzComVariantC nothing;
    mzComVariantArrayC value;
    value.append("second");
    variable.symbol()->invokeByName("", put, value, nothing, ignored);
    EXPECT_EQ(call(dictionary.iface(), "Item", get, {"first"}).text(), "first");
    EXPECT_FALSE(call(dictionary.iface(), "Item", get, {"first"}).value.isVariable());
}

// Counting words: the loop that dictionaries are used for most.
TEST(DictionaryScript, CountsWords) {
    mzComPtrT<prxDictionaryObjC> dictionary(new prxDictionaryObjC);
    for (int i = 0; i < 3000; ++i) {
        mzComVariantC const word(mzComStringC::fromInt(i % 100, 10));
        if (call(dictionary.iface(), "Exists", method, {word}).integer() != 0) {
            int const count = call(dictionary.iface(), "Item", methodOrGet, {word}).integer();
            call(dictionary.iface(), "Item", put, {word, count + 1});
        } else {
            call(dictionary.iface(), "Add", method, {word, 1});
        }
    }
    EXPECT_EQ(call(dictionary.iface(), "Count", get).integer(), 100);
    EXPECT_EQ(call(dictionary.iface(), "Item", get, {"42"}).integer(), 30);
}

}  // namespace
