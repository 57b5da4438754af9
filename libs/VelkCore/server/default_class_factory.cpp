#include <algorithm>

#include "host/class_factory.h"

#include "registries.h"

namespace {

/// Class names are compared as those of the script classes are.
bool areSameClass(mzIIDS const& first, mzIIDS const& second) {
    return velk::core::foldedName(first.text()) == velk::core::foldedName(second.text());
}

}  // namespace

mzComDefaultClassFactory::mzComDefaultClassFactory() = default;
mzComDefaultClassFactory::~mzComDefaultClassFactory() = default;

unsigned mzComDefaultClassFactory::queryInterface(mzIIDS const& iid, mzComPtrC& out) {
    if (iid.equal(mzIClassFactory::interfaceId())) {
        out.attach(static_cast<mzIClassFactory*>(this));
        return mzSuccess;
    }
    return mzComBaseC::queryInterface(iid, out);
}

unsigned mzComDefaultClassFactory::addRef() {
    return mzComBaseC::addRef();
}

unsigned mzComDefaultClassFactory::release() {
    return mzComBaseC::release();
}

unsigned mzComDefaultClassFactory::createInstance(mzIUnknown* outer, mzIIDS const& id,
                                                  mzComPtrT<mzIUnknown>& result) {
    result.detach();
    auto const place = std::ranges::find_if(
        creators_, [&](auto const& entry) { return areSameClass(entry.first, id); });
    if (place == creators_.end() || place->second == nullptr) {
        return mzFailure;
    }
    unsigned const code = place->second(this, outer, result);
    if (code != mzSuccess) {
        result.detach();
    }
    return code;
}

unsigned mzComDefaultClassFactory::getCreateableObjects(
    mzComPtrT<mzIClassFactoryEnumerator> const& enumerator, int* count) {
    if (count != nullptr) {
        *count = static_cast<int>(creators_.size());
    }
    if (!enumerator.isValid()) {
        return mzSuccess;
    }
    for (auto const& [id, creator] : creators_) {
        if (unsigned const code = enumerator->addCreatable(id); code != mzSuccess) {
            return code;
        }
    }
    return mzSuccess;
}

void mzComDefaultClassFactory::addCreator(mzIIDS const& id, Creator creator) {
    bool const isKnown = std::ranges::any_of(
        creators_, [&](auto const& entry) { return areSameClass(entry.first, id); });
    if (!isKnown) {
        creators_.emplace_back(id, creator);
    }
}
