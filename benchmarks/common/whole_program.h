/// Programs measured from their start to their end.
#pragma once

#include <string>

/// Runs a command of the shell, its output thrown away. Throws
/// std::runtime_error when it fails.
void runProgram(std::string const& command);

/// Adds the measurement of such a command, which runs once a repetition.
void registerProgram(char const* name, std::string const& command);
