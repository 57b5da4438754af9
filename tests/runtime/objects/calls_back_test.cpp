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

class CallsBack : public testing::Test {
  protected:
    velk::test::Outcome callList(char const* name, std::vector<mzComVariantC> const& args = {},
                                 unsigned kind = method) {
        return call(list_.iface(), name, kind, args);
    }
    void fill(int size) {
        callList("RemoveAll");
        for (int i = 0; i < size; ++i) callList("Add", {i});
    }

    velk::test::Servers const servers_;
    mzComPtrT<Curious> const curious_{new Curious};
    mzComVariantC const value_ = reference(curious_->getIUnknown());
    mzComPtrC const list_{
        proxyFactoryC::instance().find("qxttools.array")->creator()->getIUnknown()};
    mzComPtrT<prxDictionaryObjC> const dictionary_{new prxDictionaryObjC};
};

TEST_F(CallsBack, AListThatShrinksWhileAValueIsPut) {
    fill(100);
    curious_->onQuestion = [this] { callList("ReDim", {0}); };
    EXPECT_EQ(callList("Item", {50, value_}, mzCallPropertyPut).exception,
              "The index 50 is outside the list of 1 values");
    curious_->onQuestion = [this] { fill(0); };
    EXPECT_EQ(callList("InsertAt", {1, value_}).exception,
              "The index 1 is outside the list of 0 values");
    curious_->onQuestion = [this] { callList("ReDim", {999}); };
    EXPECT_EQ(callList("InsertAt", {0, value_}).code, mzSuccess);
    EXPECT_EQ(callList("Count").integer(), 1001);
}

TEST_F(CallsBack, AListThatIsReplacedWhileItIsSearched) {
    for (int newSize : {0, 5'000}) {
        fill(1);
        callList("Item", {0, value_}, mzCallPropertyPut);
        curious_->onQuestion = [this, newSize] { fill(newSize); };
        EXPECT_EQ(callList("Find", {4'000}).integer(), newSize == 0 ? -1 : 4'000);
        EXPECT_EQ(callList("Count").integer(), newSize);
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
    using Action = std::function<void(prxDictionaryObjC&)>;
    Action const operations[] = {
        [&](auto& d) { d.setKey(asKey, "renamed"); }, [&](auto& d) { d.getItem(asKey); },
        [&](auto& d) { d.removeKey(asKey); },         [&](auto& d) { d.setItem(asKey, 1); },
        [&](auto& d) { d.addObj(asKey, 1); },         [&](auto& d) { d.exists(asKey); }};
    auto const grow = [](auto& d) {
        for (int i = 0; i < 40; ++i) d.setItem(i, "grown");
    };
    Action const changes[] = {[](auto& d) { d.delAll(); }, grow};
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
    curious_->onQuestion = [&] { dictionary_->addObj("key", 1); };
    EXPECT_EQ(dictionary_->addObj("key", value_), 1);
    EXPECT_EQ(dictionary_->count(), 1);
}

TEST_F(CallsBack, ADictionaryThatGrowsWhileItsItemsEnd) {
    for (int i = 0; i < 3; ++i) {
        mzComPtrT<Curious> const item(new Curious);
        item->onEnd = [&] { dictionary_->addObj(dictionary_->count() + 1000, 1); };
        dictionary_->addObj(i, reference(item->getIUnknown()));
    }
    dictionary_->removeKey(0);
    dictionary_->setItem(1, 5);
    EXPECT_EQ(dictionary_->count(), 4);
    dictionary_->delAll();
    EXPECT_EQ(dictionary_->count(), 1);
}

}  // namespace
