/// What is wrong with the files of the registry.
#pragma once

#include "windef.h"

/// The hives that this process found not to count, damaged, or held by another
/// process for too long, when it last needed them: a line each, in UTF-8, such
/// as "/home/a/user.db is damaged". Empty when all was well.
///
/// \param capacity  of `text`, in bytes; what does not fit is cut off
/// \return the length of the whole text without its zero. Thread-safe.
EXTERN_C VELK_LAYER_EXPORT DWORD VelkRegistryProblems(char* text, DWORD capacity);
