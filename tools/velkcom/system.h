/// What differs between systems for the program.
#pragma once

#include <filesystem>
#include <string>

namespace velk::velkcom {

/// File name of the adapter module.
std::string adapterFileName();

/// A path from UTF-8 text, and back.
std::filesystem::path pathFromUtf8(std::string const& text);
std::string pathToUtf8(std::filesystem::path const& path);

}  // namespace velk::velkcom
