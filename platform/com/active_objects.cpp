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

HRESULT registerActive(IUnknown& object, REFCLSID id, bool weak, DWORD& registration) {
    ActiveObject fresh;
    fresh.id = id;
    // The object's identity, by whichever interface it was given.
    HRESULT const result = object.QueryInterface(IID_IUnknown, fresh.reference.target());
    if (FAILED(result)) return result;
    fresh.object = fresh.reference.get();
    if (fresh.object == nullptr) return E_NOINTERFACE;
    if (weak) HeldObject<>(std::move(fresh.reference));
    bool another = false;
    registration = activeObjects().add(std::move(fresh), another);
    return another ? MK_S_MONIKERALREADYREGISTERED : S_OK;
}

}  // namespace
}  // namespace velk::platform::com

using namespace velk::platform::com;

HRESULT RegisterActiveObject(IUnknown* object, REFCLSID id, DWORD flags, DWORD* registration) {
    if (object == nullptr || registration == nullptr) return E_INVALIDARG;
    *registration = 0;
    if (!isInApartment()) return CO_E_NOTINITIALIZED;
    try {
        return registerActive(*object, id, (flags & ACTIVEOBJECT_WEAK) != 0, *registration);
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

HRESULT RevokeActiveObject(DWORD registration, void*) {
    try {
        return activeObjects().remove(registration).object != nullptr ? S_OK : E_INVALIDARG;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

HRESULT GetActiveObject(REFCLSID id, void*, IUnknown** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (!isInApartment()) return CO_E_NOTINITIALIZED;
    try {
        *object = activeObjects().get(id);
        return *object != nullptr ? S_OK : MK_E_UNAVAILABLE;
    } catch (...) {
        return E_UNEXPECTED;
    }
}
