#include <gtest/gtest.h>

#include "threads.h"

// Objects that any thread may use, but only one at a time: who comes while
// another thread is inside is told so, and nothing is damaged.

namespace velk::test {
namespace {

constexpr unsigned method = mzCallMethod;
constexpr unsigned get = mzCallPropertyGet;
constexpr unsigned put = mzCallPropertyPut;

/// A dictionary that belongs to no thread.
class FreeDictionary : public prxDictionaryObjC {
  public:
    FreeDictionary() { setNonStickyThread(); }
};

bool isRefusal(Outcome const& outcome) {
    return outcome.code == mzFailure && outcome.exception == mzInUseText &&
           outcome.value.getType() == mzTypeEmpty;
}

class Overlap : public testing::Test {
  protected:
    Servers const servers_;
    mzComPtrT<FreeDictionary> const dictionary_{new FreeDictionary};
    mzComPtrC const array_ = newArray();
};

TEST_F(Overlap, OnlyTheThreadInsideMayComeIn) {
    // A call by which each asks a value who it is; the array belongs to its thread.
    for (char const* const look : {"Exists", "Find"}) {
        SCOPED_TRACE(look);
        bool const anyThread = look[0] == 'E';
        mzComPtrC const object = anyThread ? mzComPtrC(dictionary_->getIUnknown()) : array_;
        mzComPtrT<mzIIterator> walk;
        ASSERT_EQ(mzComPtrT<mzIIterable>(object)->createIterator(walk), mzSuccess);
        mzComPtrT<Curious> const key(new Curious);
        key->onQuestion = [&] {
            EXPECT_EQ(call(object.iface(), "Count", get).code, mzSuccess);
            mzComVariantC element(5);
            EXPECT_EQ(walk->next(element), mzFailure) << "there is none";
            std::jthread([&] {
                EXPECT_TRUE(!anyThread || isRefusal(call(object.iface(), "Count", get)));
                mzComVariantC mine(5);
                EXPECT_EQ(walk->next(mine), mzFailure);
                EXPECT_EQ(mine.getType(), mzTypeEmpty);
                EXPECT_EQ(walk->reset(), mzFailure);
            });
        };
        EXPECT_EQ(call(object.iface(), look, method, {reference(key->getIUnknown())}).code,
                  mzSuccess);
        EXPECT_FALSE(key->onQuestion) << "was not asked";
        std::jthread([&] {
            EXPECT_TRUE(!anyThread || call(object.iface(), "Count", get).code == mzSuccess);
            EXPECT_EQ(walk->reset(), mzSuccess);
        });
    }
}

TEST_F(Overlap, CallsOfADictionaryAreRightOrRefused) {
    std::atomic<int> added{0};
    inParallel(4, [&](int thread) {
        auto const isDone = [&](char const* name, unsigned kind,
                                std::vector<mzComVariantC> const& args, std::string const& text) {
            Outcome const outcome = call(dictionary_.iface(), name, kind, args);
            EXPECT_TRUE(isRefusal(outcome) || (outcome.code == mzSuccess && outcome.text() == text))
                << name << ' ' << outcome.exception << outcome.text();
            return outcome.code == mzSuccess;
        };
        for (int round = 0; round < 2'000; ++round) {
            std::string const key = std::to_string(thread) + "." + std::to_string(round);
            mzComVariantC const asKey(key.c_str());
            // Until it is done, so that what follows has an answer to expect.
            while (!isDone("Add", method, {asKey, asKey}, "")) std::this_thread::yield();
            ++added;
            isDone("Item", get, {asKey}, key);
            isDone("Exists", method, {asKey}, "-1");
            isDone("Item", put, {asKey, asKey}, "");
            if (round % 2 != 0 && isDone("Remove", method, {asKey}, "")) --added;
            if (round % 50 == 0) call(dictionary_.iface(), "Items", get);
        }
    });
    EXPECT_EQ(dictionary_->count(), added);
}

/// Walks over and over while the thread of the collection changes it.
void walkWhile(mzIIterable& collection, std::function<void()> const& change) {
    std::atomic<bool> done{false};
    std::jthread const walker([&] {
        mzComPtrT<mzIIterator> walk;
        ASSERT_EQ(collection.createIterator(walk), mzSuccess);
        mzComVariantC value;
        while (!done) {
            if (walk->next(value) == mzSuccess) {
                EXPECT_EQ((Outcome{0, value, {}}.text().substr(0, 6)), "value ");
            } else {
                walk->reset();
            }
        }
    });
    for (int round = 0; round < 300; ++round) change();
    done = true;
}

TEST_F(Overlap, WalksBesideChanges) {
    int number = 0;
    mzComPtrC const dictionary(static_cast<mzIDispatch*>(new prxDictionaryObjC));
    for (mzIUnknown* const object : {array_.iface(), dictionary.iface()}) {
        // Neither belongs to the walker: what the owner is refused it does again.
        auto const until = [object](char const* name, std::vector<mzComVariantC> const& args) {
            Outcome outcome{};
            while (isRefusal(outcome = call(object, name, method, args))) std::this_thread::yield();
            EXPECT_EQ(outcome.code, mzSuccess) << name << ": " << outcome.exception;
        };
        walkWhile(*mzComPtrT<mzIIterable>(mzComPtrC(object)).iface(), [&] {
            for (int i = 0; i < 20; ++i) {
                std::vector<mzComVariantC> args = {("value " + std::to_string(number++)).c_str()};
                if (object == dictionary.iface()) args.emplace_back(i);
                until("Add", args);
            }
            until("RemoveAll", {});
        });
    }
}

TEST_F(Overlap, TheOperationsOfTheBaseFailToo) {
    mzComPtrT<Curious> const key(new Curious);
    mzComVariantC const asKey = reference(key->getIUnknown());
    std::function<void(prxDictionaryObjC&)> const operations[] = {
        [](auto& d) { d.addObj(1, 2); },     [](auto& d) { d.setKey(1, 2); },
        [](auto& d) { d.setItem(1, 2); },    [](auto& d) { d.getItem(1); },
        [](auto& d) { d.searchKey(1); },     [](auto& d) { d.removeKey(1); },
        [](auto& d) { d.delAll(); },         [](auto& d) { d.setCompareMode(1); },
        [](auto& d) { d.getCompareMode(); }, [](auto& d) { d.setInsertMode(1); },
        [](auto& d) { d.getInsertMode(); },  [](auto& d) { d.count(); },
        [](auto& d) { d.exists(1); },        [](auto& d) { d.keys(); },
        [](auto& d) { d.items(); }};
    for (auto const& operation : operations) {
        key->onQuestion = [&] {
            std::jthread([&] {
                try {
                    operation(*dictionary_.iface());
                    ADD_FAILURE() << "not refused: " << &operation - operations;
                } catch (mzExecuteExceptionC const& error) {
                    EXPECT_EQ(error.message(), mzComStringC(mzInUseText));
                }
            });
        };
        dictionary_->exists(asKey);
        EXPECT_FALSE(key->onQuestion);
        EXPECT_NO_THROW(operation(*dictionary_.iface()));
    }
}

}  // namespace
}  // namespace velk::test
