#include "host/dictionary.h"

#include "collection.h"
#include "dictionary_contents.h"
#include "script_array.h"

using velk::core::DictionaryEntries;
using velk::core::DictionaryKey;
using velk::core::KeyCompare;
using velk::core::RequiredUse;

namespace {

// Values can run code when they are asked what they are and when they are given
// up, and that code can change the dictionary. Each operation therefore takes
// its values first, keeps them to its end, and runs no such code while it
// holds a position.

enum InsertMode : int { refuseSecond = 0, allowSecond = 1 };

bool isCompareMode(int mode) {
    return mode == int(KeyCompare::binary) || mode == int(KeyCompare::text);
}

}  // namespace

// An entry that is removed on the way is not seen any more, one that is added is
// seen at the end.
class prxDictionaryObjC::Place {
  public:
    bool next(prxDictionaryObjC& dictionary, mzComVariantC& value) {
        DictionaryEntries const& entries = dictionary.contents_->entries;
        std::uint32_t const position = entries.after(serial_, position_);
        if (position == DictionaryEntries::none) return false;
        position_ = position;
        serial_ = entries.at(position).serial;
        value = entries.at(position).keyValue;
        return true;
    }

  private:
    std::uint64_t serial_ = 0;
    std::uint32_t position_ = 0;
};

prxDictionaryObjC::prxDictionaryObjC() : contents_(std::make_unique<Contents>()) {
    refuseOverlappingCalls();
}
prxDictionaryObjC::~prxDictionaryObjC() = default;

unsigned prxDictionaryObjC::queryInterface(mzIIDS const& iid, mzComPtrC& out) {
    if (iid.equal(mzIIterable::interfaceId())) {
        out.attach(static_cast<mzIIterable*>(this));
        return mzSuccess;
    }
    return proxyObjectC::queryInterface(iid, out);
}

unsigned prxDictionaryObjC::addRef() {
    return proxyObjectC::addRef();
}

unsigned prxDictionaryObjC::release() {
    return proxyObjectC::release();
}

unsigned prxDictionaryObjC::createIterator(mzComPtrT<mzIIterator>& out) {
    return velk::core::CollectionWalk<prxDictionaryObjC, Place>::create(*this, singleThreadUse(),
                                                                        out);
}

int prxDictionaryObjC::addObj(mzComVariantC const& key, mzComVariantC const& item) {
    RequiredUse const use(singleThreadUse(), "addObj");
    mzComVariantC const plainKey = key.skipVariable();
    mzComVariantC const plainItem = item.skipVariable();
    DictionaryKey const wanted = contents_->keyOf(plainKey);
    if (contents_->insertMode == refuseSecond &&
        contents_->entries.find(wanted) != DictionaryEntries::none) {
        return 1;
    }
    contents_->entries.append(wanted, plainKey, plainItem);
    return 0;
}

mzComPtrT<mzIUnknown> prxDictionaryObjC::setKey(mzComVariantC const& key,
                                                mzComVariantC const& newKey) {
    RequiredUse const use(singleThreadUse(), "setKey");
    DictionaryEntries& entries = contents_->entries;
    mzComVariantC const plainKey = key.skipVariable();
    mzComVariantC const plainNewKey = newKey.skipVariable();
    DictionaryKey const former = contents_->keyOf(plainKey);
    DictionaryKey const wanted = contents_->keyOf(plainNewKey);
    std::uint32_t const position = entries.find(former);
    std::uint32_t const taken = entries.find(wanted);
    // A key may be respelled as itself, in another case for instance.
    if (position != DictionaryEntries::none &&
        (taken == DictionaryEntries::none || taken == position)) {
        entries.rename(position, wanted, plainNewKey);
    }
    return getIUnknown();
}

mzComPtrT<mzIUnknown> prxDictionaryObjC::setItem(mzComVariantC const& key,
                                                 mzComVariantC const& item) {
    RequiredUse const use(singleThreadUse(), "setItem");
    mzComVariantC const plainKey = key.skipVariable();
    contents_->itemOf(plainKey) = item.skipVariable();
    return getIUnknown();
}

mzComVariantC prxDictionaryObjC::getItem(mzComVariantC const& key) const {
    RequiredUse const use(singleThreadUse(), "getItem");
    DictionaryEntries const& entries = contents_->entries;
    mzComVariantC const plainKey = key.skipVariable();
    std::uint32_t const position = entries.find(contents_->keyOf(plainKey));
    return position == DictionaryEntries::none ? mzComVariantC() : entries.at(position).item;
}

int prxDictionaryObjC::searchKey(mzComVariantC const& key) const {
    return exists(key) ? 1 : 0;
}

int prxDictionaryObjC::removeKey(mzComVariantC const& key) {
    RequiredUse const use(singleThreadUse(), "removeKey");
    DictionaryEntries& entries = contents_->entries;
    mzComVariantC const plainKey = key.skipVariable();
    std::uint32_t const position = entries.find(contents_->keyOf(plainKey));
    if (position == DictionaryEntries::none) {
        return 0;
    }
    entries.remove(position);
    return 1;
}

int prxDictionaryObjC::delAll() {
    RequiredUse const use(singleThreadUse(), "delAll");
    contents_->entries.clear();
    return 1;
}

void prxDictionaryObjC::setCompareMode(int mode) {
    RequiredUse const use(singleThreadUse(), "setCompareMode");
    if (isCompareMode(mode) && contents_->entries.size() == 0) {
        contents_->entries.setCompare(KeyCompare(mode));
    }
}

int prxDictionaryObjC::getCompareMode() const {
    RequiredUse const use(singleThreadUse(), "getCompareMode");
    return int(contents_->entries.compare());
}

void prxDictionaryObjC::setInsertMode(int mode) {
    RequiredUse const use(singleThreadUse(), "setInsertMode");
    if (mode == refuseSecond || mode == allowSecond) {
        contents_->insertMode = mode;
    }
}

int prxDictionaryObjC::getInsertMode() const {
    RequiredUse const use(singleThreadUse(), "getInsertMode");
    return contents_->insertMode;
}

int prxDictionaryObjC::count() const {
    RequiredUse const use(singleThreadUse(), "count");
    return static_cast<int>(contents_->entries.size());
}

bool prxDictionaryObjC::exists(mzComVariantC const& key) const {
    RequiredUse const use(singleThreadUse(), "exists");
    return contents_->entries.find(contents_->keyOf(key.skipVariable())) != DictionaryEntries::none;
}

mzComPtrT<mzIUnknown> prxDictionaryObjC::keys() const {
    RequiredUse const use(singleThreadUse(), "keys");
    return velk::core::newScriptArray(contents_->collect(&DictionaryEntries::Entry::keyValue));
}

mzComPtrT<mzIUnknown> prxDictionaryObjC::items() const {
    RequiredUse const use(singleThreadUse(), "items");
    return velk::core::newScriptArray(contents_->collect(&DictionaryEntries::Entry::item));
}
