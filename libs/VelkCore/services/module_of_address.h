#pragma once

namespace velk::core {

/// Identifies the loaded module (program or shared library) that contains the
/// address; null when none does.
void const* moduleOfAddress(void const* address) noexcept;

}  // namespace velk::core
