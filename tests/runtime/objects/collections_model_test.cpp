#include <algorithm>
#include <cmath>
#include <cstdint>
#include <sstream>

#include <gtest/gtest.h>

#include "host/diagnostics.h"
#include "script_table.h"
#include "support/random_operations.h"

// Random operations on a dictionary and on an array, beside plain lists of what
// they should hold.

namespace velk::test {
namespace {

using Values = std::vector<mzComVariantC>;

/// The values that operations take.
class Pool {
  public:
    mzComVariantC value(unsigned what) {
        static char const* const texts[] = {"a", "A", "abcde", "abcdE", "\xE4", "\xC4", "", "3"};
        unsigned const choice = what / 8;
        switch (what % 8) {
            case 0:
                return {};
            case 1:
                return choice % 5 + 0.5 * (choice / 5 % 2);
            case 2:
                return choice % 2 == 0 ? -0.0 : std::nan("");
            case 3:
                return reference(objects_[choice % 2 == 0 ? "one" : "two"].iface());
            case 4:
                return mzComVariantC::createSymbolRef(texts[choice % 3]);
            case 5:
                return static_cast<int>(choice % 40) - 1;
            default:
                return texts[choice % std::size(texts)];
        }
    }
    /// A value, or a new dictionary with some.
    mzComVariantC item(unsigned what) {
        if (what % 5 != 0) return value(what / 5);
        auto* const dictionary = new prxDictionaryObjC;
        mzComVariantC const nested = reference(dictionary->getIUnknown());
        for (; what > 100; what /= 50) dictionary->setItem(value(what), item(what / 10));
        return nested;
    }

    std::string text(mzComVariantC const& value) const { return described(value, objects_); }
    std::string text(Values const& values) const {
        std::string all;
        for (auto const& value : values) all += (all.empty() ? "" : "; ") + text(value);
        return '[' + all + ']';
    }

  private:
    Objects objects_{{"one", mzComPtrC(new Sample)}, {"two", mzComPtrC(new Sample)}};
};

template <class T>
void expectSame(T const& got, T const& expected, std::string const& what) {
    std::ostringstream text;
    text << what << ": " << got << " instead of " << expected;
    expectModel(got == expected, text.str());
}

template <class Machine>
void search() {
    searchOperations(200, 500, [](auto const& operations, std::string& log) {
        long long const before = mzLiveCountTotal();
        {
            Machine machine(log);
            for (Operation const& operation : operations) machine.step(operation);
            machine.finish();
        }
        expectSame(mzLiveCountTotal(), before, "objects and texts that are left");
    });
}

/// A text that equal values share.
std::string keyText(mzComVariantC const& value, bool folds = false) {
    mzComStringC text;
    mzComPtrT<mzIUnknown> object;
    switch (value.getType()) {
        case mzTypeString:
            value.get(text);
            return 't' + (folds ? text.toQString().toLower() : text.toQString()).toStdString();
        case mzTypeObject:
            value.get(object);
            return 'o' + std::to_string(reinterpret_cast<std::uintptr_t>(object.iface()));
        case mzTypeEmpty:
            return "empty";
        default: {
            // Zeros and NaNs are equal whatever their signs.
            double const number = value.getDouble() + 0.0;
            return described(std::isnan(number) ? std::abs(number) : number);
        }
    }
}

class DictionaryMachine {
  public:
    explicit DictionaryMachine(std::string& log) : log_(log) {}

    void step(Operation const& operation) {
        static constexpr char const* names[] = {"add",    "add",    "add",   "add",    "add",
                                                "set",    "key",    "key",   "remove", "remove",
                                                "remove", "remove", "modes", "clear",  "walk",
                                                "next",   "next",   "next",  "begin",  "?"};
        std::string const name = names[operation.kind % std::size(names)];
        mzComVariantC const key = pool_.value(operation.place),
                            wanted = operation.size % 4 == 0 ? key : pool_.value(operation.size),
                            item = pool_.item(operation.what);
        log_ += name + ' ' + pool_.text({key, wanted, item}) + '\n';
        Entry const fresh{key.skipVariable(), item.skipVariable(), lastSerial_ + 1};
        std::size_t const at = find(key), taken = find(wanted), size = entries_.size();
        bool const isThere = at < size;
        if (name == "add") {
            expectSame(dictionary_->addObj(key, item), int(isThere && insert_ == 0), name);
            if (!isThere || insert_ == 1) append(fresh);
        } else if (name == "set") {
            expectItself(dictionary_->setItem(key, item));
            isThere ? void(entries_[at].item = fresh.item) : append(fresh);
        } else if (name == "key") {
            expectItself(dictionary_->setKey(key, wanted));
            bool const isFree = taken == at || taken == size;
            if (isThere && isFree) entries_[at].key = wanted.skipVariable();
        } else if (name == "remove") {
            expectSame(dictionary_->removeKey(key), int(isThere), name);
            if (isThere) entries_.erase(entries_.begin() + static_cast<int>(at));
        } else if (name == "modes") {
            setModes(static_cast<int>(operation.place % 4) - 1);
        } else if (name == "clear") {
            if (operation.place % 8 != 0) return;
            expectSame(dictionary_->delAll(), 1, name);
            entries_.clear();
        } else if (name == "?") {
            compareAll(key, at);
        } else {
            walk(name, walks_[operation.place % 3]);
        }
    }

