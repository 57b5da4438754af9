#include <string>

#include <gtest/gtest.h>

#include "sample_objects.h"

// Script classes become known when the servers start and are created by name.

namespace {

using velk::test::call;
using velk::test::Sample;

/// Runs the servers for a scope.
struct Servers {
    Servers() { EXPECT_EQ(mzComServerInit(), mzSuccess); }
    ~Servers() { EXPECT_EQ(mzComServerDone(), mzSuccess); }
};

unsigned create(char const* name, char const* iid, mzComPtrC& out) {
    return mzComCreateObject(name, mzIIDS(iid), out);
}

TEST(Classes, AreCreatedByScriptNameOrClassName) {
    Servers const servers;
    proxyAutoRegisterT<Sample> const registration;
    struct Row {
        char const* name;
        char const* iid;
        unsigned code;
    };
    Row const rows[] = {
        {"velktest.sample", "mzIDispatch", mzSuccess},
        {"VelkTest.Sample", "mzIUnknown", mzSuccess},
        {"Sample", "mzIDispatch", mzSuccess},
        {"velktest.sample", "mzIIterable", mzFailure},
        {"velktest.other", "mzIDispatch", mzFailure},
        {"", "mzIDispatch", mzFailure},
        {nullptr, "mzIDispatch", mzFailure},
        {"prxDictionaryObjC", "mzIIterable", mzSuccess},
        {"proxyObjectC", "mzIDispatch", mzFailure},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name != nullptr ? row.name : "null");
        mzComPtrC out(mzComPtrC(new Sample));
        EXPECT_EQ(create(row.name, row.iid, out), row.code);
        EXPECT_EQ(out.isValid(), row.code == mzSuccess);
    }
    EXPECT_EQ(Sample::alive(), 0);
}

TEST(Classes, GoWithTheirRegistration) {
    Servers const servers;
    mzComPtrC kept;
    {
        proxyAutoRegisterT<Sample> const registration;
        ASSERT_EQ(create("velktest.sample", "mzIDispatch", kept), mzSuccess);
        EXPECT_EQ(call(kept.iface(), "Add", mzCallMethod, {2}).integer(), 2);
    }
    mzComPtrC out;
    EXPECT_EQ(create("velktest.sample", "mzIDispatch", out), mzFailure);
    EXPECT_EQ(call(kept.iface(), "Add", mzCallMethod, {2}).integer(), 4) << "the object stays";
    mzComPtrC const fresh(new Sample);
    EXPECT_EQ(call(fresh.iface(), "Add", mzCallMethod, {3}).integer(), 3);
}

TEST(Classes, ALaterRecordTakesTheNameAndGivesItBack) {
    static proxyMemberDescListS first = *Sample::getStaticProxyTypeInfo();
    static proxyMemberDescListS second = first;
    auto& factory = proxyFactoryC::instance();
    factory.registerClass(&first);
    factory.registerClass(&second);
    factory.registerClass(nullptr);
    EXPECT_EQ(factory.find("VELKTEST.sample"), &second);
    factory.revokeClass(&second);
    EXPECT_EQ(factory.find("velktest.sample"), &first);
    factory.revokeClass(nullptr);
    factory.revokeClass(&first);
    EXPECT_EQ(factory.find("velktest.sample"), nullptr);
    EXPECT_EQ(factory.find(nullptr), nullptr);
}

// A record that comes to lie where another class's record was: what happens
// when one module is unloaded and another one loaded.
TEST(Classes, AReusedRecordIsReadAgain) {
    struct Changing : Sample {
        static proxyMemberDescListS& record() {
            static proxyMemberDescListS shared = *Sample::getStaticProxyTypeInfo();
            return shared;
        }
        proxyMemberDescListS const* getProxyTypeInfo() override { return &record(); }
    };
    mzComPtrC const before(new Changing);
    EXPECT_EQ(call(before.iface(), "Plain", mzCallMethod).integer(), 77);
    static proxyMemberDescS const none[] = {proxyMembersEnd()};
    Changing::record().members = none;
    mzComPtrC const after(new Changing);
    EXPECT_EQ(call(after.iface(), "Plain", mzCallMethod).code, mzMemberNotFound);
}

}  // namespace
