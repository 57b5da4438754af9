/// The program as a function.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace velk::velkcom {

/// Runs one command with the arguments after the program's name, in UTF-8.
/// Results go to `out`, messages to `errors`. Gives the exit code: 0 done,
/// 1 failed, 2 not understood.
int runProgram(std::vector<std::string> const& arguments, std::ostream& out, std::ostream& errors);

}  // namespace velk::velkcom