    // The walks alone keep the dictionary in the end.
    void finish() {
        dictionary_ = nullptr;
        for (Walk& each : walks_) walk("next", each);
    }

  private:
    struct Entry {
        mzComVariantC key, item;
        unsigned long serial;
    };
    struct Walk {
        mzComPtrT<mzIIterator> iterator;
        unsigned long place = 0;
    };

    std::size_t find(mzComVariantC const& key) const {
        std::string const wanted = keyText(key.skipVariable(), compare_ == 1);
        std::size_t at = 0;
        while (at < entries_.size() && keyText(entries_[at].key, compare_ == 1) != wanted) ++at;
        return at;
    }

    void append(Entry const& entry) {
        entries_.push_back(entry);
        ++lastSerial_;
    }

    void expectItself(mzComPtrT<mzIUnknown> const& answer) {
        expectModel(answer.iface() == dictionary_->getIUnknown(), "another object");
    }

    void setModes(int mode) {
        dictionary_->setCompareMode(mode);
        dictionary_->setInsertMode(mode);
        bool const isMode = mode == 0 || mode == 1;
        if (isMode && entries_.empty()) compare_ = mode;
        if (isMode) insert_ = mode;
    }

    void walk(std::string const& name, Walk& walk) {
        if (name == "walk") dictionary_->createIterator(walk.iterator);
        if (!walk.iterator.isValid()) return;
        if (name == "begin") expectSame(walk.iterator->reset(), mzSuccess, name);
        if (name != "next") {
            walk.place = 0;
            return;
        }
        auto entry = entries_.begin();
        while (entry != entries_.end() && entry->serial <= walk.place) ++entry;
        bool const isEnd = entry == entries_.end();
        mzComVariantC key("left over");
        expectSame(walk.iterator->next(key), isEnd ? mzFailure : mzSuccess, name);
        expectSame(pool_.text(key), isEnd ? "empty" : pool_.text(entry->key), name);
        if (!isEnd) walk.place = entry->serial;
    }

    void compareAll(mzComVariantC const& key, std::size_t at) {
        bool const isThere = at < entries_.size();
        expectSame(dictionary_->searchKey(key), int(isThere), "searchKey");
        expectSame(dictionary_->exists(key), isThere, "exists");
        expectSame(pool_.text(dictionary_->getItem(key)),
                   isThere ? pool_.text(entries_[at].item) : "empty", "getItem");
        expectSame(dictionary_->getCompareMode(), compare_, "compare mode");
        expectSame(dictionary_->getInsertMode(), insert_, "insert mode");
        expectSame(dictionary_->count(), static_cast<int>(entries_.size()), "count");
        Values keys, items;
        for (Entry const& each : entries_) {
            keys.push_back(each.key);
            items.push_back(each.item);
        }
        expectSame(pool_.text(reference(dictionary_->keys().iface())), pool_.text(keys), "keys");
        expectSame(pool_.text(reference(dictionary_->items().iface())), pool_.text(items), "items");
    }

    std::string& log_;
    Pool pool_;
    mzComPtrT<prxDictionaryObjC> dictionary_{new prxDictionaryObjC};
    std::vector<Entry> entries_;
    Walk walks_[3];
    unsigned long lastSerial_ = 0;
    int compare_ = 0, insert_ = 0;
};

class ArrayMachine {
  public:
    explicit ArrayMachine(std::string& log) : log_(log) {
        mzComPtrT<mzIIterable>(list_)->createIterator(walk_);
    }

