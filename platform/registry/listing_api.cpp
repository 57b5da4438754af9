/// Enumerating subkeys and values, and facts about a key.
#include <algorithm>

#include "platform/registry/key_view.h"

namespace velk::platform::registry {
namespace {

/// The listing of a handle, as fresh as the hives.
Listing const& freshListing(OpenKey& key, Listed what) {
    auto& listing = what == Listed::keys ? key.keyListing : key.valueListing;
    refresh(listing, key.view, what);
    return listing;
}

ListedName entryAt(OpenKey& key, Listed what, DWORD index) {
    std::lock_guard const guard(key.listingLock);
    auto const& names = freshListing(key, what).names;
    require(index < names.size(), ERROR_NO_MORE_ITEMS);
    return names[index];
}

std::vector<ListedName> allEntries(OpenKey& key, Listed what) {
    std::lock_guard const guard(key.listingLock);
    return freshListing(key, what).names;
}

/// Gives a text and its length in units, without the zero that follows it.
/// The room counts that zero.
void handOutText(std::u16string_view text, LPWSTR buffer, LPDWORD capacity) {
    require(text.size() < *capacity, ERROR_MORE_DATA);
    std::copy(text.begin(), text.end(), buffer);
    buffer[text.size()] = 0;
    *capacity = static_cast<DWORD>(text.size());
}

FILETIME fileTime(std::int64_t ticks) {
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

KeyFacts factsOf(KeyView const& view) {
    auto const places = placesOf(view);
    if (places.empty()) return {};
    HiveSession session(places.front().hive, Purpose::read);
    auto facts = session.facts(places.front().key);
    require(facts.has_value(), ERROR_KEY_DELETED);
    return *facts;
}

/// A class may be asked for by its length alone.
void handOutClass(std::u16string_view keyClass, LPWSTR buffer, LPDWORD capacity) {
    if (capacity == nullptr) return;
    if (buffer != nullptr) {
        handOutText(keyClass, buffer, capacity);
    } else {
        *capacity = static_cast<DWORD>(keyClass.size());
    }
}

void put(LPDWORD target, std::size_t value) {
    if (target != nullptr) *target = static_cast<DWORD>(value);
}

template <typename Measure>
void putLongest(LPDWORD target, std::vector<ListedName> const& entries, Measure measure) {
    std::size_t longest = 0;
    for (auto const& entry : entries) longest = std::max<std::size_t>(longest, measure(entry));
    put(target, longest);
}

}  // namespace
}  // namespace velk::platform::registry

using namespace velk::platform;
using namespace velk::platform::registry;

LSTATUS RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD capacity, LPDWORD reserved,
                      LPWSTR keyClass, LPDWORD classCapacity, FILETIME* written) {
    bool const classWithoutRoom = keyClass != nullptr && classCapacity == nullptr;
    if (name == nullptr || capacity == nullptr || reserved != nullptr || classWithoutRoom) {
        return ERROR_INVALID_PARAMETER;
    }
    return answer([&] {
        auto const source = openKey(key);
        source->demand(KEY_ENUMERATE_SUB_KEYS);
        auto const entry = entryAt(*source, Listed::keys, index);
        handOutText(entry.name, name, capacity);
        if (classCapacity == nullptr && written == nullptr) return;
        auto const below = findBelow(source->view, {Name(entry.name)});
        require(below.has_value(), ERROR_NO_MORE_ITEMS);
        auto const facts = factsOf(*below);
        handOutClass(facts.keyClass, keyClass, classCapacity);
        if (written != nullptr) *written = fileTime(facts.written);
    });
}

LSTATUS RegEnumValueW(HKEY key, DWORD index, LPWSTR name, LPDWORD capacity, LPDWORD reserved,
                      LPDWORD type, LPBYTE data, LPDWORD size) {
    bool const dataWithoutRoom = data != nullptr && size == nullptr;
    if (name == nullptr || capacity == nullptr || reserved != nullptr || dataWithoutRoom) {
        return ERROR_INVALID_PARAMETER;
    }
    return answer([&] {
        auto const source = openKey(key);
        source->demand(KEY_QUERY_VALUE);
        auto const entry = entryAt(*source, Listed::values, index);
        auto const value = valueOf(source->view, Name(entry.name));
        require(value.has_value(), ERROR_NO_MORE_ITEMS);
        if (type != nullptr) *type = value->type;
        LSTATUS const status = handOut(value->bytes, data, size);
        handOutText(entry.name, name, capacity);
        if (status != ERROR_SUCCESS) fail(status);
    });
}

LSTATUS RegQueryInfoKeyW(HKEY key, LPWSTR keyClass, LPDWORD classCapacity, LPDWORD reserved,
                         LPDWORD subKeys, LPDWORD longestSubKey, LPDWORD longestClass,
                         LPDWORD values, LPDWORD longestValueName, LPDWORD longestValue,
                         LPDWORD security, FILETIME* written) {
    if (reserved != nullptr || (keyClass != nullptr && classCapacity == nullptr)) {
        return ERROR_INVALID_PARAMETER;
    }
    return answer([&] {
        auto const source = openKey(key);
        source->demand(KEY_QUERY_VALUE);
        auto const facts = factsOf(source->view);
        auto const below = allEntries(*source, Listed::keys);
        auto const own = allEntries(*source, Listed::values);
        put(subKeys, below.size());
        auto const nameOf = [](ListedName const& entry) { return entry.name.size(); };
        putLongest(longestSubKey, below, nameOf);
        // Asked for rarely.
        if (longestClass != nullptr)
            putLongest(longestClass, below, [&](ListedName const& entry) {
                auto const key = findBelow(source->view, {Name(entry.name)});
                return key ? factsOf(*key).keyClass.size() : 0;
            });
        put(values, own.size());
        putLongest(longestValueName, own, nameOf);
        putLongest(longestValue, own, [](ListedName const& entry) { return entry.dataSize; });
        // Protection is that of the hive's file; keys have none of their own.
        put(security, 0);
        if (written != nullptr) *written = fileTime(facts.written);
        handOutClass(facts.keyClass, keyClass, classCapacity);
    });
}
