#include <string>

#include <gtest/gtest.h>

#include "sample_objects.h"

// The start and end of the servers, and the class modules that take part.

namespace {

using velk::test::Sample;

std::string& record() {
    static std::string calls;
    return calls;
}

class Event : public mzComServerStateEventC {
  public:
    Event(char name, int order, unsigned code = mzSuccess)
        : mzComServerStateEventC(order), name_(name), code_(code) {
        init();
    }
    unsigned serverInit() override {
        record() += name_;
        return code_;
    }
    unsigned serverDone() override {
        record() += static_cast<char>(name_ - 'a' + 'A');
        return mzSuccess;
    }

  private:
    char name_;
    unsigned code_;
};

class ThrowingEvent : public mzComServerStateEventC {
  public:
    ThrowingEvent() : mzComServerStateEventC(50) { init(); }
    unsigned serverInit() override { throw 1; }
};

unsigned createSample(mzComDefaultClassFactory*, mzIUnknown* outer, mzComPtrT<mzIUnknown>& out) {
    if (outer != nullptr) {
        return mzFailure;
    }
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

class Servers : public testing::Test {
  protected:
    void SetUp() override { record().clear(); }
};

TEST_F(Servers, StartInOrderAndEndInReverse) {
    Event const c('c', 80);
    Event const a('a', 10);
    Event const d('d', 80);
    EXPECT_EQ(mzComServerInit(), mzSuccess);
    EXPECT_EQ(mzComServerInit(), mzSuccess) << "counted, not started twice";
    EXPECT_EQ(record(), "acd");
    EXPECT_EQ(mzComServerDone(), mzSuccess);
    EXPECT_EQ(record(), "acd");
    EXPECT_EQ(mzComServerDone(), mzSuccess);
    EXPECT_EQ(record(), "acdDCA");
    EXPECT_EQ(mzComServerDone(), mzFailure) << "without a start";
}

TEST_F(Servers, AnEventThatComesLaterIsStartedAtOnce) {
    EXPECT_EQ(mzComServerInit(), mzSuccess);
    {
        Event const late('l', 5);
        EXPECT_EQ(record(), "l");
    }
    EXPECT_EQ(mzComServerDone(), mzSuccess);
    EXPECT_EQ(record(), "l") << "an event that is gone is not ended";
}

TEST_F(Servers, OneFailureDoesNotKeepTheOthersFromStarting) {
    Event const bad('b', 10, mzFailure);
    ThrowingEvent const worse;
    Event const good('g', 90);
    EXPECT_EQ(mzComServerInit(), mzFailure);
    EXPECT_EQ(mzComServerDone(), mzSuccess);
    EXPECT_EQ(record(), "bgG") << "what did not start does not end";
}

TEST_F(Servers, FactoriesComeAndGoWithTheServers) {
    Module const module;
    mzComPtrT<mzIUnknown> out;
    EXPECT_EQ(mzComServerInit(), mzSuccess);
    EXPECT_EQ(mzComCreateInstance("velktest.made", nullptr, out), mzSuccess);
    EXPECT_TRUE(out.isValid());
    mzComPtrC object;
    for (char const* id : {"velktest.made", "VelkTest.MADE"}) {
        EXPECT_EQ(mzComCreateObject(id, mzIDispatch::interfaceId(), object), mzSuccess) << id;
    }
    EXPECT_EQ(mzComServerDone(), mzSuccess);
    EXPECT_EQ(mzComCreateInstance("velktest.made", nullptr, out), mzFailure);
    EXPECT_FALSE(out.isValid());
}

TEST_F(Servers, FactoriesGoWithTheirModule) {
    EXPECT_EQ(mzComServerInit(), mzSuccess);
    mzComPtrT<mzIUnknown> out;
    {
        Module const module;
        EXPECT_EQ(mzComCreateInstance("velktest.made", nullptr, out), mzSuccess);
        EXPECT_EQ(mzComCreateInstance("velktest.made", out.iface(), out), mzFailure)
            << "aggregation is refused";
        for (char const* id : {"velktest.thrower", "velktest.unknown", ""}) {
            EXPECT_EQ(mzComCreateInstance(id, nullptr, out), mzFailure) << id;
        }
        EXPECT_EQ(mzComCreateInstance(nullptr, nullptr, out), mzFailure);
    }
    EXPECT_EQ(mzComCreateInstance("velktest.made", nullptr, out), mzFailure);
    EXPECT_EQ(mzComServerDone(), mzSuccess);
}

TEST_F(Servers, AFactoryTellsWhatItCreates) {
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

}  // namespace
