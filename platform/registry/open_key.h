/// Open keys, their handles, and what they stand for.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/registry/hive.h"
#include "platform/registry/names.h"

namespace velk::platform::registry {

/// A key in a hive.
struct Place {
    HiveName hive = HiveName::user;
    KeyId key = rootKey;
    bool operator==(Place const&) const = default;
};

/// What a handle stands for.
struct KeyView {
    enum class Kind {
        /// One key of one hive.
        plain,
        /// A key below HKEY_CLASSES_ROOT: the user's and the machine's key of
        /// one path below Software\Classes, seen as one.
        merged,
        /// HKEY_USERS, which has no place of its own.
        users
    };
    Kind kind = Kind::plain;
    /// The key itself; of a merged one the user's, if there is one.
    Place place;
    /// The path below Software\Classes; merged keys only.
    KeyPath classesPath;
};

/// Names listed once for the calls that ask for them one by one. Taken anew
/// when a hive has changed since.
struct Listing {
    std::vector<HiveStamp> stamps;
    std::vector<ListedName> names;
};

struct OpenKey {
    KeyView view;
    REGSAM access = 0;
    bool isPredefined = false;
    std::mutex listingLock;
    Listing keyListing;
    Listing valueListing;

    OpenKey(KeyView what, REGSAM granted, bool predefined = false);
    ~OpenKey();
    OpenKey(OpenKey const&) = delete;
    OpenKey& operator=(OpenKey const&) = delete;

    /// Fails with ERROR_ACCESS_DENIED unless all of these rights were granted.
    void demand(REGSAM rights) const;
};
using OpenKeyPointer = std::shared_ptr<OpenKey>;

/// The key of a handle, predefined ones included. Fails with
/// ERROR_INVALID_HANDLE for anything else.
OpenKeyPointer openKey(HKEY handle);

/// Gives a key a handle.
HKEY addHandle(OpenKeyPointer key);

/// Takes a handle back; does nothing for predefined ones. Fails with
/// ERROR_INVALID_HANDLE for what is none.
void removeHandle(HKEY handle);

bool isPredefined(HKEY handle);

}  // namespace velk::platform::registry
