/// Names under which the dynamic loader is told of files, and what they mean.
///
/// In a path the loader puts something else in the place of "$ORIGIN", "$LIB"
/// and "$PLATFORM", and there is no way to write them as they are. A folder
/// with such a name is therefore opened, and the loader gets the path
/// "/proc/self/fd/N/file", below which the module's own "$ORIGIN" works too.
/// The folder stays open: the loader keeps the name.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velk::platform {

/// The name by which the dynamic loader finds the file of this absolute path;
/// nothing when the file's own name, or a folder that is not there, leaves
/// none. Thread-safe.
std::optional<std::string> loaderNameOf(std::string const& path);

/// The path that a name of the dynamic loader stands for. Thread-safe.
std::string pathOfLoaderName(std::string_view name);

}  // namespace velk::platform
