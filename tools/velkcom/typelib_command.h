/// The command "typelib".
#pragma once

#include <ostream>

#include "command_line.h"

namespace velk::velkcom {

/// Prints a type library. Gives the exit code.
int runTypelib(TypelibCommand const& command, std::ostream& out, std::ostream& errors);

}  // namespace velk::velkcom
