#include <vector>

#include <gtest/gtest.h>

#include "sample_objects.h"

// Calls by member name: which member a name, a call kind and an argument count
// reach, and what a failure looks like.

namespace {

using velk::test::call;
using velk::test::DerivedSample;
using velk::test::Outcome;
using velk::test::Sample;

constexpr unsigned method = mzCallMethod;
constexpr unsigned get = mzCallPropertyGet;
constexpr unsigned put = mzCallPropertyPut;
constexpr unsigned methodOrGet = method | get;

TEST(Members, NameKindAndCountDecide) {
    struct Row {
        char const* what;
        char const* name;
        unsigned kind;
        std::vector<mzComVariantC> args;
        unsigned code;
        char const* text;
    };
    Row const rows[] = {
        {"method", "Add", method, {5}, mzSuccess, "15"},
        {"the same in another case", "aDD", method, {5}, mzSuccess, "15"},
        {"the overload with two arguments", "Add", method, {5, 6}, mzSuccess, "21"},
        {"no overload takes three", "Add", method, {1, 2, 3}, mzFailure, ""},
        {"none takes no argument either", "Add", methodOrGet, {}, mzFailure, ""},
        {"property read", "Value", get, {}, mzSuccess, "10"},
        {"read by a caller that cannot tell", "Value", methodOrGet, {}, mzSuccess, "10"},
        {"method by such a caller", "Add", methodOrGet, {1}, mzSuccess, "11"},
        {"a property is no method", "Value", method, {}, mzMemberNotFound, ""},
        {"a method cannot be written", "Add", put, {1}, mzMemberNotFound, ""},
        {"property write", "Value", put, {3}, mzSuccess, ""},
        {"a write without a value", "Value", put, {}, mzFailure, ""},
        {"no call kind at all", "Value", 0, {}, mzMemberNotFound, ""},
        {"unknown name", "Missing", methodOrGet, {}, mzMemberNotFound, ""},
        {"a name's beginning", "Ad", method, {1}, mzMemberNotFound, ""},
        {"a name and more", "Adds", method, {1}, mzMemberNotFound, ""},
        {"a member without a flag", "Plain", method, {}, mzSuccess, "77"},
        {"default member", "", get, {}, mzSuccess, "default read"},
        {"default member written", "", put, {"x"}, mzSuccess, ""},
        {"default member as a method", "", method, {}, mzMemberNotFound, ""},
        {"letters that only look alike",
         "\xC4"
         "dd",
         method,
         {1},
         mzMemberNotFound,
         ""},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.what);
        mzComPtrT<Sample> sample(new Sample);
        sample->setValue(10);
        mzComVariantArrayC args;
        for (auto const& arg : row.args) {
            args.append(arg);
        }
        mzComVariantC result("left over");
        mzComPtrT<mzIException> exception;
        EXPECT_EQ(sample->invokeByName(row.name, row.kind, args, result, exception), row.code);
        EXPECT_EQ((Outcome{0, result, {}}.text()), row.text);
        EXPECT_EQ(exception.isValid(), row.code == mzFailure);
    }
}

TEST(Members, WritesReachTheObject) {
    mzComPtrT<Sample> sample(new Sample);
    EXPECT_EQ(call(sample.iface(), "Value", put, {42}).code, mzSuccess);
    EXPECT_EQ(call(sample.iface(), "Value", get).integer(), 42);
    EXPECT_EQ(call(sample.iface(), "", put, {"by default"}).code, mzSuccess);
    EXPECT_EQ(call(sample.iface(), "Written", get).text(), "by default");
}

TEST(Members, AnEmbeddedZeroIsPartOfTheName) {
    mzComPtrT<Sample> sample(new Sample);
    mzComVariantC result;
    mzComPtrT<mzIException> exception;
    mzComStringC const name(QString::fromLatin1("Plain\0", 6));
    EXPECT_EQ(sample->invokeByName(name, method, {}, result, exception), mzMemberNotFound);
}

TEST(Members, AClassHidesWhatItReplacesAndKeepsTheRest) {
    mzComPtrT<DerivedSample> sample(new DerivedSample);
    EXPECT_EQ(call(sample.iface(), "Add", method, {4}).integer(), 8) << "its own";
    EXPECT_EQ(call(sample.iface(), "Add", method, {1, 1}).integer(), 10) << "the parent's";
    EXPECT_EQ(call(sample.iface(), "Extra", method).text(), "extra");
    EXPECT_EQ(call(sample.iface(), "Value", get).integer(), 10);
    EXPECT_EQ(call(sample.iface(), "Extra", method, {1}).code, mzFailure);
}

TEST(Members, EveryFailureBecomesAnException) {
    struct Row {
        char const* name;
        std::vector<mzComVariantC> args;
        char const* text;
    };
    Row const rows[] = {
        {"Fail", {"it went wrong"}, "it went wrong"},
        {"ThrowStandard", {}, "standard failure"},
        {"ThrowNumber", {}, "Unknown exception in 'ThrowNumber'"},
        {"Add", {"no number"}, "An argument of 'Add' cannot be read as the type that it takes"},
        {"Add", {1, 2, 3}, "'Add' does not take 3 arguments"},
    };
    mzComPtrT<Sample> sample(new Sample);
    for (Row const& row : rows) {
        SCOPED_TRACE(row.text);
        mzComVariantArrayC args;
        for (auto const& arg : row.args) {
            args.append(arg);
        }
        mzComVariantC result;
        mzComPtrT<mzIException> exception;
        EXPECT_EQ(sample->invokeByName(row.name, method, args, result, exception), mzFailure);
        ASSERT_TRUE(exception.isValid());
        EXPECT_EQ(exception->description().toUtf8(), row.text);
        EXPECT_EQ(exception->source().toUtf8(), row.name);
        EXPECT_EQ(result.getType(), mzTypeEmpty);
    }
}

TEST(Members, AnEmptyTableHasNoMembers) {
    class Bare : public proxyObjectC {};
    mzComPtrT<Bare> bare(new Bare);
    for (unsigned kind : {method, get, put, methodOrGet}) {
        EXPECT_EQ(call(bare.iface(), "Anything", kind).code, mzMemberNotFound);
        EXPECT_EQ(call(bare.iface(), "", kind).code, mzMemberNotFound);
    }
}

TEST(Members, TheRecordCasts) {
    mzComPtrT<DerivedSample> sample(new DerivedSample);
    auto* const object = static_cast<proxyObjectC*>(sample.iface());
    EXPECT_EQ(object->proxyCast("DerivedSample"), sample.iface());
    EXPECT_EQ(object->proxyCast("Sample"), static_cast<Sample*>(sample.iface()));
    EXPECT_EQ(object->proxyCast("proxyObjectC"), object);
    EXPECT_EQ(object->proxyCast("sample"), nullptr) << "class names count exactly";
    EXPECT_EQ(object->proxyCast(""), nullptr);
}

}  // namespace
