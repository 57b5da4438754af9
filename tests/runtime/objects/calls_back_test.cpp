#include <gtest/gtest.h>

#include "sample_objects.h"

// Values that run code while a collection works with them, and that code
// changes the very collection.

namespace velk::test {
namespace {

constexpr unsigned method = mzCallMethod;

class CallsBack : public testing::Test {
  protected:
    Outcome callList(char const* name, std::vector<mzComVariantC> const& args = {},
                     unsigned kind = method) {
        return call(list_.iface(), name, kind, args);
    }
    void fill(int size) {
        callList("RemoveAll");
        for (int i = 0; i < size; ++i) callList("Add", {i});
    }

    Servers const servers_;
    mzComPtrT<Curious> const curious_{new Curious};
    mzComVariantC const value_ = reference(curious_->getIUnknown());
    mzComPtrC const list_ = newArray();
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
    using Action = std::function<void(prxDictionaryObjC&)>;
    Action const operations[] = {
        [this](auto& d) { d.setKey(value_, "renamed"); }, [this](auto& d) { d.getItem(value_); },
        [this](auto& d) { d.removeKey(value_); },         [this](auto& d) { d.setItem(value_, 1); },
        [this](auto& d) { d.addObj(value_, 1); },         [this](auto& d) { d.exists(value_); }};
    auto const grow = [](auto& d) {
        for (int i = 0; i < 40; ++i) d.setItem(i, "grown");
    };
    Action const changes[] = {[](auto& d) { d.delAll(); }, grow};
    for (auto const& operation : operations) {
        for (auto const& change : changes) {
            for (int moment = 0; moment < 12; ++moment) {
                mzComPtrT<prxDictionaryObjC> const dictionary(new prxDictionaryObjC);
                dictionary->addObj("first", 1);
                dictionary->addObj(value_, "item");
                int released = 0;
                curious_->onRelease = [&] {
                    if (released++ == moment) change(*dictionary.iface());
                };
                operation(*dictionary.iface());
                curious_->onRelease = nullptr;
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
}  // namespace velk::test
