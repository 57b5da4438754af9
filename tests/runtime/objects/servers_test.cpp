#include <gtest/gtest.h>

#include "sample_objects.h"

// The start and end of the servers, the classes and factories that take part,
// and the running objects that others find by ProgID.

namespace velk::test {
namespace {

/// What events told, one letter a call, in capitals at the end.
std::string record;

class Event : public mzComServerStateEventC {
  public:
    Event(char name, int order, unsigned code = mzSuccess)
        : mzComServerStateEventC(order), name_(name), code_(code) {
        init();
    }
    unsigned serverInit() override {
        record += name_;
        if (name_ == 't') throw 1;
        return code_;
    }
    unsigned serverDone() override {
        record += static_cast<char>(name_ - 'a' + 'A');
        return mzSuccess;
    }

  private:
    char name_;
    unsigned code_;
};

TEST(ServerState, StartsInOrderAndEndsInReverse) {
    record.clear();
    Event const c('c', 80), a('a', 10), d('d', 80);
    EXPECT_EQ(mzComServerInit(), mzSuccess);
    EXPECT_EQ(mzComServerInit(), mzSuccess) << "counted, not started twice";
    EXPECT_EQ(record, "acd");
    EXPECT_EQ(mzComServerDone(), mzSuccess);
    EXPECT_EQ(record, "acd");
    {
        Event const late('l', 5);
        EXPECT_EQ(record, "acdl") << "one that comes later is started at once";
    }
    EXPECT_EQ(mzComServerDone(), mzSuccess);
    EXPECT_EQ(record, "acdlDCA") << "one that is gone is not ended";
    EXPECT_EQ(mzComServerDone(), mzFailure) << "without a start";
}

TEST(ServerState, OneFailureDoesNotKeepTheOthersFromStarting) {
    record.clear();
    Event const bad('b', 10, mzFailure), throwing('t', 50), good('g', 90);
    EXPECT_EQ(mzComServerInit(), mzFailure);
    EXPECT_EQ(mzComServerDone(), mzSuccess);
    EXPECT_EQ(record, "btgG") << "what did not start does not end";
}

unsigned create(char const* name, mzComPtrC& out, char const* iid = "mzIDispatch") {
    return mzComCreateObject(name, mzIIDS(iid), out);
}

TEST(Classes, AreCreatedByScriptNameOrClassName) {
    Servers const servers;
    std::pair<char const*, char const*> const known[] = {{"velktest.sample", "mzIDispatch"},
                                                         {"VelkTest.Sample", "mzIUnknown"},
                                                         {"Sample", "mzIDispatch"},
                                                         {"prxDictionaryObjC", "mzIIterable"}};
    std::pair<char const*, char const*> const unknown[] = {{"velktest.sample", "mzIIterable"},
                                                           {"velktest.other", "mzIDispatch"},
                                                           {"", "mzIDispatch"},
                                                           {nullptr, "mzIDispatch"},
                                                           {"proxyObjectC", "mzIDispatch"}};
    mzComPtrC out;
    for (auto const& [name, iid] : known) {
        EXPECT_EQ(create(name, out, iid), mzSuccess) << name;
        EXPECT_TRUE(out.isValid());
    }
    for (auto const& [name, iid] : unknown) {
        EXPECT_EQ(create(name, out, iid), mzFailure) << (name ? name : "null");
        EXPECT_FALSE(out.isValid());
    }
}

TEST(Classes, GoWithTheirRegistration) {
    mzComPtrC kept, out;
    EXPECT_EQ(mzComServerInit(), mzSuccess);
    {
        proxyAutoRegisterT<Sample> const registration;
        ASSERT_EQ(create("velktest.sample", kept), mzSuccess);
        EXPECT_EQ(call(kept.iface(), "Add", mzCallMethod, {2}).integer(), 2);
    }
    EXPECT_EQ(create("velktest.sample", out), mzFailure);
    EXPECT_EQ(call(kept.iface(), "Add", mzCallMethod, {2}).integer(), 4) << "the object stays";
    EXPECT_EQ(mzComServerDone(), mzSuccess);
}

TEST(Classes, ALaterRecordTakesTheNameAndGivesItBack) {
    static proxyMemberDescListS first = *Sample::getStaticProxyTypeInfo();
    static proxyMemberDescListS second = first;
    auto& factory = proxyFactoryC::instance();
    for (auto* const record : {&first, &second}) factory.registerClass(record);
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

unsigned createSample(mzComDefaultClassFactory*, mzIUnknown* outer, mzComPtrT<mzIUnknown>& out) {
    if (outer != nullptr) return mzFailure;
    out = (new Sample)->getIUnknown();
    return mzSuccess;
}

unsigned createByThrowing(mzComDefaultClassFactory*, mzIUnknown*, mzComPtrT<mzIUnknown>&) {
    throw std::bad_alloc();
}

mzComPtrT<mzIClassFactory> makeFactory() {
    auto* const factory = new mzComDefaultClassFactory;
    factory->addCreator(mzIIDS("velktest.made"), createSample);
    factory->addCreator(mzIIDS("velktest.made"), createByThrowing);
    factory->addCreator(mzIIDS("velktest.thrower"), createByThrowing);
    return mzComPtrT<mzIClassFactory>(factory);
}

class Module : public mzComClassModule {
  public:
    Module() { init(); }
    void registerFactories() override {
        addFactory([] { return mzComPtrT<mzIClassFactory>(); });
        addFactory(nullptr);
        addFactory(makeFactory);
    }
};

TEST(Factories, ComeAndGoWithServersAndModule) {
    mzComPtrT<mzIUnknown> out;
    mzComPtrC object;
    {
        Module const module;
        for (int round = 0; round < 2; ++round) {
            Servers const servers;
            EXPECT_EQ(mzComCreateInstance("velktest.made", nullptr, out), mzSuccess);
            EXPECT_TRUE(out.isValid());
            EXPECT_EQ(create("VelkTest.MADE", object), mzSuccess);
            EXPECT_EQ(mzComCreateInstance("velktest.made", object.iface(), out), mzFailure)
                << "aggregation is refused";
            for (char const* id : {"velktest.thrower", "velktest.unknown", ""}) {
                EXPECT_EQ(mzComCreateInstance(id, nullptr, out), mzFailure) << id;
            }
            EXPECT_EQ(mzComCreateInstance(nullptr, nullptr, out), mzFailure);
        }
        EXPECT_EQ(mzComCreateInstance("velktest.made", nullptr, out), mzFailure);
        EXPECT_FALSE(out.isValid());
    }
    Servers const servers;
    EXPECT_EQ(mzComCreateInstance("velktest.made", nullptr, out), mzFailure);
}

TEST(Factories, TellWhatTheyCreate) {
    class Names : public mzComBaseC, public mzIClassFactoryEnumerator {
      public:
        unsigned queryInterface(mzIIDS const& iid, mzComPtrC& out) override {
            return mzComBaseC::queryInterface(iid, out);
        }
        unsigned addRef() override { return mzComBaseC::addRef(); }
        unsigned release() override { return mzComBaseC::release(); }
        unsigned addCreatable(mzIIDS const& id) override {
            text += std::string(id.text()) + ";";
            return most-- > 1 ? mzSuccess : mzFailure;
        }
        std::string text;
        int most = 9;
    };
    auto const factory = makeFactory();
    int count = -1;
    EXPECT_EQ(factory->getCreateableObjects({}, &count), mzSuccess);
    EXPECT_EQ(count, 2);
    mzComPtrT<Names> const names(new Names);
    mzComPtrT<mzIClassFactoryEnumerator> const enumerator(names.iface());
    EXPECT_EQ(factory->getCreateableObjects(enumerator, nullptr), mzSuccess);
    EXPECT_EQ(names->text, "velktest.made;velktest.thrower;");
    names->most = 1;
    EXPECT_EQ(factory->getCreateableObjects(enumerator, nullptr), mzFailure) << "ended early";
}

unsigned find(char const* progId, mzComPtrC& out, mzIIDS const& iid = mzIDispatch::interfaceId()) {
    return mzComGetActiveObject(progId, iid, 3, out, 0);
}

TEST(ActiveObjects, AreFoundWhileRegistered) {
    mzComPtrC const objects[] = {mzComPtrC(new Sample), mzComPtrC(new Sample)};
    unsigned cookies[2] = {};
    ASSERT_EQ(mzComRegisterActiveObject("velktest.run", objects[0].iface(), cookies[0]), mzSuccess);
    ASSERT_EQ(mzComRegisterActiveObject("VelkTest.Run", objects[1].iface(), cookies[1]), mzSuccess);
    EXPECT_NE(cookies[0], 0u);
    EXPECT_NE(cookies[0], cookies[1]);
    mzComPtrC out;
    for (int newest : {1, 0}) {
        EXPECT_EQ(find("VELKTEST.RUN", out), mzSuccess);
        EXPECT_EQ(out.iface(), objects[newest].iface());
        EXPECT_EQ(find("velktest.run", out, mzIIterable::interfaceId()), mzFailure)
            << "running, but not that interface";
        EXPECT_EQ(mzComRevokeActiveObject(cookies[newest]), mzSuccess);
        EXPECT_EQ(mzComRevokeActiveObject(cookies[newest]), mzFailure) << "once";
    }
    EXPECT_EQ(find("velktest.run", out), mzFailure);
    EXPECT_FALSE(out.isValid());
}

TEST(ActiveObjects, NeedANameAndAnObject) {
    mzComPtrC const sample(new Sample);
    mzComPtrC out;
    unsigned cookie = 7;
    for (char const* name : {static_cast<char const*>(nullptr), ""}) {
        EXPECT_EQ(mzComRegisterActiveObject(name, sample.iface(), cookie), mzFailure);
        EXPECT_EQ(cookie, 0u);
        EXPECT_EQ(find(name, out), mzFailure);
    }
    EXPECT_EQ(mzComRegisterActiveObject("velktest.run", nullptr, cookie), mzFailure);
    EXPECT_EQ(mzComRevokeActiveObject(0), mzFailure);
}

TEST(ActiveObjects, GoWithTheServersAndAreFoundByScripts) {
    unsigned cookie = 0;
    {
        Servers const servers;
        mzComRegisterActiveObject("velktest.run", mzComPtrC(new Sample).iface(), cookie);
        mzComPtrC manager;
        ASSERT_EQ(create("qxttools.scriptmanager", manager), mzSuccess);
        mzComPtrT<mzIUnknown> found;
        EXPECT_EQ(
            call(manager.iface(), "GetObject", mzCallMethod, {"VelkTest.run"}).value.get(found),
            mzSuccess);
        EXPECT_EQ(call(found.iface(), "Plain", mzCallMethod).integer(), 77);
        EXPECT_EQ(Sample::alive(), 1);
    }
    EXPECT_EQ(Sample::alive(), 0);
    EXPECT_EQ(mzComRevokeActiveObject(cookie), mzFailure);
}

}  // namespace
}  // namespace velk::test
