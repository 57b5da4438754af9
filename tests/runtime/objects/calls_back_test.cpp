#include <functional>
#include <utility>

#include <gtest/gtest.h>

#include "curious_object.h"
#include "sample_objects.h"

// Values that run code while a collection works with them, and that code
// changes the very collection.

namespace {

using velk::test::call;
using velk::test::Curious;
using velk::test::reference;

constexpr unsigned method = mzCallMethod;
constexpr unsigned put = mzCallPropertyPut;

class CallsBack : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(mzComServerInit(), mzSuccess);
        ASSERT_EQ(mzComCreateObject("qxttools.array", mzIDispatch::interfaceId(), list_),
                  mzSuccess);
        for (int i = 0; i < 100; ++i) callList("Add", method, {i});
    }
    void TearDown() override { EXPECT_EQ(mzComServerDone(), mzSuccess); }

    velk::test::Outcome callList(char const* name, unsigned kind,
                                 std::initializer_list<mzComVariantC> args) {
        return call(list_.iface(), name, kind, args);
    }
    int count() { return callList("Count", method, {}).integer(); }

    mzComPtrT<Curious> const curious_{new Curious};
    mzComVariantC const value_ = reference(curious_->getIUnknown());
    mzComPtrC list_;
};

TEST_F(CallsBack, AListThatShrinksWhileAValueIsPut) {
    curious_->onQuestion = [this] { callList("ReDim", method, {0}); };
    EXPECT_EQ(callList("Item", put, {50, value_}).exception,
              "The index 50 is outside the list of 1 values");
    curious_->onQuestion = [this] { callList("RemoveAll", method, {}); };
    EXPECT_EQ(callList("InsertAt", method, {1, value_}).exception,
              "The index 1 is outside the list of 0 values");
    curious_->onQuestion = [this] { callList("ReDim", method, {999}); };
    EXPECT_EQ(callList("InsertAt", method, {0, value_}).code, mzSuccess);
    EXPECT_EQ(count(), 1001);
}

TEST_F(CallsBack, AListThatIsReplacedWhileItIsSearched) {
    callList("Item", put, {0, value_});
    curious_->onQuestion = [] {};  // the value that is looked for
    for (int newSize : {0, 5'000}) {
        callList("Item", put, {0, value_});
        curious_->onQuestion = [this, newSize] {
            callList("RemoveAll", method, {});
            for (int i = 0; i < newSize; ++i) callList("Add", method, {i});
        };
        EXPECT_EQ(callList("Find", method, {4'000}).integer(), newSize == 0 ? -1 : 4'000);
        EXPECT_EQ(count(), newSize);
        callList("ReDim", method, {0});
    }
}

/// Runs a function whenever a reference to it is given up.
class Touchy : public mzIUnknown {
  public:
    unsigned queryInterface(mzIIDS const& iid, mzComPtrC& out) override {
        out.attach(iid.equal(mzIUnknown::interfaceId()) ? this : nullptr);
        return out.isValid() ? mzSuccess : mzFailure;
    }
    unsigned addRef() override { return 2; }
    unsigned release() override {
        if (auto const action = std::exchange(onRelease, nullptr)) {
            action();
            onRelease = action;
        }
        return 1;
    }

    std::function<void()> onRelease;
};

/// Whether order, index and count of a dictionary agree.
void expectSound(prxDictionaryObjC& dictionary) {
    mzComPtrT<mzIIterator> walk;
    ASSERT_EQ(dictionary.createIterator(walk), mzSuccess);
    int seen = 0;
    for (mzComVariantC key; walk->next(key) == mzSuccess; ++seen) {
        EXPECT_TRUE(dictionary.exists(key));
    }
    EXPECT_EQ(seen, dictionary.count());
}

// Every operation with a key, changed by it at each moment at which it can be.
TEST_F(CallsBack, ADictionaryThatChangesWhileAKeyIsGivenUp) {
    Touchy key;
    mzComVariantC const asKey = reference(&key);
    std::function<void(prxDictionaryObjC&)> const operations[] = {
        [&](auto& d) { d.setKey(asKey, "renamed"); }, [&](auto& d) { d.getItem(asKey); },
        [&](auto& d) { d.removeKey(asKey); },         [&](auto& d) { d.setItem(asKey, 1); },
        [&](auto& d) { d.addObj(asKey, 1); },         [&](auto& d) { d.exists(asKey); }};
    std::function<void(prxDictionaryObjC&)> const changes[] = {[](auto& d) { d.delAll(); },
                                                               [](auto& d) {
                                                                   for (int i = 0; i < 40; ++i)
                                                                       d.setItem(i, "grown");
                                                               }};
    for (auto const& operation : operations) {
        for (auto const& change : changes) {
            for (int moment = 0; moment < 12; ++moment) {
                mzComPtrT<prxDictionaryObjC> const dictionary(new prxDictionaryObjC);
                dictionary->addObj("first", 1);
                dictionary->addObj(asKey, "item");
                int released = 0;
                key.onRelease = [&] {
                    if (released++ == moment) change(*dictionary.iface());
                };
                operation(*dictionary.iface());
                key.onRelease = nullptr;
                expectSound(*dictionary.iface());
            }
        }
    }
}

TEST_F(CallsBack, ADictionaryThatGetsTheKeyWhileItIsAdded) {
    mzComPtrT<prxDictionaryObjC> const dictionary(new prxDictionaryObjC);
    curious_->onQuestion = [&] { dictionary->addObj("key", 1); };
    EXPECT_EQ(dictionary->addObj("key", value_), 1);
    EXPECT_EQ(dictionary->count(), 1);
}

}  // namespace
