/// The objects that stand for their classes while they run.
#include <algorithm>
#include <mutex>
#include <vector>

#include <oleauto.h>

#include "platform/com/apartments.h"
#include "platform/com/held_object.h"
#include "platform/system/immortal.h"

namespace velk::platform::com {
namespace {

struct ActiveObject {
    DWORD registration = 0;
    CLSID id{};
    IUnknown* object = nullptr;
    /// Empty for a weak registration.
    HeldObject<> reference;
};

/// A weakly registered object may go as soon as its registration is revoked.
/// Therefore references are added under the lock; nothing else is done to
/// foreign objects there.
class ActiveObjects {
  public:
    /// Whether the class had one before is left in `another`.
    DWORD add(ActiveObject fresh, bool& another) {
        std::lock_guard const guard(lock_);
        another = find(fresh.id) != objects_.end();
        fresh.registration = ++lastRegistration_;
        objects_.push_back(std::move(fresh));
        return lastRegistration_;
    }

    /// Takes one out, for the caller to let go of; an empty one when unknown.
    ActiveObject remove(DWORD registration) {
        std::lock_guard const guard(lock_);
        auto const found = std::find_if(
            objects_.begin(), objects_.end(),
            [registration](auto const& active) { return active.registration == registration; });
        if (found == objects_.end()) return {};
        ActiveObject taken = std::move(*found);
        objects_.erase(found);
        return taken;
    }

    /// With a reference for the caller; null when there is none.
    IUnknown* get(REFCLSID id) {
        std::lock_guard const guard(lock_);
        auto const found = find(id);
        if (found == objects_.end()) return nullptr;
        found->object->AddRef();
        return found->object;
    }

  private:
    std::vector<ActiveObject>::iterator find(REFCLSID id) {
        return std::find_if(objects_.begin(), objects_.end(),
                            [&id](auto const& active) { return active.id == id; });
    }

    std::mutex lock_;
    // In the order of registration. A process has a handful.
    std::vector<ActiveObject> objects_;
    DWORD lastRegistration_ = 0;
};

// Never destroyed: what is registered stays with the process.
ActiveObjects& activeObjects() {
    static Immortal<ActiveObjects> all;
    return *all;
}

}  // namespace
}  // namespace velk::platform::com

using namespace velk::platform;
using namespace velk::platform::com;

HRESULT RegisterActiveObject(IUnknown* object, REFCLSID id, DWORD flags, DWORD* registration) {
    if (object == nullptr || registration == nullptr) return E_INVALIDARG;
    *registration = 0;
    if (!isInApartment()) return CO_E_NOTINITIALIZED;
    return guarded([&] {
        ActiveObject fresh;
        fresh.id = id;
        // The object's identity, by whichever interface it was given.
        auto** const identity = fresh.reference.target();
        check(
            askForObject(identity, [&] { return object->QueryInterface(IID_IUnknown, identity); }));
        fresh.object = fresh.reference.get();
        if ((flags & ACTIVEOBJECT_WEAK) != 0) HeldObject<>(std::move(fresh.reference));
        bool another = false;
        *registration = activeObjects().add(std::move(fresh), another);
        return another ? MK_S_MONIKERALREADYREGISTERED : S_OK;
    });
}

HRESULT RevokeActiveObject(DWORD registration, void*) {
    return guarded(
        [&] { require(activeObjects().remove(registration).object != nullptr, E_INVALIDARG); });
}

HRESULT GetActiveObject(REFCLSID id, void*, IUnknown** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (!isInApartment()) return CO_E_NOTINITIALIZED;
    return guarded([&] {
        *object = activeObjects().get(id);
        require(*object != nullptr, MK_E_UNAVAILABLE);
    });
}
