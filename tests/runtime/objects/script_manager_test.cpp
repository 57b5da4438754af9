#include <string>

#include <gtest/gtest.h>

#include "sample_objects.h"

// The script object "qxttools.scriptmanager".

namespace {

using velk::test::call;

constexpr unsigned method = mzCallMethod;
constexpr unsigned get = mzCallPropertyGet;
constexpr unsigned put = mzCallPropertyPut;

class ScriptManager : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(mzComServerInit(), mzSuccess);
        ASSERT_EQ(mzComCreateObject("qxttools.scriptmanager", mzIDispatch::interfaceId(), manager_),
                  mzSuccess);
    }
    void TearDown() override { EXPECT_EQ(mzComServerDone(), mzSuccess); }

    mzComPtrT<mzIUnknown> nullType(char const* name) {
        mzComPtrT<mzIUnknown> object;
        EXPECT_EQ(call(manager_.iface(), "CreateNullType", method, {name}).value.get(object),
                  mzSuccess);
        return object;
    }

    mzComPtrC manager_;
};

TEST_F(ScriptManager, ConstantsAreProperties) {
    struct Row {
        char const* type;
        char const* constant;
        char const* value;
        int kind;
    };
    for (Row const& row :
         {Row{"proxyobj.prxfilefolderbaseobjc", "Attribute_Hidden", "2", mzTypeInteger},
          Row{"PROXYOBJ.prxFileFolderBaseObjC", "attribute_directory", "16", mzTypeInteger},
          Row{"proxyobj.prxdllhostmgrc", "registerFlags_zero", "0", mzTypeInteger},
          Row{"proxyobj.prxrwconfigc", "Flag_MergeProtected", "8", mzTypeInteger},
          Row{"proxyobj.prxconversion_1", "FullType", "kq.Conversion_1", mzTypeString},
          Row{"proxyobj.prxconversiondata_1", "FullType", "kq.ConversionData_1", mzTypeString},
          Row{"proxyobj.prxconversioninfo_1", "TypeDisplayName", "ConversionInfo", mzTypeString}}) {
        SCOPED_TRACE(row.constant);
        auto const value = call(nullType(row.type).iface(), row.constant, get);
        EXPECT_EQ(value.value.getType(), row.kind);
        EXPECT_EQ(value.text(), row.value);
        EXPECT_EQ(call(manager_.iface(), "Constant", method, {row.type, row.constant}).text(),
                  row.value);
    }
}

TEST_F(ScriptManager, ConstantsAreOnlyRead) {
    auto const type = nullType("proxyobj.prxrwconfigc");
    EXPECT_NE(call(type.iface(), "Flag_Inactive", put, {7}).code, mzSuccess);
    EXPECT_NE(call(type.iface(), "Flag_Inactive", get, {7}).code, mzSuccess);
    EXPECT_NE(call(type.iface(), "Flag_Inactive", method).code, mzSuccess);
    EXPECT_EQ(call(type.iface(), "Flag_Inactive", method | get).integer(), 1);
    EXPECT_EQ(call(type.iface(), "Attribute_Hidden", get).code, mzMemberNotFound);
    EXPECT_EQ(call(type.iface(), "", get).code, mzMemberNotFound);
}

TEST_F(ScriptManager, TellsWhatItKnows) {
    mzComPtrT<mzIUnknown> types;
    ASSERT_EQ(call(manager_.iface(), "Types", get).value.get(types), mzSuccess);
    int constants = 0;
    int const count = call(types.iface(), "Count", get).integer();
    EXPECT_EQ(count, 6);
    for (int i = 0; i < count; ++i) {
        mzComVariantC const type = call(types.iface(), "Item", get, {i}).value;
        EXPECT_NE(call(manager_.iface(), "HasType", method, {type}).integer(), 0);
        mzComPtrT<mzIUnknown> names;
        ASSERT_EQ(call(manager_.iface(), "ConstantNames", method, {type}).value.get(names),
                  mzSuccess);
        constants += call(names.iface(), "Count", get).integer();
    }
    EXPECT_EQ(constants, 23);
    EXPECT_EQ(call(manager_.iface(), "HasType", method, {"proxyobj.window"}).integer(), 0);
    EXPECT_NE(call(manager_.iface(), "HasClass", method, {"qxttools.array"}).integer(), 0);
    EXPECT_EQ(call(manager_.iface(), "HasClass", method, {"qxttools.nothing"}).integer(), 0);
}

TEST_F(ScriptManager, MakesAndFindsObjects) {
    mzComPtrT<mzIUnknown> list, found;
    ASSERT_EQ(call(manager_.iface(), "CreateObject", method, {"qxttools.array"}).value.get(list),
              mzSuccess);
    unsigned cookie = 0;
    ASSERT_EQ(mzComRegisterActiveObject("test.running", list.iface(), cookie), mzSuccess);
    ASSERT_EQ(call(manager_.iface(), "GetObject", method, {"test.running"}).value.get(found),
              mzSuccess);
    EXPECT_EQ(call(found.iface(), "Add", method, {1}).code, mzSuccess);
    EXPECT_EQ(call(list.iface(), "Count", get).integer(), 1);
    EXPECT_EQ(mzComRevokeActiveObject(cookie), mzSuccess);
    EXPECT_EQ(call(manager_.iface(), "Sleep", method, {1}).code, mzSuccess);
}

TEST_F(ScriptManager, TellsWhatIsWrong) {
    struct Row {
        char const* member;
        std::initializer_list<mzComVariantC> args;
        char const* exception;
    };
    for (Row const& row :
         {Row{"CreateNullType", {"proxyobj.nothing"}, "The type 'proxyobj.nothing' is not known"},
          Row{"CreateNullType", {""}, "The type '' is not known"},
          Row{"CreateNullType",
              {velk::test::reference(manager_.iface())},
              "An argument of 'CreateNullType' cannot be read as the type that it takes"},
          Row{"CreateNullType", {}, "'CreateNullType' does not take 0 arguments"},
          Row{"ConstantNames", {"x"}, "The type 'x' is not known"},
          Row{"Constant", {"x", "y"}, "The type 'x' is not known"},
          Row{"Constant",
              {"proxyobj.prxrwconfigc", "y"},
              "The type 'proxyobj.prxrwconfigc' has no constant 'y'"},
          Row{"CreateObject", {"no.class"}, "The class 'no.class' cannot be created"},
          Row{"GetObject", {"no.object"}, "No object 'no.object' is running"},
          Row{"Sleep", {-1}, "A time to wait cannot be negative"}}) {
        SCOPED_TRACE(row.member);
        auto const outcome = call(manager_.iface(), row.member, method, row.args);
        EXPECT_EQ(outcome.code, mzFailure);
        EXPECT_EQ(outcome.exception, row.exception);
    }
}

}  // namespace
