#include "registries.h"

#include <algorithm>
#include <mutex>

#include "host/class_module.h"
#include "services/immortal.h"

namespace velk::core {

namespace {

struct Factories {
    std::mutex mutex;
    FactoryList list;
};

// Lives as long as the process, as the other registries do.
Factories& factories() {
    static Immortal<Factories> all;
    return *all;
}

}  // namespace

void addFactory(mzComPtrT<mzIClassFactory> const& factory) {
    std::lock_guard const hold(factories().mutex);
    factories().list.push_back(factory);
}

void removeFactory(mzIClassFactory const* factory) {
    mzComPtrT<mzIClassFactory> removed;  // released after the lock
    std::lock_guard const hold(factories().mutex);
    auto& list = factories().list;
    auto const place =
        std::ranges::find(list, factory, [](auto const& held) { return held.iface(); });
    if (place != list.end()) {
        removed = std::move(*place);
        list.erase(place);
    }
}

FactoryList currentFactories() {
    std::lock_guard const hold(factories().mutex);
    return factories().list;
}

}  // namespace velk::core

namespace {

// Class modules start after the script classes, whose registration objects
// have the order 80.
constexpr int classModuleOrder = 100;

}  // namespace

mzComClassModule::mzComClassModule() : mzComServerStateEventC(classModuleOrder) {}

mzComClassModule::~mzComClassModule() {
    mzComClassModule::serverDone();
}

unsigned mzComClassModule::serverInit() {
    registerFactories();
    return mzSuccess;
}

unsigned mzComClassModule::serverDone() {
    for (auto const& factory : factories_) {
        velk::core::removeFactory(factory.iface());
    }
    factories_.clear();
    return mzSuccess;
}

void mzComClassModule::registerFactories() {}

void mzComClassModule::addFactory(mzComPtrT<mzIClassFactory> (*makeFactory)()) {
    mzComPtrT<mzIClassFactory> factory;
    if (makeFactory != nullptr) {
        factory = makeFactory();
    }
    if (factory.isValid()) {
        factories_.push_back(factory);
        velk::core::addFactory(factory);
    }
}
