#include "host/dictionary.h"

#include "dictionary_contents.h"
#include "script_array.h"
#include "values/counted_object.h"

using velk::core::DictionaryEntries;
using velk::core::DictionaryKey;
using velk::core::KeyCompare;

namespace {

enum InsertMode : int { refuseSecond = 0, allowSecond = 1 };

bool isCompareMode(int mode) {
    return mode == int(KeyCompare::binary) || mode == int(KeyCompare::text);
}

}  // namespace

// Walks the live dictionary: an entry that is removed on the way is not seen
// any more, one that is added is seen at the end.
class prxDictionaryObjC::KeyIterator : public velk::core::CountedObject<mzIIterator> {
  public:
    explicit KeyIterator(prxDictionaryObjC& dictionary)
        : keepAlive_(dictionary.getIUnknown()), dictionary_(dictionary) {}

    unsigned next(mzComVariantC& value) override {
        DictionaryEntries const& entries = dictionary_.contents_->entries;
        std::uint32_t const position = entries.after(serial_, position_);
        if (position == DictionaryEntries::none) {
            value.clear();
            return mzFailure;
        }
        position_ = position;
        serial_ = entries.at(position).serial;
        value = entries.at(position).keyValue;
        return mzSuccess;
    }

    unsigned reset() override {
        serial_ = 0;
        position_ = 0;
        return mzSuccess;
    }

  private:
    mzComPtrC keepAlive_;
    prxDictionaryObjC& dictionary_;
    std::uint64_t serial_ = 0;
    std::uint32_t position_ = 0;
};

prxDictionaryObjC::prxDictionaryObjC() : contents_(std::make_unique<Contents>()) {}
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

unsigned prxDictionaryObjC::createIterator(mzComPtrT<mzIIterator>& out) try {
    out = new KeyIterator(*this);
    return mzSuccess;
} catch (...) {
    out.detach();
    return mzFailure;
}

int prxDictionaryObjC::addObj(mzComVariantC const& key, mzComVariantC const& item) {
    mzComVariantC const plainKey = key.skipVariable();
    DictionaryKey const wanted = contents_->keyOf(plainKey);
    if (contents_->insertMode == refuseSecond &&
        contents_->entries.find(wanted) != DictionaryEntries::none) {
        return 1;
    }
    contents_->entries.append(wanted, plainKey, item.skipVariable());
    return 0;
}

mzComPtrT<mzIUnknown> prxDictionaryObjC::setKey(mzComVariantC const& key,
                                                mzComVariantC const& newKey) {
    DictionaryEntries& entries = contents_->entries;
    mzComVariantC const plainKey = newKey.skipVariable();
    DictionaryKey const wanted = contents_->keyOf(plainKey);
    std::uint32_t const position = entries.find(contents_->keyOf(key.skipVariable()));
    std::uint32_t const taken = entries.find(wanted);
    // A key may be respelled as itself, in another case for instance.
    if (position != DictionaryEntries::none &&
        (taken == DictionaryEntries::none || taken == position)) {
        entries.rename(position, wanted, plainKey);
    }
    return getIUnknown();
}

mzComPtrT<mzIUnknown> prxDictionaryObjC::setItem(mzComVariantC const& key,
                                                 mzComVariantC const& item) {
    mzComVariantC const plainKey = key.skipVariable();
    contents_->itemOf(plainKey) = item.skipVariable();
    return getIUnknown();
}

mzComVariantC prxDictionaryObjC::getItem(mzComVariantC const& key) const {
    DictionaryEntries const& entries = contents_->entries;
    std::uint32_t const position = entries.find(contents_->keyOf(key.skipVariable()));
    return position == DictionaryEntries::none ? mzComVariantC() : entries.at(position).item;
}

int prxDictionaryObjC::searchKey(mzComVariantC const& key) const {
    return exists(key) ? 1 : 0;
}

int prxDictionaryObjC::removeKey(mzComVariantC const& key) {
    DictionaryEntries& entries = contents_->entries;
    std::uint32_t const position = entries.find(contents_->keyOf(key.skipVariable()));
    if (position == DictionaryEntries::none) {
        return 0;
    }
    entries.remove(position);
    return 1;
}

int prxDictionaryObjC::delAll() {
    contents_->entries.clear();
    return 1;
}

void prxDictionaryObjC::setCompareMode(int mode) {
    if (isCompareMode(mode) && contents_->entries.size() == 0) {
        contents_->entries.setCompare(KeyCompare(mode));
    }
}

int prxDictionaryObjC::getCompareMode() const {
    return int(contents_->entries.compare());
}

void prxDictionaryObjC::setInsertMode(int mode) {
    if (mode == refuseSecond || mode == allowSecond) {
        contents_->insertMode = mode;
    }
}

int prxDictionaryObjC::getInsertMode() const {
    return contents_->insertMode;
}

int prxDictionaryObjC::count() const {
    return static_cast<int>(contents_->entries.size());
}

bool prxDictionaryObjC::exists(mzComVariantC const& key) const {
    return contents_->entries.find(contents_->keyOf(key.skipVariable())) != DictionaryEntries::none;
}

mzComPtrT<mzIUnknown> prxDictionaryObjC::keys() const {
    return velk::core::newScriptArray(contents_->collect(&DictionaryEntries::Entry::keyValue));
}

mzComPtrT<mzIUnknown> prxDictionaryObjC::items() const {
    return velk::core::newScriptArray(contents_->collect(&DictionaryEntries::Entry::item));
}
