#include "platform/registry/open_key.h"

#include <shared_mutex>
#include <unordered_map>

#include "platform/registry/key_view.h"
#include "platform/system/immortal.h"
#include "platform/system/live_counts.h"
#include "platform/system/thread_end.h"

namespace velk::platform::registry {
namespace {

/// Handles are numbers that are never used twice, so that one which was
/// closed is noticed for ever.
class Handles {
  public:
    HKEY add(OpenKeyPointer key) {
        std::unique_lock const guard(lock_);
        auto const handle = next_;
        next_ += 4;
        keys_.emplace(handle, std::move(key));
        return reinterpret_cast<HKEY>(handle);
    }

    OpenKeyPointer find(HKEY handle) {
        std::shared_lock const guard(lock_);
        auto const found = keys_.find(reinterpret_cast<std::uintptr_t>(handle));
        return found == keys_.end() ? nullptr : found->second;
    }

    bool remove(HKEY handle) {
        OpenKeyPointer removed;
        std::unique_lock const guard(lock_);
        auto const found = keys_.find(reinterpret_cast<std::uintptr_t>(handle));
        if (found == keys_.end()) return false;
        removed = std::move(found->second);
        keys_.erase(found);
        return true;
    }

  private:
    std::shared_mutex lock_;
    std::unordered_map<std::uintptr_t, OpenKeyPointer> keys_;
    // Clear of the predefined handles, which have 32 bits.
    std::uintptr_t next_ = std::uintptr_t{1} << 33;
};

Handles& handles() {
    static Immortal<Handles> all;
    return *all;
}

/// The predefined handle as a number of 32 bits, or 0. Programs of 64 bits
/// may carry the sign of the published numbers in the upper half.
DWORD predefinedNumber(HKEY handle) {
    auto const number = reinterpret_cast<std::uintptr_t>(handle);
    std::uintptr_t const upperHalf = number >> 32;
    bool const signExtended = upperHalf == 0xFFFFFFFF;
    if (upperHalf != 0 && !signExtended) return 0;
    auto const low = static_cast<DWORD>(number);
    return (low & 0x80000000U) != 0 ? low : 0;
}

}  // namespace

OpenKey::OpenKey(KeyView what, REGSAM granted, bool predefined)
    : view(std::move(what)), access(granted), isPredefined(predefined) {
    if (!isPredefined) countLive(VELK_LIVE_REGISTRY_KEY, 1);
}

OpenKey::~OpenKey() {
    if (!isPredefined) countLive(VELK_LIVE_REGISTRY_KEY, -1);
}

void OpenKey::require(REGSAM rights) const {
    failIf((access & rights) != rights, ERROR_ACCESS_DENIED);
}

bool isPredefined(HKEY handle) {
    return predefinedNumber(handle) != 0;
}

OpenKeyPointer openKey(HKEY handle) {
    watchThreadEnd();
    if (DWORD const number = predefinedNumber(handle)) {
        return std::make_shared<OpenKey>(predefinedView(number), REGSAM{KEY_ALL_ACCESS}, true);
    }
    auto key = handles().find(handle);
    failIf(key == nullptr, ERROR_INVALID_HANDLE);
    return key;
}

HKEY addHandle(OpenKeyPointer key) {
    return handles().add(std::move(key));
}

void removeHandle(HKEY handle) {
    if (isPredefined(handle)) return;
    failIf(!handles().remove(handle), ERROR_INVALID_HANDLE);
}

}  // namespace velk::platform::registry
