/// What the layer itself says in the trace.
#pragma once

#include <string>

namespace velk::platform {

/// Writes a line about what was refused, at a level above that of any course of
/// events, unless the trace's threshold is higher still.
void trace(std::string const& what);

}  // namespace velk::platform
