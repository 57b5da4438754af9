#include "registries.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "host/creation.h"

#include "services/immortal.h"

namespace velk::core {

namespace {

struct ActiveObject {
    std::string progId;
    unsigned cookie;
    mzComPtrC object;
};

struct ActiveObjects {
    std::mutex mutex;
    std::vector<ActiveObject> list;  // the newest last
    unsigned lastCookie = 0;
};

ActiveObjects& activeObjects() {
    static Immortal<ActiveObjects> objects;
    return *objects;
}

unsigned enter(char const* progId, mzIUnknown* object) {
    std::string folded = foldedName(progId);
    ActiveObjects& active = activeObjects();
    std::lock_guard const hold(active.mutex);
    // 0 is never a cookie, also after four billion registrations.
    if (++active.lastCookie == 0) {
        ++active.lastCookie;
    }
    active.list.push_back({std::move(folded), active.lastCookie, mzComPtrC(object)});
    return active.lastCookie;
}

}  // namespace

mzComPtrC findActiveObject(char const* progId) {
    std::string const folded = foldedName(progId);
    ActiveObjects& active = activeObjects();
    std::lock_guard const hold(active.mutex);
    auto const place = std::find_if(active.list.rbegin(), active.list.rend(),
                                    [&](auto const& entry) { return entry.progId == folded; });
    return place == active.list.rend() ? mzComPtrC() : place->object;
}

void forgetActiveObjects() {
    std::vector<ActiveObject> left;  // released after the lock
    std::lock_guard const hold(activeObjects().mutex);
    left.swap(activeObjects().list);
}

}  // namespace velk::core

using velk::core::activeObjects;

unsigned mzComRegisterActiveObject(char const* progId, mzIUnknown* object, unsigned& cookie) try {
    cookie = 0;
    if (progId == nullptr || *progId == 0 || object == nullptr) {
        return mzFailure;
    }
    cookie = velk::core::enter(progId, object);
    return mzSuccess;
} catch (...) {
    return mzFailure;
}

unsigned mzComRevokeActiveObject(unsigned cookie) {
    mzComPtrC revoked;  // released after the lock
    auto& active = activeObjects();
    std::lock_guard const hold(active.mutex);
    auto const place = std::ranges::find(active.list, cookie, &velk::core::ActiveObject::cookie);
    if (place == active.list.end()) {
        return mzFailure;
    }
    revoked = std::move(place->object);
    active.list.erase(place);
    return mzSuccess;
}
