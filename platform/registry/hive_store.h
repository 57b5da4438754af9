/// Keys and values inside one hive.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/registry/hive_database.h"
#include "platform/registry/names.h"

namespace velk::platform::registry {

using KeyId = std::int64_t;
inline constexpr KeyId rootKey = 1;

struct KeyFacts {
    std::u16string keyClass;
    std::int64_t written = 0;
    int depth = 0;
};

struct ValueContent {
    DWORD type = 0;
    std::string bytes;
};

/// A name in a listing, with the size of a value's data.
struct ListedName {
    std::u16string name;
    std::string folded;
    std::size_t dataSize = 0;
};

/// What can be done with the content of a hive. Ids that are gone give
/// ERROR_KEY_DELETED in all that changes something.
class HiveStore {
  public:
    explicit HiveStore(HiveDatabase* database) : database_(database) {}

    /// Makes the keys that every hive has. Their ids are the same in each.
    void addFirstKeys(bool ofMachine);

    std::optional<KeyFacts> facts(KeyId key);
    std::optional<KeyId> child(KeyId key, Name const& name);
    /// Follows a path; nothing when a step is missing.
    std::optional<KeyId> walk(KeyId key, std::span<Name const> path);
    std::vector<ListedName> children(KeyId key);

    /// Makes a key that does not exist yet.
    KeyId addChild(KeyId key, Name const& name, std::u16string_view keyClass);
    bool hasChildren(KeyId key);
    /// Removes a key with all that is below it.
    void removeTree(KeyId key);
    /// Removes all that is below a key, and its values.
    void clear(KeyId key);

    std::optional<ValueContent> value(KeyId key, Name const& name);
    std::vector<ListedName> values(KeyId key);
    void setValue(KeyId key, Name const& name, DWORD type, std::string_view bytes);
    /// False when there was no such value.
    bool removeValue(KeyId key, Name const& name);

  protected:
    HiveDatabase* database_;

  private:
    void touch(KeyId key);
    std::vector<ListedName> list(char const* sql, KeyId key);
};

}  // namespace velk::platform::registry
