/// The trace, which environment variables switch on.
///
/// VELK_TRACE_LEVEL is the threshold: records of this level and above are
/// written. VELK_TRACE_FILE names the regular file that lines are appended to,
/// made with mode 0600 where it is missing; without it they go to the standard
/// error output. Programs that run with more rights than their user write none.
#pragma once

#include "windef.h"

/// A variable that configures this process, or null when it is not set or does
/// not count. Valid until somebody changes the environment.
EXTERN_C VELK_LAYER_EXPORT char const* VelkSetting(char const* name);

/// Appends one line, whatever its level; `size` bytes with their line feed. What
/// cannot be written is dropped, without waiting. Thread-safe.
EXTERN_C VELK_LAYER_EXPORT void VelkWriteTrace(char const* line, DWORD size);
