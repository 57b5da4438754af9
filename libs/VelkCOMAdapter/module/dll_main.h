/// The module's entry point.
#pragma once

#include <windows.h>

/// Attach of the process and of threads: nothing. An ending thread leaves COM
/// where the host runtime entered it. When the process lets the module go, the
/// application thread is stopped and waited for; `reserved` is not null when
/// the whole process ends and the system has ended the other threads already.
/// Always TRUE.
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved);
