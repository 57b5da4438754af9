#include <cmath>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "sample_objects.h"

// The dictionary as runtime code uses it.

namespace {

using velk::test::reference;
using velk::test::Sample;

std::string joined(mzComPtrT<mzIUnknown> const& iterable) {
    std::string text;
    mzComPtrT<mzIIterable> const walk{mzComPtrC(iterable.iface())};
    mzComPtrT<mzIIterator> iterator;
    EXPECT_EQ(walk->createIterator(iterator), mzSuccess);
    mzComVariantC value;
    while (iterator->next(value) == mzSuccess) {
        mzComStringC part;
        value.getExt(part);
        text += part.toUtf8() + ";";
    }
    return text;
}

TEST(Dictionary, KeysThatAreEqual) {
    mzComPtrC const object(new Sample);
    mzComPtrC const other(new Sample);
    struct Row {
        char const* what;
        mzComVariantC left;
        mzComVariantC right;
        bool binary;
        bool text;
    };
    Row const rows[] = {
        {"text", "abc", "abc", true, true},
        {"text in another case", "abc", "ABC", false, true},
        {"letters beyond ASCII", "\xE4", "\xC4", false, true},
        {"another text of the same length", "abcdefgh", "abcdefgx", false, false},
        {"longer than four units", "abcde", "abcdE", false, true},
        {"text and its beginning", "abc", "abcd", false, false},
        {"empty text and empty value", "", {}, false, false},
        {"empty and empty", {}, {}, true, true},
        {"empty and zero", {}, 0, false, false},
        {"integer and double", 3, 3.0, true, true},
        {"integer and another double", 3, 3.5, false, false},
        {"the two zeros", 0.0, -0.0, true, true},
        {"number and its text", 3, "3", false, false},
        {"true and its number", true, -1, true, true},
        {"not a number", std::nan(""), -std::nan("1"), true, true},
        {"an object", reference(object.iface()), reference(object.iface()), true, true},
        {"two objects", reference(object.iface()), reference(other.iface()), false, false},
        {"a variable and its value", mzComVariantC::createSymbolRef("abc"), "abc", true, true},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.what);
        for (int const mode : {0, 1}) {
            mzComPtrT<prxDictionaryObjC> dictionary(new prxDictionaryObjC);
            dictionary->setCompareMode(mode);
            ASSERT_EQ(dictionary->addObj(row.left, 1), 0);
            bool const same = mode == 0 ? row.binary : row.text;
            EXPECT_EQ(dictionary->searchKey(row.right), same ? 1 : 0) << "mode " << mode;
            EXPECT_EQ(dictionary->addObj(row.right, 2), same ? 1 : 0) << "mode " << mode;
            EXPECT_EQ(dictionary->count(), same ? 1 : 2);
        }
    }
}

TEST(Dictionary, KeepsTheOrderOfAdding) {
    mzComPtrT<prxDictionaryObjC> dictionary(new prxDictionaryObjC);
    for (char const* key : {"d", "b", "a", "c"}) {
        dictionary->addObj(key, mzComStringC(key) + "1");
    }
    EXPECT_EQ(dictionary->removeKey("b"), 1);
    EXPECT_EQ(dictionary->removeKey("b"), 0);
    dictionary->addObj("b", "b2");
    dictionary->setItem("a", "a2");
    dictionary->setKey("d", "z");
    EXPECT_EQ(joined(dictionary->keys()), "z;a;c;b;");
    EXPECT_EQ(joined(dictionary->items()), "d1;a2;c1;b2;");
    EXPECT_EQ(dictionary->delAll(), 1);
    EXPECT_EQ(joined(dictionary->keys()), "");
    EXPECT_EQ(dictionary->count(), 0);
}

TEST(Dictionary, SetItemAddsAndAnswersTheDictionary) {
    mzComPtrT<prxDictionaryObjC> dictionary(new prxDictionaryObjC);
    EXPECT_EQ(dictionary->setItem("new", 1).iface(), dictionary->getIUnknown());
    EXPECT_EQ(dictionary->setItem("new", 2).iface(), dictionary->getIUnknown());
    EXPECT_EQ(dictionary->getItem("new").getInt(), 2);
    EXPECT_EQ(dictionary->getItem("missing").getType(), mzTypeEmpty);
    EXPECT_EQ(dictionary->count(), 1) << "reading adds nothing here";
}

TEST(Dictionary, SetKeyMovesNothingOnAConflict) {
    mzComPtrT<prxDictionaryObjC> dictionary(new prxDictionaryObjC);
    dictionary->setCompareMode(1);
    dictionary->addObj("a", 1);
    dictionary->addObj("b", 2);
    EXPECT_EQ(dictionary->setKey("a", "b").iface(), dictionary->getIUnknown());
    EXPECT_EQ(joined(dictionary->keys()), "a;b;");
    dictionary->setKey("missing", "c");
    EXPECT_EQ(joined(dictionary->keys()), "a;b;");
    dictionary->setKey("a", "A");
    EXPECT_EQ(joined(dictionary->keys()), "A;b;") << "respelled as itself";
    EXPECT_EQ(dictionary->getItem("a").getInt(), 1);
}

