/// Setting, reading and deleting values.
#include <cstring>
#include <utility>

#include "platform/registry/key_view.h"

namespace velk::platform::registry {
namespace {

/// The place of a view whose value is meant when one is changed: of a merged
/// key the user's, if there is one.
Place placeToChange(KeyView const& view) {
    auto const places = placesOf(view);
    failIf(places.empty(), ERROR_ACCESS_DENIED);
    return places.front();
}

}  // namespace

std::optional<ValueContent> valueOf(KeyView const& view, Name const& name) {
    for (auto const& place : placesOf(view)) {
        HiveSession session(place.hive, Purpose::read);
        if (auto value = session.value(place.key, name)) return value;
    }
    return std::nullopt;
}

LSTATUS handOut(std::string_view bytes, void* data, LPDWORD size) {
    if (size == nullptr) return ERROR_SUCCESS;
    DWORD const capacity = std::exchange(*size, static_cast<DWORD>(bytes.size()));
    if (data == nullptr) return ERROR_SUCCESS;
    if (capacity < bytes.size()) return ERROR_MORE_DATA;
    if (!bytes.empty()) std::memcpy(data, bytes.data(), bytes.size());
    return ERROR_SUCCESS;
}

}  // namespace velk::platform::registry

using namespace velk::platform::registry;

LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD, DWORD type, BYTE const* data, DWORD size) {
    return answer([&] {
        auto const target = openKey(key);
        target->require(KEY_SET_VALUE);
        failIf(data == nullptr && size != 0, ERROR_NOACCESS);
        failIf(size > longestValue, ERROR_NOT_ENOUGH_MEMORY);
        auto const value = valueName(name);
        auto const place = placeToChange(target->view);
        HiveSession session(place.hive, Purpose::write);
        std::string_view const bytes(reinterpret_cast<char const*>(data), size);
        session.setValue(place.key, value, type, bytes);
        session.commit();
    });
}

LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data,
                         LPDWORD size) {
    if (reserved != nullptr || (data != nullptr && size == nullptr)) return ERROR_INVALID_PARAMETER;
    return answer([&] {
        auto const source = openKey(key);
        source->require(KEY_QUERY_VALUE);
        auto const value = valueOf(source->view, Name(name == nullptr ? u"" : name));
        if (!value) {
            if (data == nullptr && size != nullptr) *size = 0;
            fail(ERROR_FILE_NOT_FOUND);
        }
        if (type != nullptr) *type = value->type;
        if (LSTATUS const status = handOut(value->bytes, data, size)) fail(status);
    });
}

LSTATUS RegDeleteValueW(HKEY key, LPCWSTR name) {
    return answer([&] {
        auto const target = openKey(key);
        target->require(KEY_SET_VALUE);
        Name const value(name == nullptr ? u"" : name);
        for (auto const& place : placesOf(target->view)) {
            // A look first, so that what is not there needs no permission.
            if (!HiveSession(place.hive, Purpose::read).value(place.key, value)) continue;
            HiveSession session(place.hive, Purpose::write);
            if (!session.removeValue(place.key, value)) continue;
            return session.commit();
        }
        fail(ERROR_FILE_NOT_FOUND);
    });
}
