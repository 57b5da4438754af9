/// The command "call".
#pragma once

#include <ostream>

#include "command_line.h"

namespace velk::velkcom {

/// Creates the object, follows the member path and prints the last result.
/// Gives the exit code.
int runCall(CallCommand const& command, std::ostream& out, std::ostream& errors);

}  // namespace velk::velkcom
