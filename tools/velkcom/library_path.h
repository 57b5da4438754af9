/// The place of a type library as people write it.
#pragma once

#include <filesystem>
#include <string>

namespace velk::velkcom {

/// The path of a type library as LoadTypeLib takes it. `text` is the path of a
/// file, in UTF-8; after a module's path may stand a slash or a backslash and
/// the number of one of its libraries.
std::filesystem::path libraryPath(std::string const& text);

}  // namespace velk::velkcom
