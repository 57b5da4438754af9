#include "host/proxy_factory.h"

#include <algorithm>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>
#include <vector>

#include "host/proxy_object.h"

#include "objects/class_indexes.h"
#include "registries.h"
#include "services/immortal.h"

namespace {

using Record = proxyMemberDescListS const*;

// Names to the records that claim them; the last one of a list has the name.
// When it is revoked the one before has it again.
struct ClassRegistry {
    std::shared_mutex mutex;
    std::unordered_map<std::string, std::vector<Record>> byName;

    void enter(char const* name, Record record) {
        std::string folded = velk::core::foldedName(name);
        if (!folded.empty()) {
            auto& claims = byName[std::move(folded)];
            std::erase(claims, record);
            claims.push_back(record);
        }
    }
};

ClassRegistry& registry() {
    static velk::core::Immortal<ClassRegistry> classes;
    return *classes;
}

}  // namespace

proxyFactoryC& proxyFactoryC::instance() {
    static proxyFactoryC factory;
    return factory;
}

void proxyFactoryC::registerClass(proxyMemberDescListS const* record) {
    if (record == nullptr) {
        return;
    }
    std::unique_lock const hold(registry().mutex);
    registry().enter(record->className, record);
    registry().enter(record->scriptName, record);
}

void proxyFactoryC::revokeClass(proxyMemberDescListS const* record) {
    if (record == nullptr) {
        return;
    }
    {
        std::unique_lock const hold(registry().mutex);
        auto& byName = registry().byName;
        for (auto entry = byName.begin(); entry != byName.end();) {
            std::erase(entry->second, record);
            entry = entry->second.empty() ? byName.erase(entry) : std::next(entry);
        }
    }
    velk::core::forgetIndexesOf(record);
}

proxyMemberDescListS const* proxyFactoryC::find(char const* name) const {
    std::string const folded = velk::core::foldedName(name);
    std::shared_lock const hold(registry().mutex);
    auto const place = registry().byName.find(folded);
    return place == registry().byName.end() ? nullptr : place->second.back();
}

unsigned proxyFactoryC::createObject(char const* name, mzComPtrT<mzIUnknown>& out) const {
    out.detach();
    Record const record = find(name);
    if (record == nullptr || record->creator == nullptr) {
        return mzFailure;
    }
    proxyObjectC* const object = record->creator();
    if (object == nullptr) {
        return mzFailure;
    }
    out = object->getIUnknown();
    return mzSuccess;
}
