#include <cstring>

#include <gtest/gtest.h>

#include "sample_objects.h"

// The life and the identity of components, alone and inside an aggregate.

namespace {

using velk::test::DerivedSample;
using velk::test::Sample;

mzIIDS const outerId("velktest.outer");

class Inner : public mzComDispatchBaseC {
  public:
    unsigned invokeByName(mzComStringC const&, unsigned, mzComVariantArrayC const&,
                          mzComVariantC& result, mzComPtrT<mzIException>&) override {
        result.set(5);
        return mzSuccess;
    }
    void onBeforeDelete() override { ++farewells; }

    static inline int farewells = 0;
};

class Outer : public mzComBaseC {
  public:
    Outer() : inner(new mzComAggObject<Inner>(this)) {}

    unsigned queryInterface(mzIIDS const& iid, mzComPtrC& out) override {
        if (iid.equal(mzIUnknown::interfaceId())) return mzComBaseC::queryInterface(iid, out);
        if (!iid.equal(outerId)) return inner->queryInterface(iid, out);
        out.attach(static_cast<mzIUnknown*>(this));
        return mzSuccess;
    }
    unsigned count() { return (InternalAddRef(), InternalRelease(false)); }

    mzComPtrT<mzComAggObject<Inner>> const inner;
};

TEST(Aggregates, HaveOneIdentity) {
    mzComPtrT<Outer> outer(new Outer);
    mzComPtrC dispatch, unknown, back;
    ASSERT_EQ(outer->queryInterface(mzIDispatch::interfaceId(), dispatch), mzSuccess);
    EXPECT_EQ(outer->count(), 2u) << "the inner interface counts on the outer object";
    ASSERT_EQ(dispatch->queryInterface(mzIUnknown::interfaceId(), unknown), mzSuccess);
    EXPECT_EQ(unknown.iface(), static_cast<mzIUnknown*>(outer.iface()));
    EXPECT_EQ(dispatch->queryInterface(outerId, back), mzSuccess) << "from inside to outside";
    EXPECT_EQ(dispatch->queryInterface(mzIIDS("velktest.nobody"), back), mzFailure);
    EXPECT_FALSE(back.isValid());
    EXPECT_EQ(velk::test::call(dispatch.iface(), "Any", mzCallMethod).integer(), 5);
}

TEST(Aggregates, TheInnerSideAnswersWithItself) {
    mzComPtrT<Outer> outer(new Outer);
    mzComPtrC unknown;
    ASSERT_EQ(outer->inner->queryInterface(mzIUnknown::interfaceId(), unknown), mzSuccess);
    EXPECT_EQ(unknown.iface(), static_cast<mzIUnknown*>(outer->inner.iface()));
    EXPECT_EQ(outer->count(), 1u) << "the inner side counts for itself";
}

TEST(Aggregates, APlainComponentIsItsOwnIdentity) {
    int const before = Inner::farewells;
    {
        mzComPtrT<Inner> inner(new Inner);
        EXPECT_EQ(inner->getIUnknown(),
                  static_cast<mzIUnknown*>(static_cast<mzComBaseC*>(inner.iface())));
        mzComPtrC out;
        EXPECT_EQ(inner->queryInterface(mzIDispatch::interfaceId(), out), mzSuccess);
        EXPECT_EQ(inner->queryInterface(outerId, out), mzFailure);
        EXPECT_FALSE(out.isValid());
        EXPECT_EQ(Inner::farewells, before);
    }
    EXPECT_EQ(Inner::farewells, before + 1) << "just before the end, once";
}

TEST(ScriptObject, CountsFromZeroAndEndsAtZero) {
    auto* const raw = new Sample;
    EXPECT_EQ(raw->addRef(), 1u) << "a new object has no reference";
    EXPECT_EQ(raw->addRef(), 2u);
    EXPECT_EQ(raw->release(), 1u);
    EXPECT_EQ(raw->release(), 0u);
    EXPECT_EQ(Sample::alive(), 0);
}

TEST(ScriptObject, HasInterfacesByNameAndClassesByExactName) {
    mzComPtrT<DerivedSample> sample(new DerivedSample);
    auto* const object = static_cast<proxyObjectC*>(sample.iface());
    for (std::string const iid : {"mzIUnknown", "mzIDispatch", "mzIIterable", "mzidispatch", ""}) {
        bool const has = iid == "mzIUnknown" || iid == "mzIDispatch";
        mzComPtrC out(sample.iface());
        EXPECT_EQ(sample->queryInterface(mzIIDS(iid.c_str()), out), has ? mzSuccess : mzFailure);
        EXPECT_EQ(out.isValid(), has) << iid;
    }
    EXPECT_FALSE(mzIIDS("mzIDispatch2").equal(mzIDispatch::interfaceId()));
    EXPECT_TRUE(mzIIDS(nullptr).equal(mzIIDS("")));
    EXPECT_EQ(object->proxyCast("DerivedSample"), sample.iface());
    EXPECT_EQ(object->proxyCast("Sample"), static_cast<Sample*>(sample.iface()));
    EXPECT_EQ(object->proxyCast("proxyObjectC"), object);
    EXPECT_EQ(object->proxyCast("sample"), nullptr);
    EXPECT_EQ(object->proxyCast(""), nullptr);
}

TEST(ScriptObject, DescribesItsMembers) {
    proxyMemberDescS const* const members = Sample::getStaticProxyTypeInfo()->members;
    std::string text;
    proxyMemberDescS const* end = members;
    for (; end->name != nullptr; ++end) {
        text += std::string(end->name) + ' ' + std::to_string(end->kind) + ' ' +
                std::to_string(end->argCount) + ", ";
        EXPECT_STREQ(end->sourceFile, "sample_objects.h");
        EXPECT_EQ(end->line, end - members + 1);
    }
    EXPECT_EQ(
        text,
        "Value 2 0, Value 4 1, Add 1 1, Add 1 2, Plain 1025 0,  2 0,  4 1, Written 2 0, "
        "Fail 1 1, ThrowStandard 1 0, ThrowNumber 1 0, OnThread 1 1, Self 1 0, Forward 1 1, "
        "Any 1 1, Any 1 1, Any 1 1, Narrow 1 1, Narrow 1 1, Either 2 1, Either 1 1, Same 1 1, ");
    static constexpr char zeros[sizeof(proxyMemberDescS)] = {};
    EXPECT_EQ(std::memcmp(end, zeros, sizeof zeros), 0);
    // The function's own type, then those of its parameters.
    proxySignatureEntryS const* const entries = members[8].signature();
    EXPECT_EQ(*entries[0].type, typeid(void(Sample::*)(mzComStringC const&)));
    EXPECT_EQ(*entries[1].type, typeid(mzComStringC));
    EXPECT_EQ(entries[1].type, entries[1].sameType);
    EXPECT_EQ(entries[1].reserved, 0u);
    EXPECT_EQ(entries[2].type, nullptr);
}

TEST(ScriptObject, IsKeptByRemoteConnections) {
    mzIIDS const id("velktest.connection");
    mzComPtrT<Sample> sample(new Sample);
    Sample* const raw = sample.iface();
    EXPECT_EQ(raw->releaseRemoteConnection(id, mzExternalConnectionLastCloses), mzFailure);
    EXPECT_EQ(raw->addRemoteConnection(id), mzSuccess);
    EXPECT_EQ(raw->addRemoteConnection(id), mzSuccess);
    sample.detach();
    EXPECT_EQ(raw->releaseRemoteConnection(id, mzExternalConnectionKeepsAlive), mzSuccess);
    EXPECT_EQ(Sample::alive(), 1);
    EXPECT_EQ(raw->releaseRemoteConnection(id, mzExternalConnectionLastCloses), mzSuccess);
    EXPECT_EQ(Sample::alive(), 0);
}

TEST(ScriptObject, MayBeTakenWhileItEnds) {
    class Farewell : public Sample {
      public:
        ~Farewell() override { mzComPtrC const late(getIUnknown()); }
    };
    mzComPtrT<Farewell>(new Farewell).detach();
    EXPECT_EQ(Sample::alive(), 0);
}

}  // namespace
