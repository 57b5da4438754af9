/// Setting, reading and deleting values.
#include <cstring>
#include <utility>

#include "platform/registry/key_view.h"
#include "platform/system/environment.h"

namespace velk::platform::registry {
namespace {

/// The place of a view whose value is meant when one is changed: of a merged
/// key the user's, if there is one.
Place placeToChange(KeyView const& view) {
    auto const places = placesOf(view);
    require(!places.empty(), ERROR_ACCESS_DENIED);
    return places.front();
}

/// A text with one zero at its end at least, whatever was stored, and with the
/// environment's variables put into an expandable one.
std::u16string wholeText(ValueContent const& value) {
    bool const expands = value.type == REG_EXPAND_SZ;
    require(expands || value.type == REG_SZ, ERROR_UNSUPPORTED_TYPE);
    auto text = textOf(value.bytes);
    if (expands) {
        auto expanded = withVariables(text.c_str());
        require(expanded.has_value(), ERROR_INVALID_DATA);
        text = std::move(*expanded);
    }
    if (!text.ends_with(u'\0')) text.push_back(u'\0');
    return text;
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

using namespace velk::platform;
using namespace velk::platform::registry;

LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD, DWORD type, BYTE const* data, DWORD size) {
    return answer([&] {
        auto const target = openKey(key);
        target->demand(KEY_SET_VALUE);
        require(data != nullptr || size == 0, ERROR_NOACCESS);
        require(size <= longestValue, ERROR_NOT_ENOUGH_MEMORY);
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
        source->demand(KEY_QUERY_VALUE);
        auto const value = valueOf(source->view, Name(name == nullptr ? u"" : name));
        if (!value) {
            if (data == nullptr && size != nullptr) *size = 0;
            fail(ERROR_FILE_NOT_FOUND);
        }
        if (type != nullptr) *type = value->type;
        return handOut(value->bytes, data, size);
    });
}

LSTATUS RegGetValueW(HKEY key, LPCWSTR subKey, LPCWSTR name, DWORD flags, LPDWORD type, PVOID data,
                     LPDWORD size) {
    bool const dataWithoutRoom = data != nullptr && size == nullptr;
    if (flags != RRF_RT_REG_SZ || dataWithoutRoom) return ERROR_INVALID_PARAMETER;
    return answer([&] {
        auto const base = openKey(key);
        auto const path = splitPath(subKey);
        if (path.empty()) base->demand(KEY_QUERY_VALUE);
        auto const value = atPath(base->view, path, [&] {
            auto const view =
                path.empty() ? std::optional(base->view) : findBelow(base->view, path);
            require(view.has_value(), ERROR_FILE_NOT_FOUND);
            return valueOf(*view, Name(name == nullptr ? u"" : name));
        });
        require(value.has_value(), ERROR_FILE_NOT_FOUND);
        auto const text = wholeText(*value);
        if (type != nullptr) *type = REG_SZ;
        std::string_view const bytes(reinterpret_cast<char const*>(text.data()),
                                     text.size() * sizeof(char16_t));
        return handOut(bytes, data, size);
    });
}

LSTATUS RegDeleteValueW(HKEY key, LPCWSTR name) {
    return answer([&] {
        auto const target = openKey(key);
        target->demand(KEY_SET_VALUE);
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
