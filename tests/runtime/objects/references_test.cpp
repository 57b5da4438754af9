#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "sample_objects.h"

// The life of a script object.

namespace {

using velk::test::Sample;

mzIIDS const& connection() {
    static mzIIDS const id("velktest.connection");
    return id;
}

TEST(References, CountFromZeroAndEndAtZero) {
    Sample* const raw = new Sample;
    EXPECT_EQ(Sample::alive(), 1);
    EXPECT_EQ(raw->addRef(), 1u) << "a new object has no reference";
    EXPECT_EQ(raw->addRef(), 2u);
    EXPECT_EQ(raw->release(), 1u);
    EXPECT_EQ(raw->release(), 0u);
    EXPECT_EQ(Sample::alive(), 0);
}

TEST(References, InterfacesByName) {
    mzComPtrT<Sample> sample(new Sample);
    struct Row {
        char const* iid;
        unsigned code;
    };
    for (Row const row :
         {Row{"mzIUnknown", mzSuccess}, Row{"mzIDispatch", mzSuccess},
          Row{"mzIIterable", mzFailure}, Row{"mzidispatch", mzFailure}, Row{"", mzFailure}}) {
        SCOPED_TRACE(row.iid);
        mzComPtrC out(sample.iface());
        EXPECT_EQ(sample->queryInterface(mzIIDS(row.iid), out), row.code);
        EXPECT_EQ(out.isValid(), row.code == mzSuccess);
    }
}

TEST(References, ARemoteConnectionKeepsTheObject) {
    mzComPtrT<Sample> sample(new Sample);
    Sample* const raw = sample.iface();
    EXPECT_EQ(raw->addRemoteConnection(connection()), mzSuccess);
    EXPECT_EQ(raw->addRemoteConnection(connection()), mzSuccess);
    sample.detach();
    EXPECT_EQ(Sample::alive(), 1);
    EXPECT_EQ(raw->releaseRemoteConnection(connection(), mzExternalConnectionKeepsAlive),
              mzSuccess);
    EXPECT_EQ(Sample::alive(), 1);
    EXPECT_EQ(raw->releaseRemoteConnection(connection(), mzExternalConnectionLastCloses),
              mzSuccess);
    EXPECT_EQ(Sample::alive(), 0);
}

TEST(References, AConnectionThatWasNotMadeCannotEnd) {
    mzComPtrT<Sample> sample(new Sample);
    EXPECT_EQ(sample->releaseRemoteConnection(connection(), mzExternalConnectionLastCloses),
              mzFailure);
    EXPECT_EQ(Sample::alive(), 1);
}

TEST(References, APointerTakenWhileTheObjectDiesDoesNoHarm) {
    class Farewell : public Sample {
      public:
        ~Farewell() override { mzComPtrC const late(getIUnknown()); }
    };
    mzComPtrT<Farewell>(new Farewell).detach();
    EXPECT_EQ(Sample::alive(), 0);
}

TEST(References, ManyThreadsCountOneObject) {
    mzComPtrC const shared(new Sample);
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&shared] {
            for (int round = 0; round < 2000; ++round) {
                mzComPtrC const mine(shared);
                mzComPtrC const own(new Sample);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(Sample::alive(), 1);
    EXPECT_EQ(shared->addRef(), 2u);
    shared->release();
}

}  // namespace
