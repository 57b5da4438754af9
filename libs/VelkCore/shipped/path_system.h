#pragma once

#include <filesystem>
#include <optional>

#include <QString>

#include "path_parts.h"

/// What a path means differs from system to system: a file `path_system_x.cpp`
/// stands for each. All functions may be called on any thread.
namespace velk::core {

/// Whether a path that begins with a separator needs no drive before it. Such
/// a system's own paths have no `\` as separator, and case counts in them.
bool rootIsAbsolute();

/// Where the system's file functions find what the path names; nothing when
/// the path is empty, or its drive or share is not known here.
std::optional<std::filesystem::path> locationOf(PathParts const& path);

/// The path that a location has as text.
QString textOf(std::filesystem::path const& location);

/// The path with all that the current directory gives a relative one, cleaned.
PathParts absoluteOf(PathParts const& path);

/// The absolute path without links, as far as it exists; with the drive or
/// share of `path` while it stays below that one's root. Nothing when it
/// cannot be looked up.
std::optional<PathParts> canonicalOf(PathParts const& path);

/// The path on this machine of what a computer shares: empty when the computer
/// is another one, or shares no such folder.
PathParts localPathOf(PathParts const& path);

/// Whether listings leave the file out.
bool isHidden(std::filesystem::path const& location);
/// Whether this process may read, or write, the file or folder.
bool mayRead(std::filesystem::path const& location);
bool mayWrite(std::filesystem::path const& location);
/// Whether this is a link, or another kind of gate, to somewhere else.
bool isLink(std::filesystem::path const& location);
/// Makes an empty file, if none of that name is there.
std::error_code createNewFile(std::filesystem::path const& location);

}  // namespace velk::core
