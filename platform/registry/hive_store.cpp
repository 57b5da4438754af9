#include "platform/registry/hive_store.h"

namespace velk::platform::registry {
namespace {

std::string_view foldedOf(Name const& name) {
    return name.folded;
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

std::optional<KeyFacts> HiveStore::facts(KeyId key) {
    auto query = database_.statement("SELECT class, written, depth FROM keys WHERE id = ?");
    if (!query.bind(key).step()) return std::nullopt;
    return KeyFacts{query.text(0), query.number(1), static_cast<int>(query.number(2))};
}

std::optional<KeyId> HiveStore::child(KeyId key, Name const& name) {
    auto query = database_.statement("SELECT id FROM keys WHERE parent = ? AND folded = ?");
    if (!query.bind(key).bind(foldedOf(name)).step()) return std::nullopt;
    return query.number(0);
}

std::optional<KeyId> HiveStore::walk(KeyId key, std::span<Name const> path) {
    std::optional<KeyId> at = key;
    for (auto const& name : path) {
        at = child(*at, name);
        if (!at) break;
    }
    return at;
}

std::vector<ListedName> HiveStore::list(Statement& query) {
    std::vector<ListedName> names;
    while (query.step()) {
        names.push_back({query.text(0), std::string(query.bytes(1)),
                         static_cast<std::size_t>(query.number(2))});
    }
    return names;
}

std::vector<ListedName> HiveStore::children(KeyId key) {
    auto query =
        database_.statement("SELECT name, folded, 0 FROM keys WHERE parent = ? ORDER BY folded");
    return list(query.bind(key));
}

KeyId HiveStore::addChild(KeyId key, Name const& name, std::u16string_view keyClass) {
    auto const parent = facts(key);
    failIf(!parent, ERROR_KEY_DELETED);
    failIf(parent->depth >= deepestKey, ERROR_INVALID_PARAMETER);
    database_
        .statement(
            "INSERT INTO keys(parent, folded, name, class, depth, written)"
            " VALUES(?,?,?,?,?,?)")
        .bind(key)
        .bind(foldedOf(name))
        .bind(std::u16string_view(name.text))
        .bind(keyClass)
        .bind(parent->depth + 1)
        .bind(currentFileTime())
        .run();
    KeyId const made = database_.lastInsertedId();
    touch(key);
    return made;
}

bool HiveStore::hasChildren(KeyId key) {
    return database_.statement("SELECT 1 FROM keys WHERE parent = ? LIMIT 1").bind(key).step();
}

KeyId HiveStore::parentOf(KeyId key) {
    auto query = database_.statement("SELECT parent FROM keys WHERE id = ?");
    failIf(!query.bind(key).step(), ERROR_KEY_DELETED);
    return query.number(0);
}

void HiveStore::removeTree(KeyId key) {
    KeyId const parent = parentOf(key);
    clear(key);
    database_.statement("DELETE FROM keys WHERE id = ?").bind(key).run();
    touch(parent);
}

void HiveStore::clear(KeyId key) {
    touch(key);
    database_.statement(removeValuesBelow).bind(key).run();
    database_.statement(removeKeysBelow).bind(key).run();
}

std::optional<ValueContent> HiveStore::value(KeyId key, Name const& name) {
    auto query = database_.statement("SELECT type, bytes FROM data WHERE key = ? AND folded = ?");
    if (!query.bind(key).bind(foldedOf(name)).step()) return std::nullopt;
    return ValueContent{static_cast<DWORD>(query.number(0)), std::string(query.bytes(1))};
}

std::vector<ListedName> HiveStore::values(KeyId key) {
    auto query = database_.statement(
        "SELECT name, folded, length(bytes) FROM data WHERE key = ? ORDER BY folded");
    return list(query.bind(key));
}

void HiveStore::setValue(KeyId key, Name const& name, DWORD type, std::string_view bytes) {
    touch(key);
    // The name keeps the case in which the value was first set.
    database_
        .statement(
            "INSERT INTO data(key, folded, name, type, bytes) VALUES(?,?,?,?,?)"
            " ON CONFLICT(key, folded)"
            " DO UPDATE SET type = excluded.type, bytes = excluded.bytes")
        .bind(key)
        .bind(foldedOf(name))
        .bind(std::u16string_view(name.text))
        .bind(static_cast<std::int64_t>(type))
        .bind(bytes)
        .run();
}

bool HiveStore::removeValue(KeyId key, Name const& name) {
    if (!value(key, name)) {
        failIf(!facts(key), ERROR_KEY_DELETED);
        return false;
    }
    database_.statement("DELETE FROM data WHERE key = ? AND folded = ?")
        .bind(key)
        .bind(foldedOf(name))
        .run();
    touch(key);
    return true;
}

void HiveStore::touch(KeyId key) {
    failIf(!facts(key), ERROR_KEY_DELETED);
    database_.statement("UPDATE keys SET written = ? WHERE id = ?")
        .bind(currentFileTime())
        .bind(key)
        .run();
}

}  // namespace velk::platform::registry
