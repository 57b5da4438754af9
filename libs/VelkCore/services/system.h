/// What the services ask of the system.
#pragma once

#include <string_view>

namespace velk::core {

/// A variable of the environment, or null when it is not set or does not count.
char const* logSetting(char const* name);

/// Appends one line, its line feed included, to the configured output, which is
/// open only meanwhile, so that several processes can share it. A line that
/// cannot be written is dropped.
void writeLogLine(std::string_view line);

/// Identifies the loaded module (program or shared library) that contains the
/// address; null when none does.
void const* moduleOfAddress(void const* address) noexcept;

}  // namespace velk::core
