/// How the test servers export their entry points.
#pragma once

#ifdef _WIN32
#define VELK_TEST_EXPORT extern "C" __attribute__((dllexport))
#else
#define VELK_TEST_EXPORT extern "C" __attribute__((visibility("default")))
#endif
