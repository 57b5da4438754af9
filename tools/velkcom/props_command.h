#pragma once

#include <ostream>

#include "command_line.h"

namespace velk::velkcom {

/// Lists or changes the property sets of documents. Exit code 0, or 1 when a
/// document cannot be read or changed, or has no such property.
int runProps(PropsCommand const& command, std::ostream& out, std::ostream& errors);

}  // namespace velk::velkcom
