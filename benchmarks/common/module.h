/// The module under measurement.
#pragma once

#include <windows.h>

/// Loads the module that stands beside the program, for the rest of the
/// process. Throws std::runtime_error.
HMODULE loadAdapterModule();
