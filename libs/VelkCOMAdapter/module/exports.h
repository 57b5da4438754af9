/// The six functions that the module exports, and nothing else.
#pragma once

#include <windows.h>

#include <objbase.h>
#include <olectl.h>

#include "host/dispatch.h"

// Windows takes the list from VelkCOMAdapter.def.
#if defined(_WIN32)
#define VELK_MODULE_EXPORT
#else
#define VELK_MODULE_EXPORT __attribute__((visibility("default")))
#endif

/// The class object of a class of the module. E_POINTER for a null `object`,
/// E_UNEXPECTED when the module could not start, CLASS_E_CLASSNOTAVAILABLE for
/// a class that clients cannot create, or what the class object answers.
STDAPI VELK_MODULE_EXPORT DllGetClassObject(REFCLSID id, REFIID riid, LPVOID* object);

/// S_OK when no object and no lock keeps the module loaded, else S_FALSE.
STDAPI VELK_MODULE_EXPORT DllCanUnloadNow();

/// Writes and removes the module's registry entries and its type library:
/// the result of the first step that failed, else S_OK. The calling thread's
/// locale is the same afterwards.
STDAPI VELK_MODULE_EXPORT DllRegisterServer();
STDAPI VELK_MODULE_EXPORT DllUnregisterServer();

/// Registers (taking back what was written when a step fails) or unregisters.
/// The command line "user", in any case, does so for the current user, now
/// and for the rest of the process; every other one, and null, changes nothing.
STDAPI VELK_MODULE_EXPORT DllInstall(BOOL install, LPCWSTR commandLine);

/// A new facade over a host object, with one reference for the caller. False,
/// and `result` not written, when none could be made. Each call makes another
/// facade, whatever kind of host object `source` is; null gives one on which
/// every call fails.
extern "C" VELK_MODULE_EXPORT bool convertMZCOMIDispatch2MSCOMIDispatch(mzIDispatch* source,
                                                                        IDispatch** result);
