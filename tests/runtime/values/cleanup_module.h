#pragma once

#include <string>

#include "host/export.h"

/// Clean-ups that a second module registers.
#if defined(_WIN32)
#define CLEANUP_MODULE_API __declspec(dllexport)
#else
#define CLEANUP_MODULE_API VELK_HOST_EXPORT
#endif

/// Registers a clean-up that appends "module" to `log`.
CLEANUP_MODULE_API void registerModuleCleanup(std::string& log);
/// The address of a function of the module.
CLEANUP_MODULE_API void* moduleAddress();
