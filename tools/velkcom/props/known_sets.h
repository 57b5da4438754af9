/// The well-known property sets and their properties.
#pragma once

#include <span>
#include <string_view>

#include <windows.h>

#include <propidl.h>

namespace velk::velkcom {

/// A property whose meaning the set's publisher has fixed.
struct KnownProperty {
    PROPID id;
    char const* name;
    /// What new values are written as.
    VARTYPE type;
};

struct KnownSet {
    FMTID id;
    /// As scripts call it.
    char const* name;
    /// What the command line takes as well.
    char const* shortName;
    /// Whether its properties have names of their own, and numbers mean little.
    bool isNamed;
    std::span<KnownProperty const> properties;

    /// Null for another property.
    KnownProperty const* find(PROPID id) const;
    /// Without regard to the case of ASCII letters.
    KnownProperty const* find(std::string_view name) const;
};

/// In the order in which they are listed.
std::span<KnownSet const> knownSets();

/// Null for another set.
KnownSet const* knownSet(REFFMTID id);

}  // namespace velk::velkcom
