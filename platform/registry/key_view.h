/// Finding keys through what a handle shows.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/registry/open_key.h"

namespace velk::platform::registry {

/// What a predefined handle shows. Fails with ERROR_INVALID_HANDLE for numbers
/// that mean none.
KeyView predefinedView(DWORD number);

/// The places that a view shows, the one that counts first in front: one for
/// a plain key, one or two for a merged one, none for HKEY_USERS. Fails with
/// ERROR_KEY_DELETED when the key of the view is gone.
std::vector<Place> placesOf(KeyView const& view);

/// The key at a path below a view, or nothing when there is none.
std::optional<KeyView> findBelow(KeyView const& view, KeyPath const& path);

/// Runs `body`, which works on the key at a path below a view. When somebody
/// deletes that key meanwhile it was not found; only the view's own key can be
/// a deleted one.
template <typename Body>
auto atPath(KeyView const& view, KeyPath const& path, Body body) {
    try {
        return body();
    } catch (Failure const& failure) {
        if (failure.code != ERROR_KEY_DELETED || path.empty()) throw;
    }
    placesOf(view);
    fail(ERROR_FILE_NOT_FOUND);
}

/// Makes the keys of a path below a view that are missing, the last with the
/// class. Merged keys are made in the machine's hive, unless the deepest key
/// of the path that exists is in the user's alone.
struct CreatedKey {
    KeyView view;
    bool isNew = false;
};
CreatedKey createBelow(KeyView const& view, KeyPath const& path, std::u16string_view keyClass);

/// Takes the subkeys or values that a view shows anew, in order, unless the hives
/// are as they were; of two with one name only the user's.
enum class Listed { keys, values };
void refresh(Listing& listing, KeyView const& view, Listed what);

/// The value that a view shows under this name. Fails with ERROR_KEY_DELETED
/// when the key is gone.
std::optional<ValueContent> valueOf(KeyView const& view, Name const& name);

/// Gives bytes to a caller in the published way: `size` is the room in bytes
/// and becomes what is needed; without `data` only that. ERROR_MORE_DATA when
/// the room is too small.
LSTATUS handOut(std::string_view bytes, void* data, LPDWORD size);

}  // namespace velk::platform::registry
