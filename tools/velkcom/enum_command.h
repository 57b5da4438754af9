#pragma once

#include <ostream>

#include "command_line.h"

namespace velk::velkcom {

/// Prints the value of a constant. Exit code 0, or 1 when there is none.
int runEnum(EnumCommand const& command, std::ostream& out, std::ostream& errors);

}  // namespace velk::velkcom
