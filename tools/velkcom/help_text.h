/// The program's help.
#pragma once

#include <string>

namespace velk::velkcom {

/// Help for a command, or the overview for an empty or unknown one.
std::string helpText(std::string const& topic);

}  // namespace velk::velkcom
