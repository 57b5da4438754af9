#include "platform/registry/open_key.h"

#include "platform/registry/key_view.h"
#include "platform/system/handle_table.h"
#include "platform/system/immortal.h"
#include "platform/system/live_counts.h"
#include "platform/system/thread_end.h"

namespace velk::platform::registry {
namespace {

HandleTable<OpenKey>& handles() {
    static Immortal<HandleTable<OpenKey>> all;
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

void OpenKey::demand(REGSAM rights) const {
    require((access & rights) == rights, ERROR_ACCESS_DENIED);
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
    require(key != nullptr, ERROR_INVALID_HANDLE);
    return key;
}

HKEY addHandle(OpenKeyPointer key) {
    return static_cast<HKEY>(handles().add(std::move(key)));
}

void removeHandle(HKEY handle) {
    if (isPredefined(handle)) return;
    require(handles().remove(handle) != nullptr, ERROR_INVALID_HANDLE);
}

}  // namespace velk::platform::registry
