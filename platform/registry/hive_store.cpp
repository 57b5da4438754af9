#include "platform/registry/hive_store.h"

#include <chrono>

namespace velk::platform::registry {
namespace {

std::int64_t currentFileTime() {
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
    // From 1 January 1601 to 1 January 1970.
    constexpr std::int64_t toUnixEpoch = 116'444'736'000'000'000;
    auto const now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<Ticks>(now).count() + toUnixEpoch;
}

// A key and everything below it, whatever the depth. UNION, and not UNION ALL,
// so that a damaged tree that runs in a circle comes to an end.
constexpr char const* removeValuesBelow =
    "WITH RECURSIVE below(id) AS (SELECT ?1 UNION"
    " SELECT keys.id FROM keys JOIN below ON keys.parent = below.id)"
    " DELETE FROM data WHERE key IN below";
constexpr char const* removeKeysBelow =
    "WITH RECURSIVE below(id) AS (SELECT id FROM keys WHERE parent = ?1 UNION"
    " SELECT keys.id FROM keys JOIN below ON keys.parent = below.id)"
    " DELETE FROM keys WHERE id IN below";

}  // namespace

void HiveStore::addFirstKeys(bool ofMachine) {
    using Names = std::initializer_list<char16_t const*>;
    database_->run("INSERT INTO keys(parent, folded, name, depth, written) VALUES(0,'','',0,?)",
                   currentFileTime());
    auto const add = [&](Names names) {
        KeyId key = rootKey;
        for (auto const* name : names) key = addChild(key, Name(name), u"");
    };
    add({u"Software", u"Classes"});
    if (ofMachine) add({u"System", u"CurrentControlSet", u"Hardware Profiles", u"Current"});
}

std::optional<KeyFacts> HiveStore::facts(KeyId key) {
    auto query = database_->query("SELECT class, written, depth FROM keys WHERE id = ?", key);
    if (!query.step()) return std::nullopt;
    return KeyFacts{query.text(0), query.number(1), static_cast<int>(query.number(2))};
}

std::optional<KeyId> HiveStore::child(KeyId key, Name const& name) {
    auto query =
        database_->query("SELECT id FROM keys WHERE parent = ? AND folded = ?", key, name.folded);
    if (!query.step()) return std::nullopt;
    return query.number(0);
}

std::optional<KeyId> HiveStore::walk(KeyId key, std::span<Name const> path) {
    std::optional<KeyId> at = key;
    for (auto name = path.begin(); at && name != path.end(); ++name) at = child(*at, *name);
    return at;
}

std::vector<ListedName> HiveStore::list(char const* sql, KeyId key) {
    auto query = database_->query(sql, key);
    std::vector<ListedName> names;
    while (query.step()) {
        names.push_back({query.text(0), std::string(query.bytes(1)),
                         static_cast<std::size_t>(query.number(2))});
    }
    return names;
}

std::vector<ListedName> HiveStore::children(KeyId key) {
    return list("SELECT name, folded, 0 FROM keys WHERE parent = ? ORDER BY folded", key);
}

KeyId HiveStore::addChild(KeyId key, Name const& name, std::u16string_view keyClass) {
    auto const parent = facts(key);
    require(parent.has_value(), ERROR_KEY_DELETED);
    require(parent->depth < deepestKey, ERROR_INVALID_PARAMETER);
    database_->run(
        "INSERT INTO keys(parent, folded, name, class, depth, written) VALUES(?,?,?,?,?,?)", key,
        name.folded, name.text, keyClass, parent->depth + 1, currentFileTime());
    KeyId const made = database_->lastInsertedId();
    touch(key);
    return made;
}

bool HiveStore::hasChildren(KeyId key) {
    return database_->query("SELECT 1 FROM keys WHERE parent = ? LIMIT 1", key).step();
}

void HiveStore::removeTree(KeyId key) {
    auto query = database_->query("SELECT parent FROM keys WHERE id = ?", key);
    require(query.step(), ERROR_KEY_DELETED);
    KeyId const parent = query.number(0);
    clear(key);
    database_->run("DELETE FROM keys WHERE id = ?", key);
    touch(parent);
}

void HiveStore::clear(KeyId key) {
    touch(key);
    database_->run(removeValuesBelow, key);
    database_->run(removeKeysBelow, key);
}

std::optional<ValueContent> HiveStore::value(KeyId key, Name const& name) {
    auto query = database_->query("SELECT type, bytes FROM data WHERE key = ? AND folded = ?", key,
                                  name.folded);
    if (!query.step()) return std::nullopt;
    return ValueContent{static_cast<DWORD>(query.number(0)), std::string(query.bytes(1))};
}

std::vector<ListedName> HiveStore::values(KeyId key) {
    return list("SELECT name, folded, length(bytes) FROM data WHERE key = ? ORDER BY folded", key);
}

void HiveStore::setValue(KeyId key, Name const& name, DWORD type, std::string_view bytes) {
    touch(key);
    // The name keeps the case in which the value was first set.
    database_->run(
        "INSERT INTO data(key, folded, name, type, bytes) VALUES(?,?,?,?,?)"
        " ON CONFLICT(key, folded) DO UPDATE SET type = excluded.type, bytes = excluded.bytes",
        key, name.folded, name.text, type, bytes);
}

bool HiveStore::removeValue(KeyId key, Name const& name) {
    if (!value(key, name)) {
        require(facts(key).has_value(), ERROR_KEY_DELETED);
        return false;
    }
    database_->run("DELETE FROM data WHERE key = ? AND folded = ?", key, name.folded);
    touch(key);
    return true;
}

void HiveStore::touch(KeyId key) {
    require(facts(key).has_value(), ERROR_KEY_DELETED);
    database_->run("UPDATE keys SET written = ? WHERE id = ?", currentFileTime(), key);
}

}  // namespace velk::platform::registry
