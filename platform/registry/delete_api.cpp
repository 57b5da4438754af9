/// Deleting keys and trees of keys.
#include "platform/registry/key_view.h"

namespace velk::platform::registry {
namespace {

/// What a path below a handle means for deletion.
KeyView viewToDelete(OpenKey const& base, KeyPath const& path) {
    auto const view = findBelow(base.view, path);
    require(view.has_value(), ERROR_FILE_NOT_FOUND);
    bool const isRoot = view->kind == KeyView::Kind::users || view->place.key == rootKey;
    bool const isClassesRoot = view->kind == KeyView::Kind::merged && view->classesPath.empty();
    require(!isRoot && !isClassesRoot, ERROR_ACCESS_DENIED);
    return *view;
}

/// Changes the places of a view, the machine's first: it is the one that may be
/// refused, and then nothing has happened yet.
void changeAll(KeyView const& view, void (HiveStore::*change)(KeyId)) {
    auto places = placesOf(view);
    for (; !places.empty(); places.pop_back()) {
        HiveSession session(places.back().hive, Purpose::write);
        (session.*change)(places.back().key);
        session.commit();
    }
}

}  // namespace
}  // namespace velk::platform::registry

using namespace velk::platform;
using namespace velk::platform::registry;

LSTATUS RegDeleteKeyW(HKEY key, LPCWSTR name) {
    if (name == nullptr) return ERROR_INVALID_PARAMETER;
    return answer([&] {
        auto const base = openKey(key);
        auto const path = splitPath(name);
        atPath(base->view, path, [&] {
            // Of a merged key the user's goes first; the machine's shows then.
            auto const place = placesOf(viewToDelete(*base, path)).front();
            HiveSession session(place.hive, Purpose::write);
            require(!session.hasChildren(place.key), ERROR_ACCESS_DENIED);
            session.removeTree(place.key);
            session.commit();
        });
    });
}

LSTATUS RegDeleteTreeW(HKEY key, LPCWSTR name) {
    return answer([&] {
        auto const base = openKey(key);
        auto const path = splitPath(name);
        if (!path.empty()) {
            return atPath(base->view, path,
                          [&] { changeAll(viewToDelete(*base, path), &HiveStore::removeTree); });
        }
        // Without a name the key itself stays.
        base->demand(KEY_SET_VALUE | KEY_ENUMERATE_SUB_KEYS);
        require(!base->isPredefined, ERROR_ACCESS_DENIED);
        changeAll(base->view, &HiveStore::clear);
    });
}
