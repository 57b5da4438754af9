#include "platform/registry/key_view.h"

#include <algorithm>

#include <unistd.h>

namespace velk::platform::registry {
namespace {

constexpr HiveName bothHives[] = {HiveName::user, HiveName::machine};

KeyPath const& classesRoot() {
    static KeyPath const path = {Name(u"Software"), Name(u"Classes")};
    return path;
}

KeyPath const& currentConfiguration() {
    static KeyPath const path = {Name(u"System"), Name(u"CurrentControlSet"),
                                 Name(u"Hardware Profiles"), Name(u"Current")};
    return path;
}

/// The current user's name below HKEY_USERS: the published form of a Unix
/// user's security identifier.
std::u16string userName() {
    std::u16string name = u"S-1-22-1-";
    for (char const digit : std::to_string(geteuid())) name.push_back(static_cast<char16_t>(digit));
    return name;
}

KeyPath joined(KeyPath const& front, std::span<Name const> back) {
    KeyPath path = front;
    path.insert(path.end(), back.begin(), back.end());
    return path;
}

std::optional<KeyId> findClass(HiveName hive, KeyPath const& classesPath) {
    HiveSession session(hive, Purpose::read);
    auto const root = session.walk(rootKey, classesRoot());
    return root ? session.walk(*root, classesPath) : std::nullopt;
}

void requireExistence(Place const& place) {
    HiveSession session(place.hive, Purpose::read);
    require(session.facts(place.key).has_value(), ERROR_KEY_DELETED);
}

/// The keys of a path below Software\Classes, the user's first and no more than
/// wanted, and the status of a hive that cannot be read: it hides none of the
/// other's.
std::pair<std::vector<Place>, LSTATUS> readableClasses(KeyPath const& classesPath,
                                                       std::size_t wanted = 2) {
    std::vector<Place> places;
    LSTATUS unreadable = ERROR_SUCCESS;
    for (auto const hive : bothHives) {
        if (places.size() == wanted) break;
        try {
            if (auto const key = findClass(hive, classesPath)) places.push_back({hive, *key});
        } catch (Failure const& failure) {
            if (failure.code == ERROR_NOT_ENOUGH_MEMORY) throw;
            unreadable = failure.code;
        }
    }
    return {std::move(places), unreadable};
}

/// The same; a hive that cannot be read is a failure where nothing is found.
std::vector<Place> findClasses(KeyPath const& classesPath, std::size_t wanted = 2) {
    auto [places, unreadable] = readableClasses(classesPath, wanted);
    require(!places.empty() || unreadable == ERROR_SUCCESS, unreadable);
    return places;
}

std::optional<KeyView> findPlain(Place start, std::span<Name const> path) {
    HiveSession session(start.hive, Purpose::read);
    require(session.facts(start.key).has_value(), ERROR_KEY_DELETED);
    auto const key = session.walk(start.key, path);
    if (!key) return std::nullopt;
    return KeyView{KeyView::Kind::plain, {start.hive, *key}, {}};
}

/// The first step below HKEY_USERS leads into the user's hive.
std::optional<KeyView> enterUsers(Name const& name) {
    auto const own = userName();
    if (name.folded == Name(own).folded) return KeyView{};
    if (name.folded == Name(own + u"_Classes").folded) return findPlain({}, classesRoot());
    return std::nullopt;
}

/// Where a new key of a merged path goes: the machine's hive, unless what
/// exists of the path already is the user's alone.
HiveName hiveForNewClass(KeyPath const& classesPath) {
    for (auto front = classesPath; !front.empty(); front.pop_back()) {
        auto const places = readableClasses(front).first;
        if (!places.empty()) return places.back().hive;
    }
    return HiveName::machine;
}

CreatedKey createPlain(Place start, std::span<Name const> path, std::u16string_view keyClass) {
    HiveSession session(start.hive, Purpose::write);
    require(session.facts(start.key).has_value(), ERROR_KEY_DELETED);
    // What stands directly below HKEY_LOCAL_MACHINE is the system's alone.
    bool const belowMachine = start.hive == HiveName::machine && start.key == rootKey;
    require(!belowMachine || session.child(rootKey, path.front()), ERROR_INVALID_PARAMETER);
    KeyId key = start.key;
    bool made = false;
    for (std::size_t step = 0; step < path.size(); ++step) {
        auto const there = session.child(key, path[step]);
        bool const last = step + 1 == path.size();
        made = !there;
        key = there ? *there : session.addChild(key, path[step], last ? keyClass : u"");
    }
    session.commit();
    return {KeyView{KeyView::Kind::plain, {start.hive, key}, {}}, made};
}

/// Adds the names that are not there yet; the result is in order.
void merge(std::vector<ListedName>& names, std::vector<ListedName> const& more) {
    auto const before = [](ListedName const& left, ListedName const& right) {
        return left.folded < right.folded;
    };
    auto const same = [](ListedName const& left, ListedName const& right) {
        return left.folded == right.folded;
    };
    auto const middle = static_cast<std::ptrdiff_t>(names.size());
    names.insert(names.end(), more.begin(), more.end());
    std::inplace_merge(names.begin(), names.begin() + middle, names.end(), before);
    names.erase(std::unique(names.begin(), names.end(), same), names.end());
}

}  // namespace

KeyView predefinedView(DWORD number) {
    auto const is = [&](HKEY handle) {
        return number == static_cast<DWORD>(reinterpret_cast<ULONG_PTR>(handle));
    };
    if (is(HKEY_CLASSES_ROOT)) {
        return {KeyView::Kind::merged, {}, {}};
    }
    if (is(HKEY_CURRENT_USER)) return {KeyView::Kind::plain, {HiveName::user, rootKey}, {}};
    if (is(HKEY_LOCAL_MACHINE)) return {KeyView::Kind::plain, {HiveName::machine, rootKey}, {}};
    if (is(HKEY_USERS)) return {KeyView::Kind::users, {}, {}};
    if (is(HKEY_CURRENT_CONFIG)) {
        auto const view = findPlain({HiveName::machine, rootKey}, currentConfiguration());
        require(view.has_value(), ERROR_FILE_NOT_FOUND);
        return *view;
    }
    fail(ERROR_INVALID_HANDLE);
}

std::vector<Place> placesOf(KeyView const& view) {
    if (view.kind == KeyView::Kind::users) return {};
    bool const isMerged = view.kind == KeyView::Kind::merged;
    auto places = isMerged ? findClasses(view.classesPath) : std::vector{view.place};
    // The root of all classes is there always; what was found by its path is too.
    bool const isThere =
        isMerged && (view.classesPath.empty() || (!places.empty() && places.front() == view.place));
    if (!isThere) requireExistence(view.place);
    return places;
}

std::optional<KeyView> findBelow(KeyView const& view, KeyPath const& path) {
    if (view.kind == KeyView::Kind::plain) return findPlain(view.place, path);
    if (view.kind == KeyView::Kind::merged) {
        if (!view.classesPath.empty()) requireExistence(view.place);
        auto const full = joined(view.classesPath, path);
        auto const places = findClasses(full, 1);
        if (places.empty()) return std::nullopt;
        return KeyView{KeyView::Kind::merged, places.front(), full};
    }
    if (path.empty()) return view;
    auto const user = enterUsers(path.front());
    return user ? findPlain(user->place, std::span(path).subspan(1)) : std::nullopt;
}

CreatedKey createBelow(KeyView const& view, KeyPath const& path, std::u16string_view keyClass) {
    if (view.kind != KeyView::Kind::merged) {
        if (auto const existing = findBelow(view, path)) return {*existing, false};
        if (view.kind == KeyView::Kind::plain) return createPlain(view.place, path, keyClass);
        auto const user = enterUsers(path.front());
        require(user.has_value(), ERROR_INVALID_PARAMETER);
        return createPlain(user->place, std::span(path).subspan(1), keyClass);
    }
    if (!view.classesPath.empty()) requireExistence(view.place);
    KeyPath const full = joined(view.classesPath, path);
    // Of a new class a hive that cannot be read has nothing to say.
    auto const places = readableClasses(full, 1).first;
    if (!places.empty()) return {{KeyView::Kind::merged, places.front(), full}, false};
    auto const made =
        createPlain({hiveForNewClass(full), rootKey}, joined(classesRoot(), full), keyClass);
    return {{KeyView::Kind::merged, made.view.place, full}, made.isNew};
}

void refresh(Listing& listing, KeyView const& view, Listed what) {
    auto const places = placesOf(view);
    std::vector<HiveStamp> stamps;
    stamps.reserve(places.size());
    for (auto const& place : places) {
        stamps.push_back(HiveSession(place.hive, Purpose::read).stamp());
    }
    if (!stamps.empty() && stamps == listing.stamps) return;
    listing = {};
    if (view.kind == KeyView::Kind::users && what == Listed::keys) {
        for (auto const& name : {userName(), userName() + u"_Classes"}) {
            listing.names.push_back({name, Name(name).folded, 0});
        }
    }
    for (auto const& place : places) {
        HiveSession session(place.hive, Purpose::read);
        merge(listing.names,
              what == Listed::keys ? session.children(place.key) : session.values(place.key));
    }
    listing.stamps = std::move(stamps);
}

}  // namespace velk::platform::registry
