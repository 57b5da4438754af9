/// The commands "register" and "unregister".
#pragma once

#include <ostream>

#include "command_line.h"

namespace velk::velkcom {

/// Loads the module and calls its registration functions. Gives the exit code.
int runRegister(RegisterCommand const& command, std::ostream& out, std::ostream& errors);

}  // namespace velk::velkcom