TEST(Dictionary, InsertModeOneKeepsEqualKeys) {
    mzComPtrT<prxDictionaryObjC> dictionary(new prxDictionaryObjC);
    EXPECT_EQ(dictionary->getInsertMode(), 0);
    dictionary->setInsertMode(7);
    EXPECT_EQ(dictionary->getInsertMode(), 0);
    dictionary->setInsertMode(1);
    for (int i = 1; i <= 3; ++i) {
        EXPECT_EQ(dictionary->addObj("same", i), 0);
    }
    EXPECT_EQ(dictionary->count(), 3);
    for (int eldest = 1; eldest <= 3; ++eldest) {
        EXPECT_EQ(dictionary->getItem("same").getInt(), eldest);
        EXPECT_EQ(dictionary->removeKey("same"), 1);
    }
    EXPECT_EQ(dictionary->searchKey("same"), 0);
}

TEST(Dictionary, CompareModeChangesOnlyWhileEmpty) {
    mzComPtrT<prxDictionaryObjC> dictionary(new prxDictionaryObjC);
    dictionary->setCompareMode(2);
    EXPECT_EQ(dictionary->getCompareMode(), 0);
    dictionary->setCompareMode(1);
    dictionary->addObj("a", 1);
    dictionary->setCompareMode(0);
    EXPECT_EQ(dictionary->getCompareMode(), 1);
}

TEST(Dictionary, AnIteratorFollowsChanges) {
    mzComPtrT<prxDictionaryObjC> dictionary(new prxDictionaryObjC);
    for (int i = 0; i < 200; ++i) {
        dictionary->addObj(i, i);
    }
    mzComPtrT<mzIIterator> iterator;
    ASSERT_EQ(dictionary->createIterator(iterator), mzSuccess);
    mzComVariantC key;
    int seen = 0;
    // Removes each key as it comes and every odd one before it comes.
    while (iterator->next(key) == mzSuccess) {
        EXPECT_EQ(key.getInt(), 2 * seen++);
        dictionary->removeKey(key);
        dictionary->removeKey(key.getInt() + 1);
    }
    EXPECT_EQ(seen, 100);
    EXPECT_EQ(key.getType(), mzTypeEmpty);
    EXPECT_EQ(dictionary->count(), 0);
    dictionary->addObj("late", 1);
    EXPECT_EQ(iterator->next(key), mzSuccess) << "what is added is seen";
    EXPECT_EQ(iterator->reset(), mzSuccess);
    EXPECT_EQ(iterator->next(key), mzSuccess);
    EXPECT_EQ(iterator->next(key), mzFailure);
}

TEST(Dictionary, AnIteratorKeepsTheDictionary) {
    mzComPtrT<mzIIterator> iterator;
    mzComPtrT<prxDictionaryObjC> dictionary(new prxDictionaryObjC);
    dictionary->addObj("a", 1);
    dictionary->createIterator(iterator);
    dictionary.detach();
    mzComVariantC key;
    EXPECT_EQ(iterator->next(key), mzSuccess);
}

// An item that looks at its dictionary while it goes.
TEST(Dictionary, AnItemMayUseTheDictionaryWhileItIsReleased) {
    class Clinging : public Sample {
      public:
        explicit Clinging(prxDictionaryObjC* dictionary) : dictionary_(dictionary) {}
        ~Clinging() override { dictionary_->addObj(dictionary_->count() + 1000, 1); }
        prxDictionaryObjC* dictionary_;
    };
    mzComPtrT<prxDictionaryObjC> dictionary(new prxDictionaryObjC);
    for (int i = 0; i < 3; ++i) {
        dictionary->addObj(i, reference((new Clinging(dictionary.iface()))->getIUnknown()));
    }
    dictionary->removeKey(0);
    dictionary->setItem(1, 5);
    EXPECT_EQ(dictionary->count(), 4);
    dictionary->delAll();
    EXPECT_EQ(dictionary->count(), 1);
    EXPECT_EQ(Sample::alive(), 0);
}

// The same random changes on the dictionary and on a plain model of it.
TEST(Dictionary, AgreesWithAModel) {
    std::mt19937 random(12345);
    mzComPtrT<prxDictionaryObjC> dictionary(new prxDictionaryObjC);
    std::map<int, int> model;
    for (int step = 0; step < 20'000; ++step) {
        int const key = static_cast<int>(random() % 300);
        switch (random() % 4) {
            case 0:
                EXPECT_EQ(dictionary->addObj(key, step), model.emplace(key, step).second ? 0 : 1);
                break;
            case 1:
                dictionary->setItem(key, step), model[key] = step;
                break;
            case 2:
                EXPECT_EQ(dictionary->removeKey(key), static_cast<int>(model.erase(key)));
                break;
            default:
                EXPECT_EQ(dictionary->searchKey(key), static_cast<int>(model.count(key)));
                if (model.count(key) != 0) {
                    EXPECT_EQ(dictionary->getItem(key).getInt(), model[key]);
                }
        }
    }
    EXPECT_EQ(dictionary->count(), static_cast<int>(model.size()));
}

TEST(Dictionary, HoldsAMillionEntries) {
    constexpr int many = 1'000'000;
    mzComPtrT<prxDictionaryObjC> dictionary(new prxDictionaryObjC);
    for (int i = 0; i < many; ++i) {
        dictionary->addObj(mzComStringC::fromInt(i, 10), i);
    }
    EXPECT_EQ(dictionary->count(), many);
    int wrong = 0;
    for (int i = 0; i < many; i += 7) {
        wrong += dictionary->getItem(mzComStringC::fromInt(i, 10)).getInt() != i;
    }
    EXPECT_EQ(wrong, 0);
    for (int i = 0; i < many; ++i) {
        wrong += dictionary->removeKey(mzComStringC::fromInt(i, 10)) != 1;
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(dictionary->count(), 0);
}

}  // namespace
