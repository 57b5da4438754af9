#include <gtest/gtest.h>

#include "sample_objects.h"

// Components inside an aggregate.

namespace {

int farewells = 0;

mzIIDS const& outerId() {
    static mzIIDS const id("velktest.outer");
    return id;
}

class Inner : public mzComDispatchBaseC {
  public:
    unsigned invokeByName(mzComStringC const&, unsigned, mzComVariantArrayC const&,
                          mzComVariantC& result, mzComPtrT<mzIException>&) override {
        result.set(5);
        return mzSuccess;
    }
    void onBeforeDelete() override { ++farewells; }
};

class Outer : public mzComBaseC {
  public:
    Outer() : inner_(new mzComAggObject<Inner>(this)) {}

    unsigned queryInterface(mzIIDS const& iid, mzComPtrC& out) override {
        if (iid.equal(outerId())) {
            out.attach(static_cast<mzIUnknown*>(this));
            return mzSuccess;
        }
        if (iid.equal(mzIUnknown::interfaceId())) {
            return mzComBaseC::queryInterface(iid, out);
        }
        return inner_->queryInterface(iid, out);
    }
    unsigned count() { return (InternalAddRef(), InternalRelease(false)); }
    mzComPtrT<mzComAggObject<Inner>> const& inner() const { return inner_; }

  private:
    mzComPtrT<mzComAggObject<Inner>> inner_;
};

TEST(Aggregates, HaveOneIdentity) {
    mzComPtrT<Outer> outer(new Outer);
    mzComPtrC dispatch;
    ASSERT_EQ(outer->queryInterface(mzIDispatch::interfaceId(), dispatch), mzSuccess);
    EXPECT_EQ(outer->count(), 2u) << "the inner interface counts on the outer object";
    mzComPtrC unknown;
    ASSERT_EQ(dispatch->queryInterface(mzIUnknown::interfaceId(), unknown), mzSuccess);
    EXPECT_EQ(unknown.iface(), static_cast<mzIUnknown*>(outer.iface()));
    mzComPtrC back;
    EXPECT_EQ(dispatch->queryInterface(outerId(), back), mzSuccess) << "from inside to outside";
    EXPECT_EQ(dispatch->queryInterface(mzIIDS("velktest.nobody"), back), mzFailure);
    EXPECT_FALSE(back.isValid());
    EXPECT_EQ(velk::test::call(dispatch.iface(), "Any", mzCallMethod).integer(), 5);
}

TEST(Aggregates, TheInnerSideAnswersWithItself) {
    mzComPtrT<Outer> outer(new Outer);
    mzComPtrC unknown;
    ASSERT_EQ(outer->inner()->queryInterface(mzIUnknown::interfaceId(), unknown), mzSuccess);
    EXPECT_EQ(unknown.iface(), static_cast<mzIUnknown*>(outer->inner().iface()));
    EXPECT_EQ(outer->count(), 1u) << "the inner side counts for itself";
}

TEST(Aggregates, APlainComponentIsItsOwnIdentity) {
    farewells = 0;
    {
        mzComPtrT<Inner> inner(new Inner);
        EXPECT_EQ(inner->getIUnknown(),
                  static_cast<mzIUnknown*>(static_cast<mzComBaseC*>(inner.iface())));
        mzComPtrC out;
        EXPECT_EQ(inner->queryInterface(mzIDispatch::interfaceId(), out), mzSuccess);
        EXPECT_EQ(inner->queryInterface(outerId(), out), mzFailure);
        EXPECT_FALSE(out.isValid());
        EXPECT_EQ(farewells, 0);
    }
    EXPECT_EQ(farewells, 1) << "just before the end, once";
}

}  // namespace
