#pragma once

/// Marks of what the shared libraries of the host runtime export. The library
/// that is being built defines VELKCORE_BUILD or VELKGUI_BUILD.
#if defined(_WIN32)
#define VELK_HOST_EXPORT __declspec(dllexport)
#define VELK_HOST_IMPORT __declspec(dllimport)
#else
#define VELK_HOST_EXPORT __attribute__((visibility("default")))
#define VELK_HOST_IMPORT __attribute__((visibility("default")))
#endif

#if defined(VELKCORE_BUILD)
#define VELKCORE_API VELK_HOST_EXPORT
#else
#define VELKCORE_API VELK_HOST_IMPORT
#endif

#if defined(VELKGUI_BUILD)
#define VELKGUI_API VELK_HOST_EXPORT
#else
#define VELKGUI_API VELK_HOST_IMPORT
#endif
