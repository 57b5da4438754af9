/// What differs between systems for the program.
#pragma once

#include <filesystem>
#include <ostream>
#include <string>

namespace velk::velkcom {

/// File name of the adapter module.
std::string adapterFileName();

/// A path from UTF-8 text, and back.
std::filesystem::path pathFromUtf8(std::string const& text);
std::string pathToUtf8(std::filesystem::path const& path);

/// The path as it is to be loaded from: absolute, and of the same file.
std::filesystem::path absolutePath(std::filesystem::path const& path);

/// Whether COM looks past what is registered for the user in programs with the
/// rights of this one.
bool usersClassesAreIgnored();

/// Whether people read a stream on a terminal; false for all but the program's
/// own output and errors.
bool isTerminal(std::ostream const& stream);

/// What is wrong with files of the registry that were needed, a line each in
/// UTF-8; empty when nothing is, or the system does not tell.
std::string registryProblems();

/// Of the terminal of the program's errors, in characters; 80 when it does not
/// tell.
int terminalWidth();

}  // namespace velk::velkcom
