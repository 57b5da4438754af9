/// Opening, making and closing keys.
#include "platform/registry/key_view.h"

namespace velk::platform::registry {
namespace {

constexpr REGSAM genericRead = 0x80000000, genericWrite = 0x40000000, genericAll = 0x10000000;
constexpr REGSAM genericExecute = 0x20000000;
// The rights to change a key's protection and owner.
constexpr REGSAM changeProtection = 0x000C0000;
constexpr REGSAM writingRights =
    KEY_SET_VALUE | KEY_CREATE_SUB_KEY | KEY_CREATE_LINK | DELETE | changeProtection;

/// Rights as asked for, with the general ones spelled out.
REGSAM spelledOut(REGSAM asked) {
    REGSAM rights = asked & ~(genericRead | genericWrite | genericAll | genericExecute);
    if ((asked & (genericRead | genericExecute)) != 0) rights |= KEY_READ;
    if ((asked & genericWrite) != 0) rights |= KEY_WRITE;
    if ((asked & genericAll) != 0) rights |= KEY_ALL_ACCESS;
    return rights;
}

bool mayWrite(KeyView const& view) {
    if (view.kind == KeyView::Kind::users) return true;
    return HiveSession(view.place.hive, Purpose::read).isWritable();
}

/// The rights that a new handle gets. Fails with ERROR_ACCESS_DENIED when
/// writing is asked for and the hive does not permit it.
REGSAM grant(KeyView const& view, REGSAM asked) {
    REGSAM const rights = spelledOut(asked);
    if ((rights & MAXIMUM_ALLOWED) != 0) {
        return mayWrite(view) ? REGSAM{KEY_ALL_ACCESS} : REGSAM{KEY_READ};
    }
    require((rights & writingRights) == 0 || mayWrite(view), ERROR_ACCESS_DENIED);
    return rights;
}

HKEY newHandle(KeyView view, REGSAM asked) {
    REGSAM const rights = grant(view, asked);
    return addHandle(std::make_shared<OpenKey>(std::move(view), rights));
}

bool isEmpty(LPCWSTR text) {
    return text == nullptr || *text == 0;
}

}  // namespace
}  // namespace velk::platform::registry

using namespace velk::platform;
using namespace velk::platform::registry;

LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR name, DWORD, REGSAM access, PHKEY result) {
    if (result == nullptr) return ERROR_INVALID_PARAMETER;
    return answer([&] {
        *result = nullptr;
        auto const base = openKey(key);
        if (base->isPredefined && isEmpty(name)) {
            *result = key;
            return;
        }
        auto view = findBelow(base->view, splitPath(name));
        require(view.has_value(), ERROR_FILE_NOT_FOUND);
        *result = newHandle(std::move(*view), access);
    });
}

LSTATUS RegCreateKeyExW(HKEY key, LPCWSTR name, DWORD reserved, LPWSTR keyClass, DWORD options,
                        REGSAM access, SECURITY_ATTRIBUTES const*, PHKEY result,
                        LPDWORD disposition) {
    if (result == nullptr || reserved != 0) return ERROR_INVALID_PARAMETER;
    return answer([&] {
        *result = nullptr;
        require(options == REG_OPTION_NON_VOLATILE, ERROR_INVALID_PARAMETER);
        auto const base = openKey(key);
        std::u16string_view const className = keyClass == nullptr ? u"" : keyClass;
        auto created = createBelow(base->view, splitPath(name), className);
        *result = newHandle(std::move(created.view), access);
        if (disposition != nullptr) {
            *disposition = created.isNew ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
        }
    });
}

LSTATUS RegCloseKey(HKEY key) {
    return answer([&] { removeHandle(key); });
}