    void step(Operation const& operation) {
        static constexpr char const* names[] = {"Add",   "Add",      "Add",    "Add",  "InsertAt",
                                                "Item",  "RemoveAt", "Remove", "Find", "Copy",
                                                "ReDim", "next",     "next",   "?",    "?"};
        std::string const name = names[operation.kind % std::size(names)];
        int const size = static_cast<int>(values_.size());
        int const index = static_cast<int>(operation.place % (values_.size() + 3)) - 1;
        int const length = static_cast<int>(operation.size % 6) - 1;
        mzComVariantC const value = pool_.item(operation.what), plain = value.skipVariable();
        log_ += name + ' ' + pool_.text({index, length, value}) + '\n';
        bool const isInside = index >= 0 && index < size, isPlace = isInside || index == size;
        auto const place = values_.begin() + (isPlace ? index : 0);
        std::string const outside = "!The index " + std::to_string(index) +
                                    " is outside the list of " + std::to_string(size) + " values";
        auto const inside = [&](std::string const& answer) { return isInside ? answer : outside; };
        auto const atPlace = [&](std::string const& answer) { return isPlace ? answer : outside; };
        if (name == "Add") {
            expect("Add", {value}, std::to_string(size));
            values_.push_back(plain);
        } else if (name == "InsertAt") {
            expect("InsertAt", {index, value}, atPlace("empty"));
            if (isPlace) values_.insert(place, plain);
        } else if (name == "Item") {
            expect("Item", {index, value}, inside("empty"), mzCallPropertyPut);
            if (isInside) *place = plain;
        } else if (name == "RemoveAt") {
            expect("RemoveAt", {index}, inside("empty"));
            if (isInside) values_.erase(place);
        } else if (name == "Remove") {
            int const at = find(plain, 0);
            expect("Remove", {value}, at < 0 ? "0" : "-1");
            if (at >= 0) values_.erase(values_.begin() + at);
        } else if (name == "Find") {
            expect("Find", {value, index},
                   atPlace(std::to_string(isPlace ? find(plain, index) : 0)));
        } else if (name == "ReDim") {
            expect("ReDim", {index}, "empty");
            values_.resize(static_cast<std::size_t>(index + 1));
        } else if (name == "Copy") {
            auto const end = place + std::clamp(length, 0, static_cast<int>(values_.end() - place));
            expect("Copy", {index, length},
                   atPlace(length < 0 ? "!The length of a copy cannot be negative"
                                      : pool_.text(Values(place, end))));
        } else if (name == "next") {
            next();
        } else {
            expect("Item", {index}, inside(isInside ? pool_.text(*place) : ""));
            expect("Count", {}, std::to_string(size));
            expectSame(pool_.text(reference(list_.iface())), pool_.text(values_), "values");
        }
    }
    void finish() {}

  private:
    int find(mzComVariantC const& value, int from) const {
        auto const begin = values_.begin();
        auto const found = std::find_if(
            begin + from, values_.end(),
            [&](mzComVariantC const& each) { return keyText(each) == keyText(value); });
        return found == values_.end() ? -1 : static_cast<int>(found - begin);
    }

    void expect(char const* name, Values const& args, std::string const& answer,
                unsigned kind = mzCallMethod) {
        auto const outcome = call(list_.iface(), name, kind, args);
        expectSame(outcome.code == mzSuccess ? pool_.text(outcome.value) : '!' + outcome.exception,
                   answer, name);
    }

    // A walk goes by index, and begins again at the end.
    void next() {
        bool const isEnd = place_ >= values_.size();
        mzComVariantC value("left over");
        expectSame(walk_->next(value), isEnd ? mzFailure : mzSuccess, "next");
        expectSame(pool_.text(value), isEnd ? "empty" : pool_.text(values_[place_]), "next");
        if (isEnd) expectSame(walk_->reset(), mzSuccess, "reset");
        place_ = isEnd ? 0 : place_ + 1;
    }

    std::string& log_;
    Pool pool_;
    mzComPtrC const list_ = newArray();
    mzComPtrT<mzIIterator> walk_;
    std::size_t place_ = 0;
    Values values_;
};

TEST(Collections, ADictionaryIsAsItsModel) {
    search<DictionaryMachine>();
}

TEST(Collections, AnArrayIsAsItsModel) {
    Servers const servers;
    search<ArrayMachine>();
}

TEST(Collections, ADictionaryHoldsAMillionEntries) {
    constexpr int many = 1'000'000;
    mzComPtrT<prxDictionaryObjC> dictionary(new prxDictionaryObjC);
    auto const keyOf = [](int number) { return mzComStringC::fromInt(number, 10); };
    for (int i = 0; i < many; ++i) dictionary->addObj(keyOf(i), i);
    int wrong = dictionary->count() != many;
    for (int i = 0; i < many; i += 7) wrong += dictionary->getItem(keyOf(i)).getInt() != i;
    for (int i = 0; i < many; ++i) wrong += dictionary->removeKey(keyOf(i)) != 1;
    EXPECT_EQ(wrong + dictionary->count(), 0);
}

}  // namespace
}  // namespace velk::test
