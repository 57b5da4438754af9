#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "curious_object.h"
#include "sample_objects.h"
#include "support/start_gate.h"

// Objects that any thread may use, but only one at a time: who comes while
// another thread is inside is told so, and nothing is damaged.

namespace {

using velk::test::call;
using velk::test::Curious;
using velk::test::Outcome;
using velk::test::reference;

constexpr unsigned method = mzCallMethod;
constexpr unsigned get = mzCallPropertyGet;
constexpr unsigned put = mzCallPropertyPut;

void inParallel(int threads, std::function<void(int)> const& body) {
    velk::test::StartGate gate(threads);
    std::vector<std::thread> running;
    for (int i = 0; i < threads; ++i) {
        running.emplace_back([&, i] {
            gate.arriveAndWait();
            body(i);
        });
    }
    for (auto& thread : running) thread.join();
}

/// A dictionary that belongs to no thread.
class FreeDictionary : public prxDictionaryObjC {
  public:
    FreeDictionary() { setNonStickyThread(); }
};

bool isRefusal(Outcome const& outcome) {
    return outcome.code == mzFailure && outcome.exception == mzInUseText &&
           outcome.value.getType() == mzTypeEmpty;
}

struct Collection {
    char const* name;
    mzComPtrC (*make)();
    /// A call that asks `key` who it is, and what it answers.
    Outcome (*look)(mzIUnknown* object, mzComVariantC const& key);
    bool anyThread;
};

mzComPtrC newDictionary() {
    auto* const dictionary = new FreeDictionary;
    return mzComPtrC(dictionary->getIUnknown());
}

mzComPtrC newArray() {
    return mzComPtrC(proxyFactoryC::instance().find("qxttools.array")->creator()->getIUnknown());
}

class Overlap : public testing::TestWithParam<Collection> {
  protected:
    void SetUp() override { ASSERT_EQ(mzComServerInit(), mzSuccess); }
    void TearDown() override { EXPECT_EQ(mzComServerDone(), mzSuccess); }
};

TEST_P(Overlap, OnlyTheThreadInsideMayComeIn) {
    mzComPtrC const object = GetParam().make();
    mzComPtrT<Curious> const key(new Curious);
    mzComVariantC const asKey = reference(key->getIUnknown());
    mzComPtrT<mzIIterator> walk;
    ASSERT_EQ(mzComPtrT<mzIIterable>(object)->createIterator(walk), mzSuccess);
    bool reached = false;
    key->onQuestion = [&] {
        reached = true;
        EXPECT_EQ(call(object.iface(), "Count", get).code, mzSuccess);
        mzComVariantC element(5);
        EXPECT_EQ(walk->next(element), mzFailure) << "there is none";
        std::thread([&] {
            if (GetParam().anyThread) {
                EXPECT_TRUE(isRefusal(call(object.iface(), "Count", get)));
            }
            mzComVariantC mine(5);
            EXPECT_EQ(walk->next(mine), mzFailure);
            EXPECT_EQ(mine.getType(), mzTypeEmpty);
            EXPECT_EQ(walk->reset(), mzFailure);
        }).join();
    };
    EXPECT_EQ(GetParam().look(object.iface(), asKey).code, mzSuccess);
    EXPECT_TRUE(reached);
    std::thread([&] {
        if (GetParam().anyThread) {
            EXPECT_EQ(call(object.iface(), "Count", get).code, mzSuccess);
        }
        EXPECT_EQ(walk->reset(), mzSuccess);
    }).join();
}

INSTANTIATE_TEST_SUITE_P(
    Collections, Overlap,
    testing::Values(Collection{"dictionary", newDictionary,
                               [](mzIUnknown* object, mzComVariantC const& key) {
                                   return call(object, "Exists", method, {key});
                               },
                               true},
                    Collection{"array", newArray,
                               [](mzIUnknown* object, mzComVariantC const& key) {
                                   return call(object, "Find", method, {key});
                               },
                               false}),
    [](auto const& row) { return std::string(row.param.name); });

TEST(OverlapOfMany, CallsOfADictionaryAreRightOrRefused) {
    mzComPtrT<FreeDictionary> const dictionary(new FreeDictionary);
    std::atomic<int> added{0};
    std::atomic<int> refused{0};
    inParallel(4, [&](int thread) {
        auto const expect = [&](Outcome const& outcome, std::string const& text) {
            if (isRefusal(outcome)) {
                ++refused;
            } else {
                EXPECT_EQ(outcome.code, mzSuccess) << outcome.exception;
                EXPECT_EQ(outcome.text(), text);
            }
            return outcome.code == mzSuccess;
        };
        for (int round = 0; round < 2'000; ++round) {
            std::string const key = std::to_string(thread) + "." + std::to_string(round);
            mzComVariantC const asKey(key.c_str());
            // Until it is done, so that what follows has an answer to expect.
            while (!expect(call(dictionary.iface(), "Add", method, {asKey, asKey}), "")) {
                std::this_thread::yield();
            }
            ++added;
            expect(call(dictionary.iface(), "Item", get, {asKey}), key);
            expect(call(dictionary.iface(), "Exists", method, {asKey}), "-1");
            expect(call(dictionary.iface(), "Item", put, {asKey, asKey}), "");
            if (round % 2 != 0 && expect(call(dictionary.iface(), "Remove", method, {asKey}), "")) {
                --added;
            }
            if (round % 50 == 0) call(dictionary.iface(), "Items", get);
        }
    });
    EXPECT_EQ(dictionary->count(), added);
}

/// Walks over and over while the thread of the collection changes it.
void walkWhile(mzIIterable& collection, std::function<void()> const& change) {
    std::atomic<bool> done{false};
    std::thread walker([&] {
        mzComPtrT<mzIIterator> walk;
        ASSERT_EQ(collection.createIterator(walk), mzSuccess);
        mzComVariantC value;
        while (!done) {
            if (walk->next(value) != mzSuccess) {
                walk->reset();
                continue;
            }
            mzComStringC text;
            EXPECT_EQ(value.getExt(text), mzSuccess);
            EXPECT_EQ(text.toUtf8().substr(0, 6), "value ");
        }
    });
    for (int round = 0; round < 300; ++round) change();
    done = true;
    walker.join();
}

TEST(OverlapOfMany, WalksBesideChanges) {
    ASSERT_EQ(mzComServerInit(), mzSuccess);
    int number = 0;
    auto const next = [&number] {
        return mzComVariantC(("value " + std::to_string(number++)).c_str());
    };
    // Neither belongs to the walker: what the owner is refused it does again.
    auto const until = [](mzIUnknown* object, char const* name,
                          std::initializer_list<mzComVariantC> args) {
        Outcome outcome{};
        while (isRefusal(outcome = call(object, name, method, args))) std::this_thread::yield();
        EXPECT_EQ(outcome.code, mzSuccess) << name << ": " << outcome.exception;
    };
    mzComPtrC const array = newArray();
    mzComPtrC const dictionary(static_cast<mzIDispatch*>(new prxDictionaryObjC));
    for (mzIUnknown* const object : {array.iface(), dictionary.iface()}) {
        bool const isArray = object == array.iface();
        walkWhile(*mzComPtrT<mzIIterable>(mzComPtrC(object)).iface(), [&] {
            for (int i = 0; i < 20; ++i) {
                isArray ? until(object, "Add", {next()}) : until(object, "Add", {next(), i});
            }
            until(object, "RemoveAll", {});
        });
    }
    EXPECT_EQ(mzComServerDone(), mzSuccess);
}

TEST(OverlapOfMany, TheOperationsOfTheBaseFailToo) {
    mzComPtrT<FreeDictionary> const dictionary(new FreeDictionary);
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
            std::thread([&] {
                try {
                    operation(*dictionary.iface());
                    ADD_FAILURE() << "not refused: " << &operation - operations;
                } catch (mzExecuteExceptionC const& error) {
                    EXPECT_EQ(error.message(), mzComStringC(mzInUseText));
                }
            }).join();
        };
        dictionary->exists(asKey);
        EXPECT_FALSE(key->onQuestion);
        EXPECT_NO_THROW(operation(*dictionary.iface()));
    }
}

}  // namespace
