/// Modules, their resources, volumes, the thread's last error and locale, and time.
#pragma once

#include "windef.h"
#include "winerror.h"

#define DLL_PROCESS_DETACH 0
#define DLL_PROCESS_ATTACH 1
#define DLL_THREAD_ATTACH 2
#define DLL_THREAD_DETACH 3
#define GET_MODULE_HANDLE_EX_FLAG_PIN 0x1
#define GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT 0x2
#define GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS 0x4
#define FILE_CASE_SENSITIVE_SEARCH 0x1
#define FILE_CASE_PRESERVED_NAMES 0x2
#define FILE_UNICODE_ON_DISK 0x4
#define FILE_READ_ONLY_VOLUME 0x80000
#define LOAD_LIBRARY_AS_DATAFILE 0x2
#define LOAD_WITH_ALTERED_SEARCH_PATH 0x8
#define MAKEINTRESOURCEW(id) \
    (reinterpret_cast<LPWSTR>(static_cast<ULONG_PTR>(static_cast<WORD>(id))))
#define IS_INTRESOURCE(name) ((reinterpret_cast<ULONG_PTR>(name) >> 16) == 0)

EXTERN_C WINBASEAPI DWORD WINAPI GetLastError();
EXTERN_C WINBASEAPI void WINAPI SetLastError(DWORD error);
EXTERN_C WINBASEAPI LCID WINAPI GetThreadLocale();
EXTERN_C WINBASEAPI BOOL WINAPI SetThreadLocale(LCID lcid);
EXTERN_C WINBASEAPI LCID WINAPI GetUserDefaultLCID();
EXTERN_C WINBASEAPI LCID WINAPI GetSystemDefaultLCID();
EXTERN_C WINBASEAPI DWORD WINAPI GetCurrentThreadId();

EXTERN_C WINBASEAPI HMODULE WINAPI LoadLibraryW(LPCWSTR path);
EXTERN_C WINBASEAPI HMODULE WINAPI LoadLibraryExW(LPCWSTR path, HANDLE file, DWORD flags);
EXTERN_C WINBASEAPI BOOL WINAPI FreeLibrary(HMODULE module);
EXTERN_C WINBASEAPI HMODULE WINAPI GetModuleHandleW(LPCWSTR name);
EXTERN_C WINBASEAPI BOOL WINAPI GetModuleHandleExW(DWORD flags, LPCWSTR nameOrAddress,
                                                   HMODULE* module);
EXTERN_C WINBASEAPI DWORD WINAPI GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD capacity);
EXTERN_C WINBASEAPI FARPROC WINAPI GetProcAddress(HMODULE module, LPCSTR name);
EXTERN_C WINBASEAPI HRSRC WINAPI FindResourceW(HMODULE module, LPCWSTR name, LPCWSTR type);
EXTERN_C WINBASEAPI HGLOBAL WINAPI LoadResource(HMODULE module, HRSRC resource);
EXTERN_C WINBASEAPI LPVOID WINAPI LockResource(HGLOBAL resource);
EXTERN_C WINBASEAPI DWORD WINAPI SizeofResource(HMODULE module, HRSRC resource);

/// Drives and shares stand in a table in the registry (velk_paths.h).
EXTERN_C WINBASEAPI BOOL WINAPI GetVolumeInformationW(LPCWSTR root, LPWSTR label, DWORD labelSize,
                                                      LPDWORD serial, LPDWORD longestName,
                                                      LPDWORD flags, LPWSTR fileSystem,
                                                      DWORD fileSystemSize);

struct TIME_ZONE_INFORMATION;

/// FALSE with ERROR_INVALID_PARAMETER for times beyond the year 30827, and for
/// dates that there are not.
EXTERN_C WINBASEAPI BOOL WINAPI FileTimeToSystemTime(FILETIME const* time, LPSYSTEMTIME split);
EXTERN_C WINBASEAPI BOOL WINAPI SystemTimeToFileTime(SYSTEMTIME const* split, FILETIME* time);
/// From UTC to local time. `zone` is null, for the zone of this process, as the
/// C library knows it; FALSE with ERROR_NOT_SUPPORTED for any other.
EXTERN_C WINBASEAPI BOOL WINAPI SystemTimeToTzSpecificLocalTime(TIME_ZONE_INFORMATION const* zone,
                                                                SYSTEMTIME const* utc,
                                                                LPSYSTEMTIME local);

/// The entry point of a module, as the layer calls it: attach and detach of
/// the process and of each ending thread.
using DllEntryPoint = BOOL(WINAPI*)(HINSTANCE module, DWORD reason, LPVOID reserved);

/// Makes the module that contains `entry` known to the layer, which from then
/// on calls `entry` with DLL_THREAD_DETACH on each thread that ends. Called by
/// a module's own start-up, which exists because shared objects have no entry
/// point that the loader calls by itself. Thread-safe.
EXTERN_C VELK_LAYER_EXPORT void VelkAttachModule(DllEntryPoint entry);

/// Takes back VelkAttachModule. On return no thread is inside `entry` on the
/// layer's behalf, and none will enter it. Thread-safe.
EXTERN_C VELK_LAYER_EXPORT void VelkDetachModule(DllEntryPoint entry);
